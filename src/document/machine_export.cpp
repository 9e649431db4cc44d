#include "document/machine_export.h"

#include <algorithm>

#include <QEventLoop>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include "document/document_texts.h"
#include "document/machine_profile_texts.h"
#include "model/diagnostics.h"
#include "model/format_text.h"

namespace {

QString formatted(std::string_view key, std::string_view defaultFormat, const QString& argument) {
    return QString::fromStdString(
        formatText(documentText(key, defaultFormat).toStdString(), {argument.toStdString()}));
}

}  // namespace

QString volumeRefusal(const HMKMachine& machine, const HMKRemovableVolume& volume) {
    if (!volume.writable) {
        return formatted("EXPORT_READ_ONLY", "%@ is read-only.", volume.name);
    }
    const auto& systems = machine.allowedFileSystems();
    if (std::find(systems.begin(), systems.end(), volume.fileSystem.toStdString()) ==
        systems.end()) {
        std::string readable;
        for (const std::string& system : systems) {
            readable += (readable.empty() ? "" : ", ") + system;
        }
        return QString::fromStdString(formatText(
            documentText("EXPORT_OTHER_FILESYSTEM",
                         "%@ is formatted as %@; the machine reads only %@.")
                .toStdString(),
            {volume.name.toStdString(),
             volume.fileSystem.isEmpty() ? std::string("-") : volume.fileSystem.toStdString(),
             readable}));
    }
    return {};
}

QList<HMKRemovableVolume> acceptedVolumes(const HMKMachine& machine,
                                          const QList<HMKRemovableVolume>& volumes) {
    QList<HMKRemovableVolume> accepted;
    for (const HMKRemovableVolume& volume : volumes) {
        if (volumeRefusal(machine, volume).isEmpty()) {
            accepted.append(volume);
        }
    }
    return accepted;
}

std::optional<HMKAlert> stitchLimitAlert(const HMKMachine& machine, const HMKDesign& design) {
    const std::int64_t count = static_cast<std::int64_t>(design.numberOfStitches()) +
                               static_cast<std::int64_t>(design.numberOfThreads());
    if (machine.maxStitches() == -1 || count <= machine.maxStitches()) {
        return std::nullopt;
    }
    return HMKAlert::message(documentText("EXPORT_ALERT_TITLE", "Export Design"),
                             documentText("EXPORT_ALERT_STITCHES", "Too many stitches.") +
                                 QLatin1Char('\n') + limitText(machine.maxStitches()));
}

HMKMachineExport::HMKMachineExport(HMKVolumeMonitor* monitor, QObject* parent)
    : QObject(parent), monitor_(monitor) {
    connect(&cleanupWatcher_, &QFutureWatcher<HMKCleanupResult>::finished, this,
            &HMKMachineExport::cleanupFinished);
}

void HMKMachineExport::start(const HMKMachineExportRequest& request, const CopyWriter& writeCopy) {
    Q_ASSERT(!running_);
    running_ = true;
    request_ = request;
    cleanup_ = {};
    HMKError error;
    if (!writeCopy(request.file, &error)) {
        finish(HMKMachineExportOutcome::failed,
               HMKAlert::message(documentText("EXPORT_SAVE_TITLE", "Export"),
                                 QString::fromStdString(error.message())));
        return;
    }
    if (!request.ejectVolume) {
        finish(HMKMachineExportOutcome::exported,
               HMKAlert::message(documentText("EXPORT_NOEJECT_TITLE", "Design exported"),
                                 documentText("EXPORT_NOEJECT_TEXT", "Export successful"),
                                 HMKAlertStyle::informational));
        return;
    }
    emit progressChanged(tr("Removing hidden files from %1").arg(request.volumeName));
    const std::filesystem::path root = request.volumeRoot;
    const HMKCleanupOptions options = request.cleanup;
    cleanupWatcher_.setFuture(
        QtConcurrent::run([root, options] { return cleanVolume(root, options); }));
}

void HMKMachineExport::cleanupFinished() {
    cleanup_ = cleanupWatcher_.result();
    for (const std::string& failure : cleanup_.failures) {
        logDiagnostic("Machine export clean-up: " + failure);
    }
    if (cleanup_.stalled) {
        finish(HMKMachineExportOutcome::exportedNotCleaned,
               HMKAlert::message(
                   documentText("EXPORT_FILEERROR_TITLE", "Design exported, files not deleted"),
                   formatted("EXPORT_FILEERROR_TEXT", "Export successful, not deleted",
                             request_.volumeName)));
        return;
    }
    if (!request_.volume || monitor_ == nullptr) {
        ejectFinished(false, tr("%1 is a folder, not a removable volume.")
                                 .arg(QString::fromStdString(request_.volumeRoot.string())));
        return;
    }
    emit progressChanged(tr("Ejecting %1").arg(request_.volumeName));
    QPointer<HMKMachineExport> self(this);
    monitor_->eject(*request_.volume, [self](bool ejected, const QString& failure) {
        if (self) {
            self->ejectFinished(ejected, failure);
        }
    });
}

void HMKMachineExport::ejectFinished(bool ejected, const QString& failure) {
    if (ejected) {
        finish(
            HMKMachineExportOutcome::exportedAndEjected,
            HMKAlert::message(
                documentText("EXPORT_EJECT_TITLE", "Design exported and drive ejected"),
                formatted("EXPORT_EJECT_TEXT", "Export successful, ejected", request_.volumeName),
                HMKAlertStyle::informational));
        return;
    }
    QString text =
        formatted("EXPORT_EJECTERROR_TEXT", "Export successful, not ejected", request_.volumeName);
    if (!failure.isEmpty()) {
        text += QStringLiteral("\n\n") + failure;
    }
    finish(HMKMachineExportOutcome::exportedNotEjected,
           HMKAlert::message(
               documentText("EXPORT_EJECTERROR_TITLE", "Design exported, drive not ejected"), text),
           failure);
}

void HMKMachineExport::finish(HMKMachineExportOutcome outcome, HMKAlert alert,
                              QString ejectFailure) {
    running_ = false;
    HMKMachineExportResult result;
    result.outcome = outcome;
    result.alert = std::move(alert);
    result.ejectFailure = std::move(ejectFailure);
    result.cleanup = cleanup_;
    emit finished(result);
}

HMKMachineExportResult HMKMachineExport::run(const HMKMachineExportRequest& request,
                                             const CopyWriter& writeCopy) {
    HMKMachineExportResult result;
    QEventLoop loop;
    bool done = false;
    const QMetaObject::Connection connection = connect(this, &HMKMachineExport::finished, &loop,
                                                       [&](const HMKMachineExportResult& outcome) {
                                                           result = outcome;
                                                           done = true;
                                                           loop.quit();
                                                       });
    start(request, writeCopy);
    if (!done) {
        loop.exec();
    }
    disconnect(connection);
    return result;
}
