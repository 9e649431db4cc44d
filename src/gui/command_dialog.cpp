#include "gui/command_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

#include "gui/dialog_hooks.h"
#include "gui/length_spin_box.h"

HMKCommandDialog::HMKCommandDialog(const QString& title, const QString& prompt,
                                   std::vector<HMKDialogField> fields, HMKMeasurementUnit unit,
                                   QWidget* parent)
    : QDialog(parent), fields_(std::move(fields)) {
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    if (!prompt.isEmpty()) {
        auto* label = new QLabel(prompt, this);
        label->setWordWrap(true);
        layout->addWidget(label);
    }
    auto* form = new QFormLayout;
    for (const HMKDialogField& field : fields_) {
        QDoubleSpinBox* editor = nullptr;
        switch (field.kind) {
            case HMKDialogField::Kind::degrees:
                editor = new QDoubleSpinBox(this);
                editor->setDecimals(0);
                editor->setSuffix(tr("\u00B0"));
                editor->setSingleStep(15);
                break;
            case HMKDialogField::Kind::percent:
                editor = new QDoubleSpinBox(this);
                editor->setDecimals(1);
                editor->setSuffix(tr(" %"));
                editor->setSingleStep(5);
                break;
            case HMKDialogField::Kind::length:
                editor = new HMKLengthSpinBox(unit, this);
                break;
        }
        editor->setRange(field.minimum, field.maximum);
        editor->setValue(field.value);
        editor->setMinimumWidth(140);
        form->addRow(field.label, editor);
        editors_.push_back(editor);
    }
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    if (!editors_.empty()) {
        editors_.front()->setFocus();
        editors_.front()->selectAll();
    }
}

double HMKCommandDialog::value(std::size_t field) const {
    auto* editor = static_cast<QDoubleSpinBox*>(editors_[field]);
    editor->interpretText();
    return editor->value();
}

void HMKCommandDialog::setValue(std::size_t field, double value) {
    static_cast<QDoubleSpinBox*>(editors_[field])->setValue(value);
}

std::optional<std::vector<double>> HMKCommandDialog::ask(QWidget* parent, const QString& title,
                                                         const QString& prompt,
                                                         std::vector<HMKDialogField> fields,
                                                         HMKMeasurementUnit unit) {
    HMKCommandDialog dialog(title, prompt, std::move(fields), unit, parent);
    if (dialogHooks().runDialog(dialog) != QDialog::Accepted) {
        return std::nullopt;
    }
    std::vector<double> values;
    for (std::size_t i = 0; i < dialog.fields_.size(); ++i) {
        values.push_back(dialog.value(i));
    }
    return values;
}
