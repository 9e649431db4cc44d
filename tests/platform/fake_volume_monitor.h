// A volume monitor whose volumes the test sets, for testing the machine export and its
// dialog without a disk service. Ejects are recorded and answered on the next event-loop
// turn, successfully unless ejectFailure is set.
#pragma once

#include <QStringList>
#include <QTimer>

#include "platform/volume_monitor.h"

class FakeVolumeMonitor : public HMKVolumeMonitor {
public:
    QList<HMKRemovableVolume> volumes() const override { return volumes_; }
    QString unavailableReason() const override { return unavailableReason_; }
    void eject(const HMKRemovableVolume& volume, HMKEjectHandler handler) override {
        ejected.append(volume.mountPath);
        QTimer::singleShot(
            0, this, [handler, failure = ejectFailure] { handler(failure.isEmpty(), failure); });
    }

    // Plugs in, changes or pulls out volumes, as the disk service would announce it.
    void setVolumes(QList<HMKRemovableVolume> volumes, QString unavailableReason = {}) {
        volumes_ = std::move(volumes);
        unavailableReason_ = std::move(unavailableReason);
        emit volumesChanged();
    }

    QStringList ejected;
    QString ejectFailure;

private:
    QList<HMKRemovableVolume> volumes_;
    QString unavailableReason_;
};

// A writable stick mounted at mountPath, 8 GB with 3 GB free.
inline HMKRemovableVolume fakeStick(const QString& mountPath,
                                    const QString& fileSystem = "MS-DOS (FAT32)") {
    HMKRemovableVolume volume;
    volume.mountPath = mountPath;
    volume.name = mountPath.section('/', -1);
    volume.fileSystem = fileSystem;
    volume.writable = true;
    volume.freeBytes = 3'000'000'000;
    volume.totalBytes = 8'000'000'000;
    return volume;
}
