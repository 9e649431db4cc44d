// HMKCommandDialog: the small dialogs of the Design menu that ask for numbers before a
// command runs: rotate by an angle, resize by a percentage, move by x and y, and basting
// length and distance. Lengths are in the user's measurement unit.
#pragma once

#include <optional>
#include <vector>

#include <QDialog>
#include <QString>

#include "model/units.h"

class QAbstractSpinBox;

struct HMKDialogField {
    enum class Kind { degrees, percent, length };
    QString label;
    Kind kind = Kind::length;
    // Millimetres for lengths.
    double value = 0;
    double minimum = 0;
    double maximum = 0;
};

class HMKCommandDialog : public QDialog {
    Q_OBJECT
public:
    HMKCommandDialog(const QString& title, const QString& prompt,
                     std::vector<HMKDialogField> fields, HMKMeasurementUnit unit,
                     QWidget* parent = nullptr);

    // The field's value (millimetres for lengths).
    double value(std::size_t field) const;
    void setValue(std::size_t field, double value);
    QAbstractSpinBox* editor(std::size_t field) const { return editors_[field]; }

    // Shows the dialog through the dialog hooks; the values, or none when cancelled.
    static std::optional<std::vector<double>> ask(QWidget* parent, const QString& title,
                                                  const QString& prompt,
                                                  std::vector<HMKDialogField> fields,
                                                  HMKMeasurementUnit unit);

private:
    std::vector<HMKDialogField> fields_;
    std::vector<QAbstractSpinBox*> editors_;
};
