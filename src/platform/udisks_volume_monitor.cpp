#include "platform/udisks_volume_monitor.h"

#include <algorithm>
#include <memory>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTimer>

namespace {

const QString kService = QStringLiteral("org.freedesktop.UDisks2");
const QString kManagerPath = QStringLiteral("/org/freedesktop/UDisks2");
const QString kObjectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString kPropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kBlockInterface = QStringLiteral("org.freedesktop.UDisks2.Block");
const QString kFilesystemInterface = QStringLiteral("org.freedesktop.UDisks2.Filesystem");
const QString kDriveInterface = QStringLiteral("org.freedesktop.UDisks2.Drive");

// Listing is quick; unmounting waits until the stick has taken every pending write, which
// can take a while on slow sticks.
constexpr int kListTimeoutMs = 10'000;
constexpr int kEjectTimeoutMs = 120'000;
// Devices come with a burst of signals (drive, partition table, partitions, mounts); they
// are answered with one change.
constexpr int kChangeDelayMs = 50;

QString unavailableText(const QString& detail) {
    return QObject::tr(
               "Removable drives cannot be listed because the disk service UDisks2 is not "
               "available (%1). Install and start the udisks2 package.")
        .arg(detail);
}

// The interface → properties map of an object-manager message; values that are containers
// stay D-Bus arguments and are read once, by applyProperties.
QMap<QString, QVariantMap> interfaceMap(const QVariant& value) {
    QMap<QString, QVariantMap> interfaces;
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const QDBusArgument argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String("a{sa{sv}}")) {
            argument >> interfaces;
        }
    }
    return interfaces;
}

QVariantMap propertyMap(const QVariant& value) {
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        QVariantMap properties;
        const QDBusArgument argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String("a{sv}")) {
            argument >> properties;
        }
        return properties;
    }
    return value.toMap();
}

// "MountPoints" is an array of NUL-terminated byte strings.
QStringList mountPointList(const QVariant& value) {
    QList<QByteArray> raw;
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const QDBusArgument argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String("aay")) {
            argument >> raw;
        }
    }
    QStringList paths;
    for (QByteArray path : raw) {
        while (path.endsWith('\0')) {
            path.chop(1);
        }
        if (!path.isEmpty()) {
            paths.append(QFile::decodeName(path));
        }
    }
    return paths;
}

QString objectPathText(const QVariant& value) {
    return value.value<QDBusObjectPath>().path();
}

}  // namespace

HMKUDisksVolumeMonitor::HMKUDisksVolumeMonitor(QDBusConnection bus, QObject* parent)
    : HMKVolumeMonitor(parent), bus_(std::move(bus)) {
    if (!bus_.isConnected()) {
        serviceUnavailable(bus_.lastError().message().isEmpty() ? tr("no system message bus")
                                                                : bus_.lastError().message());
        return;
    }
    bus_.connect(kService, kManagerPath, kObjectManagerInterface, "InterfacesAdded", this,
                 SLOT(onInterfacesAdded(QDBusMessage)));
    bus_.connect(kService, kManagerPath, kObjectManagerInterface, "InterfacesRemoved", this,
                 SLOT(onInterfacesRemoved(QDBusMessage)));
    // Mount points change on the block objects, below the manager.
    bus_.connect(kService, QString(), kPropertiesInterface, "PropertiesChanged", this,
                 SLOT(onPropertiesChanged(QDBusMessage)));
    // A service that restarts (or starts late) is listed again; one that stops takes its
    // volumes with it.
    serviceWatcher_ =
        new QDBusServiceWatcher(kService, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(serviceWatcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                if (newOwner.isEmpty()) {
                    serviceUnavailable(tr("the service stopped"));
                } else {
                    load();
                }
            });
    load();
}

QString HMKUDisksVolumeMonitor::fileSystemDescription(const QString& idType,
                                                      const QString& idVersion) {
    if (idType != QLatin1String("vfat")) {
        return idType;
    }
    for (const char* version : {"FAT12", "FAT16", "FAT32"}) {
        if (idVersion == QLatin1String(version)) {
            return QStringLiteral("MS-DOS (%1)").arg(idVersion);
        }
    }
    return QStringLiteral("MS-DOS");
}

