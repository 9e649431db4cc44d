// What the machine export dialog shows: the chosen machine profile (remembered as
// "MachineTag"), the fields with its limits, and the table of volumes it accepts, which
// follows sticks being plugged in, mounted and pulled out while the dialog is open. Row i is
// volumes()[i]; column 0 holds the drive icon, column 1 the volume's name and its line
// ("MS-DOS (FAT32), 3.2 GB available of 7.8 GB").
#pragma once

#include <cstdint>

#include <QAbstractTableModel>
#include <QList>

#include "document/machine_profile_texts.h"
#include "model/machine.h"
#include "platform/settings.h"
#include "platform/volume_monitor.h"

class HMKMachineExportModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { iconColumn = 0, textColumn = 1 };

    // The monitor and settings must outlive the model.
    HMKMachineExportModel(HMKVolumeMonitor& monitor, HMKSettings& settings,
                          QObject* parent = nullptr);

    // --- The machine ---------------------------------------------------------------------
    // Every profile's ident, in chooser order (machineDisplayName() names them).
    static QList<std::int32_t> machineIdents();
    const HMKMachine& machine() const { return machine_; }
    // Chooses the profile, remembers it as "MachineTag" and lists the volumes it accepts.
    void selectMachine(std::int32_t ident);
    HMKMachineFieldTexts fieldTexts() const { return machineFieldTexts(machine_); }

    // --- The volumes -----------------------------------------------------------------------
    // Lists the volumes again (the monitor's changes do this by themselves).
    void refreshVolumeTable();
    const QList<HMKRemovableVolume>& volumes() const { return volumes_; }
    // The row of the volume mounted there, or -1.
    int rowOfMountPath(const QString& mountPath) const;
    // Why the table is empty, in a sentence for the user; empty while volumes are listed.
    QString emptyTableText() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

signals:
    void machineChanged();

private:
    HMKVolumeMonitor& monitor_;
    HMKSettings& settings_;
    HMKMachine machine_;
    QList<HMKRemovableVolume> volumes_;
    QStringList details_;
};
