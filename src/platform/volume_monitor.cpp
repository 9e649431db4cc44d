#include "platform/volume_monitor.h"

#include <QEventLoop>
#include <QTimer>

bool waitUntilLoaded(HMKVolumeMonitor& monitor, std::chrono::milliseconds timeout) {
    if (!monitor.isLoading()) {
        return true;
    }
    QEventLoop loop;
    QObject::connect(&monitor, &HMKVolumeMonitor::volumesChanged, &loop, [&loop, &monitor] {
        if (!monitor.isLoading()) {
            loop.quit();
        }
    });
    QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
    loop.exec();
    return !monitor.isLoading();
}

bool ejectAndWait(HMKVolumeMonitor& monitor, const HMKRemovableVolume& volume, QString* failure) {
    QEventLoop loop;
    bool finished = false;
    bool ejected = false;
    monitor.eject(volume, [&](bool success, const QString& reason) {
        finished = true;
        ejected = success;
        if (failure != nullptr) {
            *failure = reason;
        }
        loop.quit();
    });
    if (!finished) {
        loop.exec();
    }
    return ejected;
}
