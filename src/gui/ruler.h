// HMKRuler: one of the two rulers along the design canvas's top and left edges, with ticks
// and labels in the user's unit that follow the canvas's zoom and pan, and a mark where the
// pointer is. The ticks come from rulerTicks() (model/ruler_ticks.h).
#pragma once

#include <optional>

#include <QWidget>

#include "model/units.h"

class HMKRuler : public QWidget {
    Q_OBJECT
public:
    static constexpr int kThickness = 22;

    HMKRuler(Qt::Orientation orientation, QWidget* parent = nullptr);

    // The design's 0 mm lies at zeroPixel along the ruler; negative pixelsPerMillimetre for
    // a ruler whose pixels run against the design axis (the vertical one: y grows upward).
    void setScale(HMKMeasurementUnit unit, double zeroPixel, double pixelsPerMillimetre);
    void setPointer(std::optional<double> pixel);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::Orientation orientation_;
    HMKMeasurementUnit unit_ = HMKMeasurementUnit::millimetres;
    double zeroPixel_ = 0;
    double pixelsPerMillimetre_ = 1;
    std::optional<double> pointer_;
};
