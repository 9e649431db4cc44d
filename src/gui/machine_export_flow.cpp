#include "gui/machine_export_flow.h"

#include <QApplication>
#include <QFileInfo>
#include <QPointer>
#include <QProgressDialog>

#include "document/machine_export.h"
#include "document/volume_layout.h"
#include "gui/dialog_hooks.h"
#include "gui/export_dialog.h"
#include "gui/machine_save_dialog.h"
#include "platform/udisks_volume_monitor.h"

namespace {

// Shown only when cleaning and ejecting take a moment.
constexpr int kProgressDelayMs = 400;

QString proposedName(const HMKDocument& document) {
    const QString name = QString::fromStdString(document.design().designName());
    return name.isEmpty() ? QFileInfo(document.displayName()).completeBaseName() : name;
}

}  // namespace

HMKVolumeMonitor& desktopVolumeMonitor() {
    static QPointer<HMKVolumeMonitor> monitor;
    if (!monitor) {
        monitor = new HMKUDisksVolumeMonitor(QDBusConnection::systemBus(), qApp);
    }
    return *monitor;
}

void exportToMachine(QWidget* parent, HMKDocument& document, HMKSettings& settings,
                     HMKVolumeMonitor& monitor) {
    HMKExportDialog dialog(monitor, settings, document.design(), parent);
    if (dialogHooks().runDialog(dialog) != QDialog::Accepted || !dialog.selectedVolume()) {
        return;
    }
    const HMKRemovableVolume volume = *dialog.selectedVolume();
    const HMKVolumeLayout layout(volume.mountPath.toStdString(), volume.name, dialog.machine());
    HMKError error;
    if (!layout.createDefaultFolder(&error)) {
        dialogHooks().alert(parent, HMKAlert::message(QObject::tr("Export"),
                                                      QString::fromStdString(error.message())));
        return;
    }
    const auto file = HMKMachineSaveDialog::ask(parent, layout, proposedName(document));
    if (!file) {
        return;
    }

    HMKMachineExportRequest request;
    request.file = *file;
    request.volumeRoot = layout.volumeRoot();
    request.volumeName = volume.name;
    request.volume = volume;
    request.ejectVolume = dialog.ejectVolume();
    auto* exporter = new HMKMachineExport(&monitor, parent);
    auto* progress = new QProgressDialog(parent);
    progress->setWindowTitle(QObject::tr("Export to Machine"));
    progress->setWindowModality(Qt::WindowModal);
    progress->setCancelButton(nullptr);
    progress->setRange(0, 0);
    progress->setMinimumDuration(kProgressDelayMs);
    QObject::connect(exporter, &HMKMachineExport::progressChanged, progress,
                     &QProgressDialog::setLabelText);
    QPointer<QWidget> window(parent);
    QObject::connect(exporter, &HMKMachineExport::finished, exporter,
                     [exporter, progress, window](const HMKMachineExportResult& result) {
                         progress->deleteLater();
                         exporter->deleteLater();
                         dialogHooks().alert(window, result.alert);
                     });
    exporter->start(request, [&document](const std::filesystem::path& url, HMKError* error) {
        return document.exportCopyToURL(url, error);
    });
}
