#include "gui/export_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "document/machine_export.h"
#include "gui/dialog_hooks.h"

HMKExportDialog::HMKExportDialog(HMKVolumeMonitor& monitor, HMKSettings& settings,
                                 const HMKDesign& design, QWidget* parent)
    : QDialog(parent), model_(monitor, settings), design_(design) {
    setWindowTitle(tr("Export to Machine"));
    auto* layout = new QVBoxLayout(this);

    auto* chooserForm = new QFormLayout;
    machineChooser_ = new QComboBox(this);
    for (const std::int32_t ident : HMKMachineExportModel::machineIdents()) {
        machineChooser_->addItem(machineDisplayName(ident), ident);
    }
    machineChooser_->setCurrentIndex(machineChooser_->findData(model_.machine().ident()));
    chooserForm->addRow(tr("&Machine:"), machineChooser_);
    layout->addLayout(chooserForm);

    auto* limits = new QGroupBox(tr("What the machine takes"), this);
    auto* limitsForm = new QFormLayout(limits);
    for (const QString& name : {tr("Stitches:"), tr("Formats:"), tr("Top folders:"),
                                tr("Sub-folders:"), tr("Files per folder:")}) {
        auto* value = new QLabel(limits);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        limitsForm->addRow(name, value);
        limitLabels_.append(value);
    }
    layout->addWidget(limits);

    auto* volumesLabel = new QLabel(tr("&Volume:"), this);
    layout->addWidget(volumesLabel);
    volumeTable_ = new QTableView(this);
    volumeTable_->setModel(&model_);
    volumesLabel->setBuddy(volumeTable_);
    volumeTable_->setSelectionBehavior(QAbstractItemView::SelectRows);
    volumeTable_->setSelectionMode(QAbstractItemView::SingleSelection);
    volumeTable_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    volumeTable_->setShowGrid(false);
    volumeTable_->setWordWrap(true);
    volumeTable_->setIconSize(QSize(32, 32));
    volumeTable_->horizontalHeader()->hide();
    volumeTable_->verticalHeader()->hide();
    volumeTable_->horizontalHeader()->setSectionResizeMode(HMKMachineExportModel::iconColumn,
                                                           QHeaderView::ResizeToContents);
    volumeTable_->horizontalHeader()->setStretchLastSection(true);
    volumeTable_->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    volumeTable_->setMinimumSize(420, 150);
    layout->addWidget(volumeTable_);
    emptyTableLabel_ = new QLabel(this);
    emptyTableLabel_->setWordWrap(true);
    layout->addWidget(emptyTableLabel_);

    ejectBox_ = new QCheckBox(tr("&Clean up and eject after export"), this);
    ejectBox_->setToolTip(
        tr("Removes the hidden files other systems leave on the stick, then ejects it so that "
           "it can be pulled out"));
    ejectBox_->setChecked(true);
    layout->addWidget(ejectBox_);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    exportButton_ = buttons->addButton(tr("&Export"), QDialogButtonBox::AcceptRole);
    exportButton_->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    connect(machineChooser_, &QComboBox::currentIndexChanged, this,
            [this](int index) { model_.selectMachine(machineChooser_->itemData(index).toInt()); });
    connect(&model_, &HMKMachineExportModel::machineChanged, this, &HMKExportDialog::showMachine);
    connect(&model_, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        const auto volume = selectedVolume();
        selectedMountPath_ = volume ? volume->mountPath : QString();
    });
    connect(&model_, &QAbstractItemModel::modelReset, this, &HMKExportDialog::volumesReset);
    connect(volumeTable_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &HMKExportDialog::updateExportButton);
    showMachine();
    volumesReset();
}

std::optional<HMKRemovableVolume> HMKExportDialog::selectedVolume() const {
    const QModelIndexList rows = volumeTable_->selectionModel()->selectedRows();
    if (rows.isEmpty() || rows.first().row() >= model_.volumes().size()) {
        return std::nullopt;
    }
    return model_.volumes()[rows.first().row()];
}

bool HMKExportDialog::ejectVolume() const {
    return ejectBox_->isChecked();
}

QStringList HMKExportDialog::shownLimits() const {
    QStringList texts;
    for (const QLabel* label : limitLabels_) {
        texts.append(label->text());
    }
    return texts;
}

void HMKExportDialog::accept() {
    if (!selectedVolume()) {
        return;
    }
    if (const auto alert = stitchLimitAlert(machine(), design_)) {
        dialogHooks().alert(this, *alert);
        return;
    }
    QDialog::accept();
}

void HMKExportDialog::showMachine() {
    const HMKMachineFieldTexts fields = model_.fieldTexts();
    const QString texts[] = {fields.maxStitches, fields.fileTypes, fields.rootFolders,
                             fields.subFolderRange, fields.filesPerFolder};
    for (int i = 0; i < limitLabels_.size(); ++i) {
        limitLabels_[i]->setText(texts[i]);
    }
}

void HMKExportDialog::volumesReset() {
    // A volume that stays listed stays selected; one that went takes the selection with it.
    const int row = model_.rowOfMountPath(selectedMountPath_);
    if (row >= 0) {
        volumeTable_->selectRow(row);
    }
    emptyTableLabel_->setText(model_.emptyTableText());
    emptyTableLabel_->setVisible(!emptyTableLabel_->text().isEmpty());
    updateExportButton();
}

void HMKExportDialog::updateExportButton() {
    exportButton_->setEnabled(selectedVolume().has_value());
}
