// Removable volumes (USB sticks, memory cards) as the machine export sees them, and the
// monitor that lists them, follows their mounting and unmounting and ejects them. The real
// monitor talks to the desktop's disk service (udisks_volume_monitor.h); tests and the export
// dialog's tests use a fake that derives from HMKVolumeMonitor.
#pragma once

#include <chrono>
#include <functional>

#include <QList>
#include <QObject>
#include <QString>

// One mounted file system on a removable drive or removable medium.
struct HMKRemovableVolume {
    // Where it is mounted ("/media/anna/STICK").
    QString mountPath;
    // The volume's label, or the mount folder's name when it has none.
    QString name;
    // "MS-DOS (FAT12)", "MS-DOS (FAT16)", "MS-DOS (FAT32)", "MS-DOS" for other FAT versions,
    // otherwise the file system's own name ("exfat", "ntfs").
    QString fileSystem;
    // Mounted for writing, and the user may write to it.
    bool writable = false;
    qint64 freeBytes = 0;
    qint64 totalBytes = 0;
    // The disk service's objects for the file system and its drive (empty for other sources).
    QString filesystemObject;
    QString driveObject;

    bool operator==(const HMKRemovableVolume&) const = default;
};

// How an eject ended: failure holds the reason when the volume is still there.
using HMKEjectHandler = std::function<void(bool ejected, const QString& failure)>;

class HMKVolumeMonitor : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // --- The volumes ---------------------------------------------------------------------
    // Mounted volumes on removable drives or media, ordered by mount path, with their free
    // and total sizes as they are now.
    virtual QList<HMKRemovableVolume> volumes() const = 0;
    // Why no volume can be listed at all (the disk service is missing); empty while the
    // monitor works.
    virtual QString unavailableReason() const = 0;
    // True until the first list has arrived.
    virtual bool isLoading() const { return false; }

    // --- Ejecting --------------------------------------------------------------------------
    // Unmounts the volume and ejects (or powers off) its drive, so that it can be pulled out.
    // The handler runs later, on this object's thread.
    virtual void eject(const HMKRemovableVolume& volume, HMKEjectHandler handler) = 0;

signals:
    // Volumes appeared, disappeared or were mounted elsewhere, or the service came or went.
    void volumesChanged();
};

// Runs the event loop until the monitor has its first list or the timeout passes (for the
// command-line tool, which needs the list at once). Returns false on timeout.
bool waitUntilLoaded(HMKVolumeMonitor& monitor,
                     std::chrono::milliseconds timeout = std::chrono::seconds(10));

// Ejects and waits for the outcome; failure (when given) receives the reason.
bool ejectAndWait(HMKVolumeMonitor& monitor, const HMKRemovableVolume& volume,
                  QString* failure = nullptr);