void HMKUDisksVolumeMonitor::load() {
    QDBusMessage request = QDBusMessage::createMethodCall(
        kService, kManagerPath, kObjectManagerInterface, "GetManagedObjects");
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(request, kListTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (reply.type() != QDBusMessage::ReplyMessage) {
            serviceUnavailable(reply.errorMessage());
            return;
        }
        blocks_.clear();
        drives_.clear();
        const QVariant objects = reply.arguments().value(0);
        if (objects.userType() == qMetaTypeId<QDBusArgument>()) {
            const QDBusArgument argument = objects.value<QDBusArgument>();
            if (argument.currentSignature() == QLatin1String("a{oa{sa{sv}}}")) {
                argument.beginMap();
                while (!argument.atEnd()) {
                    QDBusObjectPath path;
                    QMap<QString, QVariantMap> interfaces;
                    argument.beginMapEntry();
                    argument >> path >> interfaces;
                    argument.endMapEntry();
                    for (auto entry = interfaces.cbegin(); entry != interfaces.cend(); ++entry) {
                        applyProperties(path.path(), entry.key(), entry.value());
                    }
                }
                argument.endMap();
            }
        }
        loading_ = false;
        unavailableReason_.clear();
        emit volumesChanged();
    });
}

void HMKUDisksVolumeMonitor::serviceUnavailable(const QString& reason) {
    blocks_.clear();
    drives_.clear();
    loading_ = false;
    unavailableReason_ = unavailableText(reason);
    emit volumesChanged();
}

void HMKUDisksVolumeMonitor::applyInterfaces(const QString& path, const QVariant& interfaces) {
    const QMap<QString, QVariantMap> map = interfaceMap(interfaces);
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        applyProperties(path, entry.key(), entry.value());
    }
}

void HMKUDisksVolumeMonitor::applyProperties(const QString& path, const QString& interface,
                                             const QVariantMap& properties) {
    if (interface == kBlockInterface || interface == kFilesystemInterface) {
        Block& block = blocks_[path];
        for (auto property = properties.cbegin(); property != properties.cend(); ++property) {
            const QString& name = property.key();
            if (name == QLatin1String("Drive")) {
                block.drive = objectPathText(property.value());
            } else if (name == QLatin1String("IdType")) {
                block.idType = property.value().toString();
            } else if (name == QLatin1String("IdVersion")) {
                block.idVersion = property.value().toString();
            } else if (name == QLatin1String("IdLabel")) {
                block.idLabel = property.value().toString();
            } else if (name == QLatin1String("ReadOnly")) {
                block.readOnly = property.value().toBool();
            } else if (name == QLatin1String("MountPoints")) {
                block.mountPoints = mountPointList(property.value());
            }
        }
        block.hasFilesystem = block.hasFilesystem || interface == kFilesystemInterface;
    } else if (interface == kDriveInterface) {
        Drive& drive = drives_[path];
        const std::pair<const char*, bool*> flags[] = {{"Removable", &drive.removable},
                                                       {"MediaRemovable", &drive.mediaRemovable},
                                                       {"Ejectable", &drive.ejectable},
                                                       {"CanPowerOff", &drive.canPowerOff}};
        for (const auto& [name, flag] : flags) {
            if (properties.contains(QLatin1String(name))) {
                *flag = properties.value(QLatin1String(name)).toBool();
            }
        }
    }
}

void HMKUDisksVolumeMonitor::onInterfacesAdded(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2 || loading_) {
        return;
    }
    applyInterfaces(objectPathText(arguments.at(0)), arguments.at(1));
    announceChange();
}

void HMKUDisksVolumeMonitor::onInterfacesRemoved(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2 || loading_) {
        return;
    }
    const QString path = objectPathText(arguments.at(0));
    const QStringList interfaces = arguments.at(1).toStringList();
    if (interfaces.contains(kBlockInterface)) {
        blocks_.remove(path);
    } else if (interfaces.contains(kFilesystemInterface) && blocks_.contains(path)) {
        blocks_[path].hasFilesystem = false;
        blocks_[path].mountPoints.clear();
    }
    if (interfaces.contains(kDriveInterface)) {
        drives_.remove(path);
    }
    announceChange();
}

