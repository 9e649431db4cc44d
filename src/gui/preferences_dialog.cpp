#include "gui/preferences_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "document/document.h"
#include "gui/dialog_hooks.h"

namespace {

struct SwitchRow {
    const HMKSettingKey<bool>* key;
    const char* text;
};

const SwitchRow kDisplaySwitches[] = {
    {&HMKSettings::showJumps, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &jumps")},
    {&HMKSettings::showGrid, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &grid")},
    {&HMKSettings::showCenter, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &centre")},
    {&HMKSettings::showHoop, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &hoop")},
    {&HMKSettings::showFirst, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &first stitch")},
    {&HMKSettings::showLast, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &last stitch")},
    {&HMKSettings::showStructure,
     QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &structure (needle points)")},
    {&HMKSettings::drawFastMode,
     QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Fast &mode (flat thread, no shading)")},
    {&HMKSettings::showRulers, QT_TRANSLATE_NOOP("HMKPreferencesDialog", "Show &rulers")},
};

void paintSwatch(QPushButton* button, const QColor& color) {
    QPixmap swatch(32, 16);
    swatch.fill(color);
    button->setIcon(QIcon(swatch));
    button->setText(color.name());
}

}  // namespace

HMKPreferencesDialog::HMKPreferencesDialog(HMKSettings& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("Preferences"));
    auto* layout = new QVBoxLayout(this);
    auto* tabs = new QTabWidget(this);
    tabs->addTab(buildDisplayPage(), tr("&Display"));
    tabs->addTab(buildGeneralPage(), tr("&General"));
    tabs->addTab(buildPlayerPage(), tr("&Player"));
    layout->addWidget(tabs);
    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::RestoreDefaults, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { settings_.resetAll(); });
    layout->addWidget(buttons);
    connect(&settings_, &HMKSettings::changed, this, &HMKPreferencesDialog::reload);
    reload();
}

QCheckBox* HMKPreferencesDialog::checkBoxFor(const HMKSettingKey<bool>& key) const {
    for (const auto& [stored, box] : checkBoxes_) {
        if (stored == &key) {
            return box;
        }
    }
    return nullptr;
}

void HMKPreferencesDialog::reload() {
    reloading_ = true;
    for (const auto& reloader : reloaders_) {
        reloader();
    }
    reloading_ = false;
}

QWidget* HMKPreferencesDialog::buildDisplayPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    for (const SwitchRow& row : kDisplaySwitches) {
        auto* box = new QCheckBox(tr(row.text), page);
        const HMKSettingKey<bool>& key = *row.key;
        connect(box, &QCheckBox::toggled, this, [this, &key](bool on) {
            if (!reloading_) {
                settings_.setValue(key, on);
            }
        });
        reloaders_.push_back([this, box, &key] { box->setChecked(settings_.value(key)); });
        checkBoxes_.emplace_back(&key, box);
        form->addRow(box);
    }
    auto* background = new QPushButton(page);
    connect(background, &QPushButton::clicked, this, [this] {
        const QColor color = dialogHooks().color(
            this, settings_.value(HMKSettings::backgroundColor), tr("Background Colour"));
        if (color.isValid()) {
            settings_.setValue(HMKSettings::backgroundColor, color);
        }
    });
    reloaders_.push_back([this, background] {
        paintSwatch(background, settings_.value(HMKSettings::backgroundColor));
    });
    form->addRow(tr("&Background:"), background);
    return page;
}

QWidget* HMKPreferencesDialog::buildGeneralPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);

    auto* unit = new QComboBox(page);
    unit->addItem(tr("Millimetres"), static_cast<int>(HMKMeasurementUnit::millimetres));
    unit->addItem(tr("Inches (decimal)"), static_cast<int>(HMKMeasurementUnit::decimalInches));
    unit->addItem(tr("Inches (fractions)"), static_cast<int>(HMKMeasurementUnit::fractionalInches));
    connect(unit, &QComboBox::currentIndexChanged, this, [this, unit] {
        if (!reloading_) {
            settings_.setValue(HMKSettings::measurementUnit,
                               static_cast<HMKMeasurementUnit>(unit->currentData().toInt()));
        }
    });
    reloaders_.push_back([this, unit] {
        unit->setCurrentIndex(
            unit->findData(static_cast<int>(settings_.value(HMKSettings::measurementUnit))));
    });
    form->addRow(tr("&Measurement unit:"), unit);

    auto* palette = new QComboBox(page);
    const std::vector<std::string> palettes = HMKDocument::paletteMenu();
    for (const std::string& name : palettes) {
        palette->addItem(name.empty() ? tr("Colours of the file") : QString::fromStdString(name));
    }
    palette->setToolTip(tr("Thread palette given to opened designs that have no thread file."));
    connect(palette, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!reloading_ && index >= 0) {
            settings_.setValue(HMKSettings::defaultThreads, index);
        }
    });
    reloaders_.push_back([this, palette] {
        palette->setCurrentIndex(settings_.value(HMKSettings::defaultThreads));
    });
    form->addRow(tr("Default thread &palette:"), palette);

    auto* skip = new QCheckBox(tr("&Start without the open dialog"), page);
    connect(skip, &QCheckBox::toggled, this, [this](bool on) {
        if (!reloading_) {
            settings_.setValue(HMKSettings::skipOpenDialog, on);
        }
    });
    reloaders_.push_back(
        [this, skip] { skip->setChecked(settings_.value(HMKSettings::skipOpenDialog)); });
    checkBoxes_.emplace_back(&HMKSettings::skipOpenDialog, skip);
    form->addRow(skip);

    auto* warning = new QCheckBox(tr("&Warn to check the hoop after saving"), page);
    connect(warning, &QCheckBox::toggled, this, [this](bool on) {
        if (!reloading_) {
            settings_.setValue(HMKSettings::alertWriteToURL, !on);
        }
    });
    reloaders_.push_back(
        [this, warning] { warning->setChecked(!settings_.value(HMKSettings::alertWriteToURL)); });
    form->addRow(warning);

    auto* undo = new QSpinBox(page);
    undo->setRange(16, 8192);
    undo->setSingleStep(64);
    undo->setSuffix(tr(" MB"));
    undo->setToolTip(
        tr("Memory the undo history of one design may use; the oldest steps go "
           "first."));
    connect(undo, &QSpinBox::valueChanged, this, [this](int value) {
        if (!reloading_) {
            settings_.setValue(HMKSettings::undoMemoryMegabytes, value);
        }
    });
    reloaders_.push_back(
        [this, undo] { undo->setValue(settings_.value(HMKSettings::undoMemoryMegabytes)); });
    form->addRow(tr("&Undo memory:"), undo);
    return page;
}

QSpinBox* HMKPreferencesDialog::spinBoxFor(const HMKSettingKey<int>& key, int minimum, int maximum,
                                           const QString& suffix, QWidget* page) {
    auto* box = new QSpinBox(page);
    box->setRange(minimum, maximum);
    box->setSuffix(suffix);
    connect(box, &QSpinBox::valueChanged, this, [this, &key](int value) {
        if (!reloading_) {
            settings_.setValue(key, value);
        }
    });
    reloaders_.push_back([this, box, &key] { box->setValue(settings_.value(key)); });
    return box;
}

QWidget* HMKPreferencesDialog::buildPlayerPage() {
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    form->addRow(tr("Stitch-out &speed:"),
                 spinBoxFor(HMKSettings::stitchSpeed, 1, 20000, tr(" stitches/s"), page));
    QSpinBox* machine = spinBoxFor(HMKSettings::machineSpeed, 50, 3000, tr(" stitches/min"), page);
    machine->setSingleStep(50);
    machine->setToolTip(
        tr("The embroidery machine's speed, for the sewing time shown in the information "
           "panel, the player and the worksheet."));
    form->addRow(tr("&Machine speed:"), machine);
    auto* sound = new QCheckBox(tr("&Mute the machine sound"), page);
    connect(sound, &QCheckBox::toggled, this, [this](bool on) {
        if (!reloading_) {
            settings_.setValue(HMKSettings::soundMuted, on);
        }
    });
    reloaders_.push_back(
        [this, sound] { sound->setChecked(settings_.value(HMKSettings::soundMuted)); });
    checkBoxes_.emplace_back(&HMKSettings::soundMuted, sound);
    form->addRow(sound);
    return page;
}
