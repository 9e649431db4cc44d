// The machine export: writing a copy of a design onto a machine's USB stick or memory card,
// then cleaning the volume of housekeeping files and ejecting it. The export dialog and
// `hemlark export` share every step:
//   1. acceptedVolumes()      the writable volumes whose file system the machine reads
//   2. stitchLimitAlert()     refuses a design the machine cannot hold, before any dialog
//   3. HMKVolumeLayout        default folder and the save dialog's rules (volume_layout.h)
//   4. HMKMachineExport       writes the copy, cleans (volume_cleanup.h), ejects, and ends
//                             with the message for the user
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include <QFutureWatcher>
#include <QList>
#include <QObject>
#include <QString>

#include "document/document.h"
#include "document/volume_cleanup.h"
#include "model/design.h"
#include "model/machine.h"
#include "platform/volume_monitor.h"

// --- Choosing the volume and checking the design ----------------------------------------------
// Why the machine cannot take a design from the volume (it is not writable, or its file
// system is one the machine does not read), for the user; empty when it can.
QString volumeRefusal(const HMKMachine& machine, const HMKRemovableVolume& volume);
// The volumes the machine can take a design from, in the monitor's order.
QList<HMKRemovableVolume> acceptedVolumes(const HMKMachine& machine,
                                          const QList<HMKRemovableVolume>& volumes);

// The warning shown instead of the save dialog when the design's stitches and threads
// together exceed the machine's limit; none when it fits (exactly the limit fits).
std::optional<HMKAlert> stitchLimitAlert(const HMKMachine& machine, const HMKDesign& design);

// --- Exporting ---------------------------------------------------------------------------------
enum class HMKMachineExportOutcome {
    // Nothing was exported (the alert says why).
    failed,
    // Exported; no clean-up or eject was asked for.
    exported,
    // Exported, but the clean-up overran its time: the volume stays mounted.
    exportedNotCleaned,
    exportedAndEjected,
    // Exported and cleaned, but the volume could not be ejected.
    exportedNotEjected,
};

struct HMKMachineExportResult {
    HMKMachineExportOutcome outcome = HMKMachineExportOutcome::failed;
    // What the user is told (informational when the volume was ejected or not to be).
    HMKAlert alert;
    // Why the volume was not ejected, as the disk service put it (also in the alert).
    QString ejectFailure;
    HMKCleanupResult cleanup;
};

struct HMKMachineExportRequest {
    // The file the save dialog accepted.
    std::filesystem::path file;
    // The volume's root (its mount path, or a plain folder) and the name the user knows.
    std::filesystem::path volumeRoot;
    QString volumeName;
    // The volume to eject; none for a plain folder, which is cleaned but not ejected.
    std::optional<HMKRemovableVolume> volume;
    // Clean up and eject after writing.
    bool ejectVolume = false;
    HMKCleanupOptions cleanup;
};

class HMKMachineExport : public QObject {
    Q_OBJECT
public:
    // Writes a copy of the design to a file and leaves the design as it is
    // (HMKDocument::exportCopyToURL).
    using CopyWriter = std::function<bool(const std::filesystem::path&, HMKError*)>;

    // The monitor ejects the volume; it must outlive the export (it may be null when no
    // request names a volume).
    explicit HMKMachineExport(HMKVolumeMonitor* monitor, QObject* parent = nullptr);

    // Writes the copy now (on this thread: it is file I/O), then cleans up in the background
    // and ejects; finished() follows, also when writing failed. One export at a time.
    void start(const HMKMachineExportRequest& request, const CopyWriter& writeCopy);
    bool isRunning() const { return running_; }

    // Runs start() and waits for its end in a local event loop (the command-line tool).
    HMKMachineExportResult run(const HMKMachineExportRequest& request, const CopyWriter& writeCopy);

signals:
    // What is happening now ("Removing hidden files", "Ejecting"), for a progress line.
    void progressChanged(const QString& step);
    void finished(const HMKMachineExportResult& result);

private:
    void cleanupFinished();
    void ejectFinished(bool ejected, const QString& failure);
    void finish(HMKMachineExportOutcome outcome, HMKAlert alert, QString ejectFailure = {});

    HMKVolumeMonitor* monitor_;
    HMKMachineExportRequest request_;
    HMKCleanupResult cleanup_;
    QFutureWatcher<HMKCleanupResult> cleanupWatcher_;
    bool running_ = false;
};