void HMKUDisksVolumeMonitor::onPropertiesChanged(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    const QString interface = arguments.value(0).toString();
    if (arguments.size() < 2 || loading_ || !message.path().startsWith(kManagerPath) ||
        (interface != kBlockInterface && interface != kFilesystemInterface &&
         interface != kDriveInterface)) {
        return;
    }
    applyProperties(message.path(), interface, propertyMap(arguments.at(1)));
    announceChange();
}

void HMKUDisksVolumeMonitor::announceChange() {
    if (changeAnnounced_) {
        return;
    }
    changeAnnounced_ = true;
    QTimer::singleShot(kChangeDelayMs, this, [this] {
        changeAnnounced_ = false;
        emit volumesChanged();
    });
}

QList<HMKRemovableVolume> HMKUDisksVolumeMonitor::volumes() const {
    QList<HMKRemovableVolume> volumes;
    for (auto entry = blocks_.cbegin(); entry != blocks_.cend(); ++entry) {
        const Block& block = entry.value();
        const auto drive = drives_.constFind(block.drive);
        if (!block.hasFilesystem || block.mountPoints.isEmpty() || drive == drives_.cend() ||
            !(drive->removable || drive->mediaRemovable)) {
            continue;
        }
        HMKRemovableVolume volume;
        volume.mountPath = block.mountPoints.first();
        const QStorageInfo storage(volume.mountPath);
        // A mount point that is gone (unmounted behind the service's back) is no volume.
        if (!storage.isValid() || !storage.isReady()) {
            continue;
        }
        volume.name =
            block.idLabel.isEmpty() ? QFileInfo(volume.mountPath).fileName() : block.idLabel;
        volume.fileSystem = fileSystemDescription(block.idType, block.idVersion);
        volume.writable =
            !block.readOnly && !storage.isReadOnly() && QFileInfo(volume.mountPath).isWritable();
        volume.freeBytes = storage.bytesAvailable();
        volume.totalBytes = storage.bytesTotal();
        volume.filesystemObject = entry.key();
        volume.driveObject = block.drive;
        volumes.append(volume);
    }
    std::sort(volumes.begin(), volumes.end(),
              [](const HMKRemovableVolume& a, const HMKRemovableVolume& b) {
                  return a.mountPath < b.mountPath;
              });
    return volumes;
}

void HMKUDisksVolumeMonitor::call(const QString& path, const QString& interface,
                                  const QString& method, int timeoutMs,
                                  std::function<void(const QString& failure)> done) {
    QDBusMessage request = QDBusMessage::createMethodCall(kService, path, interface, method);
    // No options; the service asks the user for authorisation when its policy wants that.
    request << QVariantMap();
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(request, timeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        done(reply.type() == QDBusMessage::ErrorMessage
                 ? (reply.errorMessage().isEmpty() ? reply.errorName() : reply.errorMessage())
                 : QString());
    });
}

void HMKUDisksVolumeMonitor::eject(const HMKRemovableVolume& volume, HMKEjectHandler handler) {
    if (volume.filesystemObject.isEmpty() || !bus_.isConnected()) {
        QTimer::singleShot(0, this, [handler] {
            handler(false, tr("The volume is not known to the disk service."));
        });
        return;
    }
    const QString drivePath = volume.driveObject;
    call(volume.filesystemObject, kFilesystemInterface, "Unmount", kEjectTimeoutMs,
         [this, drivePath, handler](const QString& failure) {
             if (!failure.isEmpty()) {
                 handler(false, failure);
             } else {
                 ejectDrive(drivePath, handler);
             }
         });
}

void HMKUDisksVolumeMonitor::ejectDrive(const QString& drivePath, const HMKEjectHandler& handler) {
    // Card readers eject their medium; sticks and disks without an eject mechanism are
    // powered off instead, which is what "safely remove" does on the desktop.
    const Drive drive = drives_.value(drivePath);
    const char* method = drive.ejectable ? "Eject" : drive.canPowerOff ? "PowerOff" : nullptr;
    if (method == nullptr) {
        // Unmounted is all this drive allows; its volume may be pulled out now.
        handler(true, QString());
        return;
    }
    call(drivePath, kDriveInterface, QString::fromLatin1(method), kEjectTimeoutMs,
         [handler](const QString& failure) { handler(failure.isEmpty(), failure); });
}
