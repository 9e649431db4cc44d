// The removable volumes of a Linux desktop, from the UDisks2 disk service over D-Bus: the
// same service file managers use, so a normal user can list, unmount and eject sticks without
// root. The monitor keeps a copy of the service's block devices and drives, follows its
// object manager (devices added and removed) and property changes (mount points), and
// reports a missing service as unavailableReason() with no volumes.
#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QStringList>

#include "platform/volume_monitor.h"

class QDBusMessage;
class QDBusServiceWatcher;

class HMKUDisksVolumeMonitor : public HMKVolumeMonitor {
    Q_OBJECT
public:
    // Watches the service on the system bus; tests pass a private bus. The first list
    // arrives asynchronously (see waitUntilLoaded).
    explicit HMKUDisksVolumeMonitor(QDBusConnection bus = QDBusConnection::systemBus(),
                                    QObject* parent = nullptr);

    QList<HMKRemovableVolume> volumes() const override;
    QString unavailableReason() const override { return unavailableReason_; }
    bool isLoading() const override { return loading_; }
    void eject(const HMKRemovableVolume& volume, HMKEjectHandler handler) override;

    // "MS-DOS (FAT32)" for IdType "vfat" with IdVersion "FAT32"; "MS-DOS" for other or no
    // FAT versions; any other type as it is.
    static QString fileSystemDescription(const QString& idType, const QString& idVersion);

private:
    // What the monitor needs of a block device (org.freedesktop.UDisks2.Block, .Filesystem).
    struct Block {
        QString drive;
        QString idType;
        QString idVersion;
        QString idLabel;
        bool readOnly = false;
        bool hasFilesystem = false;
        QStringList mountPoints;
    };
    // ... and of a drive (org.freedesktop.UDisks2.Drive).
    struct Drive {
        bool removable = false;
        bool mediaRemovable = false;
        bool ejectable = false;
        bool canPowerOff = false;
    };

    void load();
    void serviceUnavailable(const QString& reason);
    void applyInterfaces(const QString& path, const QVariant& interfaces);
    void applyProperties(const QString& path, const QString& interface,
                         const QVariantMap& properties);
    void announceChange();
    void ejectDrive(const QString& drivePath, const HMKEjectHandler& handler);
    void call(const QString& path, const QString& interface, const QString& method, int timeoutMs,
              std::function<void(const QString& failure)> done);

private slots:
    void onInterfacesAdded(const QDBusMessage& message);
    void onInterfacesRemoved(const QDBusMessage& message);
    void onPropertiesChanged(const QDBusMessage& message);

private:
    QDBusConnection bus_;
    QDBusServiceWatcher* serviceWatcher_ = nullptr;
    QHash<QString, Block> blocks_;
    QHash<QString, Drive> drives_;
    QString unavailableReason_;
    bool loading_ = true;
    bool changeAnnounced_ = false;
};
