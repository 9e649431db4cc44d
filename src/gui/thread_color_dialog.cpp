#include "gui/thread_color_dialog.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QVBoxLayout>

#include "document/document.h"
#include "gui/dialog_hooks.h"

HMKThreadColorDialog::HMKThreadColorDialog(const HMKThread& thread, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("Thread Colour"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    palette_ = new QComboBox(this);
    for (const std::string& palette : HMKDocument::paletteMenu()) {
        palette_->addItem(
            palette.empty() ? tr("Individual colour") : QString::fromStdString(palette),
            QString::fromStdString(palette));
    }
    const int current = palette_->findData(QString::fromStdString(thread.palette));
    palette_->setCurrentIndex(std::max(current, 0));
    palette_->setToolTip(tr("The thread becomes the palette's thread nearest to the colour."));
    form->addRow(tr("&Palette:"), palette_);
    layout->addLayout(form);
    chooser_ = new QColorDialog(this);
    chooser_->setWindowFlags(Qt::Widget);
    chooser_->setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog);
    chooser_->setCurrentColor(QColor::fromRgbF(static_cast<float>(thread.color.red()),
                                               static_cast<float>(thread.color.green()),
                                               static_cast<float>(thread.color.blue())));
    layout->addWidget(chooser_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

HMKThreadColorChoice HMKThreadColorDialog::choice() const {
    const QColor color = chooser_->currentColor();
    return {HMKColor(color.redF(), color.greenF(), color.blueF()),
            palette_->currentData().toString().toStdString()};
}

std::optional<HMKThreadColorChoice> HMKThreadColorDialog::ask(QWidget* parent,
                                                              const HMKThread& thread) {
    HMKThreadColorDialog dialog(thread, parent);
    if (dialogHooks().runDialog(dialog) != QDialog::Accepted) {
        return std::nullopt;
    }
    return dialog.choice();
}
