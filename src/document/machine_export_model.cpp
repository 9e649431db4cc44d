#include "document/machine_export_model.h"

#include <QIcon>

#include "document/document_texts.h"
#include "document/machine_export.h"

namespace {

HMKMachine storedMachine(const HMKSettings& settings) {
    if (auto machine = HMKMachine::fromIdent(settings.value(HMKSettings::machineTag))) {
        return *machine;
    }
    return *HMKMachine::fromIdent(0);
}

}  // namespace

HMKMachineExportModel::HMKMachineExportModel(HMKVolumeMonitor& monitor, HMKSettings& settings,
                                             QObject* parent)
    : QAbstractTableModel(parent),
      monitor_(monitor),
      settings_(settings),
      machine_(storedMachine(settings)) {
    connect(&monitor_, &HMKVolumeMonitor::volumesChanged, this,
            &HMKMachineExportModel::refreshVolumeTable);
    refreshVolumeTable();
}

QList<std::int32_t> HMKMachineExportModel::machineIdents() {
    QList<std::int32_t> idents;
    for (const HMKMachine& machine : HMKMachine::allMachines()) {
        idents.append(machine.ident());
    }
    return idents;
}

void HMKMachineExportModel::selectMachine(std::int32_t ident) {
    auto machine = HMKMachine::fromIdent(ident);
    if (!machine) {
        return;
    }
    machine_ = *machine;
    settings_.setValue(HMKSettings::machineTag, static_cast<int>(ident));
    refreshVolumeTable();
    emit machineChanged();
}

void HMKMachineExportModel::refreshVolumeTable() {
    beginResetModel();
    volumes_ = acceptedVolumes(machine_, monitor_.volumes());
    details_.clear();
    for (const HMKRemovableVolume& volume : volumes_) {
        details_.append(volumeDetailText(volume.fileSystem, volume.freeBytes, volume.totalBytes));
    }
    endResetModel();
}

int HMKMachineExportModel::rowOfMountPath(const QString& mountPath) const {
    for (int row = 0; row < volumes_.size(); ++row) {
        if (volumes_[row].mountPath == mountPath) {
            return row;
        }
    }
    return -1;
}

QString HMKMachineExportModel::emptyTableText() const {
    if (!volumes_.isEmpty()) {
        return {};
    }
    if (!monitor_.unavailableReason().isEmpty()) {
        return monitor_.unavailableReason();
    }
    if (monitor_.isLoading()) {
        return documentText("EXPORT_LOOKING", "Looking for removable drives…");
    }
    return documentText("EXPORT_NO_VOLUME",
                        "Plug in the machine's USB stick or memory card. It is listed here "
                        "once it is mounted, if it is writable and formatted with FAT.");
}

int HMKMachineExportModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(volumes_.size());
}

int HMKMachineExportModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 2;
}

QVariant HMKMachineExportModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= volumes_.size()) {
        return {};
    }
    const HMKRemovableVolume& volume = volumes_[index.row()];
    if (index.column() == iconColumn && role == Qt::DecorationRole) {
        return QIcon::fromTheme(QStringLiteral("drive-removable-media-usb"),
                                QIcon::fromTheme(QStringLiteral("drive-removable-media")));
    }
    if (index.column() == textColumn && role == Qt::DisplayRole) {
        return volume.name + QLatin1Char('\n') + details_[index.row()];
    }
    if (role == Qt::ToolTipRole) {
        return volume.mountPath;
    }
    return {};
}
