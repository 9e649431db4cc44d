#include "gui/ruler.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

#include "model/ruler_ticks.h"

HMKRuler::HMKRuler(Qt::Orientation orientation, QWidget* parent)
    : QWidget(parent), orientation_(orientation) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    QFont small = font();
    small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.75));
    setFont(small);
}

void HMKRuler::setScale(HMKMeasurementUnit unit, double zeroPixel, double pixelsPerMillimetre) {
    if (unit == unit_ && zeroPixel == zeroPixel_ && pixelsPerMillimetre == pixelsPerMillimetre_) {
        return;
    }
    unit_ = unit;
    zeroPixel_ = zeroPixel;
    pixelsPerMillimetre_ = pixelsPerMillimetre;
    update();
}

void HMKRuler::setPointer(std::optional<double> pixel) {
    if (pixel != pointer_) {
        pointer_ = pixel;
        update();
    }
}

void HMKRuler::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    const bool horizontal = orientation_ == Qt::Horizontal;
    const int length = horizontal ? width() : height();
    const int depth = kThickness;
    // Major, half-way and fine ticks reach this far in from the canvas's edge.
    const int reach[] = {depth - 2, depth / 2, depth / 4};
    painter.setPen(palette().color(QPalette::WindowText));
    const auto line = [&](double along, int from, int to) {
        if (horizontal) {
            painter.drawLine(QPointF(along, from), QPointF(along, to));
        } else {
            painter.drawLine(QPointF(from, along), QPointF(to, along));
        }
    };
    for (const HMKRulerTick& tick : rulerTicks(unit_, zeroPixel_, pixelsPerMillimetre_, length)) {
        const double along = std::round(tick.pixel) + 0.5;
        line(along, depth - reach[tick.level], depth);
        if (!tick.label.empty()) {
            const QString label = QString::fromStdString(tick.label);
            painter.save();
            if (horizontal) {
                painter.drawText(QPointF(along + 3, fontMetrics().ascent() + 1), label);
            } else {
                // Read from below, as vertical rulers are.
                painter.translate(fontMetrics().ascent() + 1, along - 3);
                painter.rotate(-90);
                painter.drawText(QPointF(0, 0), label);
            }
            painter.restore();
        }
    }
    painter.setPen(palette().color(QPalette::Mid));
    if (horizontal) {
        painter.drawLine(0, depth - 1, width(), depth - 1);
    } else {
        painter.drawLine(depth - 1, 0, depth - 1, height());
    }
    if (pointer_) {
        painter.setPen(palette().color(QPalette::Highlight));
        line(*pointer_, 0, depth);
    }
}
