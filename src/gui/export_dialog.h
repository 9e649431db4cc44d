// HMKExportDialog: "Export to Machine". The user picks the machine and one of the USB sticks
// or memory cards it can read, and whether to clean the stick up and eject it afterwards. The
// machine's limits are shown under the chooser, the volume table follows sticks being plugged
// in, mounted and pulled out while the dialog is open, and Export is enabled only while a
// volume is selected. A design over the machine's stitch limit is refused here, before any
// save dialog; the dialog then stays open.
#pragma once

#include <optional>

#include <QDialog>
#include <QString>

#include "document/machine_export_model.h"
#include "model/design.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTableView;

class HMKExportDialog : public QDialog {
    Q_OBJECT
public:
    // The monitor, settings and design must outlive the dialog.
    HMKExportDialog(HMKVolumeMonitor& monitor, HMKSettings& settings, const HMKDesign& design,
                    QWidget* parent = nullptr);

    // --- The user's choice -------------------------------------------------------------------
    const HMKMachine& machine() const { return model_.machine(); }
    std::optional<HMKRemovableVolume> selectedVolume() const;
    bool ejectVolume() const;

    // --- The controls, for tests ---------------------------------------------------------------
    QComboBox* machineChooser() const { return machineChooser_; }
    QTableView* volumeTable() const { return volumeTable_; }
    QCheckBox* ejectBox() const { return ejectBox_; }
    QPushButton* exportButton() const { return exportButton_; }
    // The texts of the limit fields, in HMKMachineFieldTexts order.
    QStringList shownLimits() const;
    // Why the table is empty ("Plug in …"), hidden while volumes are listed.
    QLabel* emptyTableLabel() const { return emptyTableLabel_; }

    // Checks the stitch limit before closing.
    void accept() override;

private:
    void showMachine();
    void volumesReset();
    void updateExportButton();

    HMKMachineExportModel model_;
    const HMKDesign& design_;
    QComboBox* machineChooser_ = nullptr;
    QList<QLabel*> limitLabels_;
    QTableView* volumeTable_ = nullptr;
    QLabel* emptyTableLabel_ = nullptr;
    QCheckBox* ejectBox_ = nullptr;
    QPushButton* exportButton_ = nullptr;
    // The selected volume's mount path, kept while the table is rebuilt.
    QString selectedMountPath_;
};
