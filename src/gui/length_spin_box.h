// A spin box for lengths: the value is kept in millimetres and shown and typed in the user's
// measurement unit ("12.5 mm", "0.49\"", "1/2\""), as everywhere else in the application.
#pragma once

#include <QDoubleSpinBox>

#include "model/units.h"

class HMKLengthSpinBox : public QDoubleSpinBox {
    Q_OBJECT
public:
    explicit HMKLengthSpinBox(HMKMeasurementUnit unit, QWidget* parent = nullptr);
    HMKMeasurementUnit unit() const { return unit_; }

protected:
    QString textFromValue(double millimetres) const override;
    double valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& position) const override;

private:
    HMKMeasurementUnit unit_;
};
