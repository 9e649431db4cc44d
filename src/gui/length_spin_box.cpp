#include "gui/length_spin_box.h"

namespace {

// One arrow step in the unit's own terms, in millimetres.
double stepOf(HMKMeasurementUnit unit) {
    switch (unit) {
        case HMKMeasurementUnit::decimalInches:
            return 0.05 * 25.4;
        case HMKMeasurementUnit::fractionalInches:
            return 25.4 / 16;
        case HMKMeasurementUnit::millimetres:
            break;
    }
    return 0.5;
}

}  // namespace

HMKLengthSpinBox::HMKLengthSpinBox(HMKMeasurementUnit unit, QWidget* parent)
    : QDoubleSpinBox(parent), unit_(unit) {
    setDecimals(3);
    setSingleStep(stepOf(unit));
    setAccelerated(true);
}

QString HMKLengthSpinBox::textFromValue(double millimetres) const {
    return QString::fromStdString(HMKValueTransformer::transformedValue(millimetres, unit_));
}

double HMKLengthSpinBox::valueFromText(const QString& text) const {
    return HMKValueTransformer::reverseTransformedValue(text.toStdString(), unit_);
}

QValidator::State HMKLengthSpinBox::validate(QString& text, int&) const {
    // Units and fractions are part of the text, so anything but an empty field is read; a
    // value out of range is clamped when editing ends.
    return text.trimmed().isEmpty() ? QValidator::Intermediate : QValidator::Acceptable;
}
