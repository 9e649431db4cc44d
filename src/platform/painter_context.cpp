#include "platform/painter_context.h"

#include <QLineF>
#include <QLinearGradient>
#include <QPaintDevice>
#include <QPolygonF>
#include <QRectF>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Device RGB has no room outside 0..1: out-of-range components (the renderer does not clamp
// its lighter and darker shades) are clamped here, as a device colour space would.
QColor toQColor(const HMKRgba& color) {
    auto unit = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(unit(color.red), unit(color.green), unit(color.blue),
                            unit(color.alpha));
}

// How many device pixels one user-space unit spans (for the dashes of hairlines).
double deviceScale(const QTransform& transform) {
    return std::sqrt(
        std::abs(transform.m11() * transform.m22() - transform.m12() * transform.m21()));
}

}  // namespace

HMKPainterContext::HMKPainterContext(QPainter& painter) : painter_(painter) {}

HMKPainterContext::~HMKPainterContext() {
    while (!stack_.empty()) {
        restoreState();
    }
    if (state_.painterSaved) {
        painter_.restore();
    }
}

void HMKPainterContext::saveState() {
    stack_.push_back(state_);
    state_.painterSaved = false;
}

void HMKPainterContext::restoreState() {
    if (stack_.empty()) {
        return;
    }
    if (state_.painterSaved) {
        painter_.restore();
    }
    state_ = std::move(stack_.back());
    stack_.pop_back();
    penDirty_ = true;
}

void HMKPainterContext::setRoundLineCap() {
    if (state_.cap != Qt::RoundCap) {
        state_.cap = Qt::RoundCap;
        penDirty_ = true;
    }
}

void HMKPainterContext::setLineWidth(double width) {
    if (state_.lineWidth != width) {
        state_.lineWidth = width;
        penDirty_ = true;
    }
}

void HMKPainterContext::setLineDash(const std::vector<double>& pattern) {
    if (state_.dash != pattern) {
        state_.dash = pattern;
        penDirty_ = true;
    }
}

void HMKPainterContext::setStrokeColor(const HMKRgba& color) {
    QColor converted = toQColor(color);
    if (state_.strokeColor != converted) {
        state_.strokeColor = converted;
        penDirty_ = true;
    }
}

void HMKPainterContext::setFillColor(const HMKRgba& color) {
    state_.fillColor = toQColor(color);
}

void HMKPainterContext::moveTo(double x, double y) {
    switch (shape_) {
        case PathShape::empty:
        case PathShape::point:
            shape_ = PathShape::point;
            first_ = QPointF(x, y);
            break;
        case PathShape::line:
            ensureGeneralPath();
            path_.moveTo(x, y);
            break;
        case PathShape::general:
            path_.moveTo(x, y);
            break;
    }
}

void HMKPainterContext::lineTo(double x, double y) {
    switch (shape_) {
        case PathShape::empty:
            // A line without a current point only sets one.
            shape_ = PathShape::point;
            first_ = QPointF(x, y);
            break;
        case PathShape::point:
            shape_ = PathShape::line;
            second_ = QPointF(x, y);
            break;
        case PathShape::line:
            ensureGeneralPath();
            path_.lineTo(x, y);
            break;
        case PathShape::general:
            path_.lineTo(x, y);
            break;
    }
}

void HMKPainterContext::addArc(double centerX, double centerY, double radius, double startAngle,
                               double endAngle, bool clockwise) {
    ensureGeneralPath();
    QPointF start(centerX + radius * std::cos(startAngle), centerY + radius * std::sin(startAngle));
    if (path_.elementCount() == 0) {
        path_.moveTo(start);
    }
    // QPainterPath measures angles in degrees toward -y; user-space angles run toward +y.
    constexpr double kDegreesPerRadian = 180 / std::numbers::pi;
    QRectF box(centerX - radius, centerY - radius, 2 * radius, 2 * radius);
    path_.arcTo(box, -startAngle * kDegreesPerRadian,
                -arcSweep(startAngle, endAngle, clockwise) * kDegreesPerRadian);
}

void HMKPainterContext::addRect(double x, double y, double width, double height) {
    ensureGeneralPath();
    path_.addRect(QRectF(x, y, width, height));
}

void HMKPainterContext::strokePath() {
    applyPendingClip();
    if (shape_ == PathShape::line) {
        painter_.setPen(strokePen());
        painter_.drawLine(QLineF(first_, second_));
    } else if (shape_ == PathShape::general) {
        painter_.strokePath(path_, strokePen());
    }
    clearPath();
}

void HMKPainterContext::fillPath() {
    applyPendingClip();
    if (shape_ == PathShape::general) {
        path_.setFillRule(Qt::WindingFill);
        painter_.fillPath(path_, QBrush(state_.fillColor));
    }
    clearPath();
}

void HMKPainterContext::clipToPath() {
    // A second clip before the first was used has to intersect it for real.
    applyPendingClip();
    ensureGeneralPath();
    path_.setFillRule(Qt::WindingFill);
    std::swap(state_.pendingClip, path_);
    state_.hasPendingClip = true;
    clearPath();
}

void HMKPainterContext::drawLinearGradient(const HMKGradient& gradient, double startX,
                                           double startY, double endX, double endY) {
    QPointF start(startX, startY);
    QPointF end(endX, endY);
    if (start == end || gradient.colors.empty()) {
        return;
    }
    QLinearGradient linear(start, end);
    linear.setStops(stopsOf(gradient));
    // Qt pads the end colours beyond the two points where a gradient without extension
    // paints nothing; the renderer's capsules lie entirely between them, so both agree.
    if (state_.hasPendingClip) {
        painter_.fillPath(state_.pendingClip, QBrush(linear));
    } else {
        painter_.fillPath(deviceBand(start, end), QBrush(linear));
    }
}

void HMKPainterContext::applyPendingClip() {
    if (!state_.hasPendingClip) {
        return;
    }
    if (!state_.painterSaved) {
        painter_.save();
        state_.painterSaved = true;
    }
    painter_.setClipPath(state_.pendingClip, Qt::IntersectClip);
    state_.pendingClip = QPainterPath();
    state_.hasPendingClip = false;
}

void HMKPainterContext::ensureGeneralPath() {
    if (shape_ == PathShape::general) {
        return;
    }
    if (shape_ == PathShape::point || shape_ == PathShape::line) {
        path_.moveTo(first_);
    }
    if (shape_ == PathShape::line) {
        path_.lineTo(second_);
    }
    shape_ = PathShape::general;
}

void HMKPainterContext::clearPath() {
    if (shape_ == PathShape::general) {
        path_.clear();
    }
    shape_ = PathShape::empty;
}

const QPen& HMKPainterContext::strokePen() {
    if (!penDirty_) {
        return pen_;
    }
    pen_ = QPen(QBrush(state_.strokeColor), state_.lineWidth, Qt::SolidLine, state_.cap,
                Qt::MiterJoin);
    pen_.setMiterLimit(10);
    if (!state_.dash.empty()) {
        // Qt counts dashes in pen widths (device pixels for a hairline), the context in
        // user-space units.
        const double unit =
            state_.lineWidth > 0 ? 1 / state_.lineWidth : deviceScale(painter_.transform());
        QList<qreal> pattern;
        // An odd pattern repeats with dashes and gaps swapped, as two rounds of it.
        const std::size_t rounds = state_.dash.size() % 2 == 0 ? 1 : 2;
        for (std::size_t round = 0; round < rounds; ++round) {
            for (double length : state_.dash) {
                pattern.append(std::max(length * unit, 0.0));
            }
        }
        pen_.setDashPattern(pattern);
    }
    penDirty_ = false;
    return pen_;
}

const QGradientStops& HMKPainterContext::stopsOf(const HMKGradient& gradient) {
    if (gradient == lastGradient_ && !lastStops_.isEmpty()) {
        return lastStops_;
    }
    lastGradient_ = gradient;
    lastStops_.clear();
    // Qt wants ascending locations within 0..1.
    const std::vector<double> locations = gradientStopLocations(gradient);
    for (std::size_t i = 0; i < gradient.colors.size(); ++i) {
        lastStops_.append({locations[i], toQColor(gradient.colors[i])});
    }
    return lastStops_;
}

QPainterPath HMKPainterContext::deviceBand(QPointF start, QPointF end) const {
    QPainterPath band;
    bool invertible = false;
    QTransform toUser = painter_.transform().inverted(&invertible);
    const QPaintDevice* device = painter_.device();
    if (!invertible || device == nullptr) {
        return band;
    }
    QRectF visible = toUser.mapRect(QRectF(0, 0, device->width(), device->height()));
    QPointF axis = end - start;
    QPointF across(-axis.y(), axis.x());
    const double axisLength = std::hypot(axis.x(), axis.y());
    const double reach =
        std::hypot(visible.width(), visible.height()) + QLineF(start, visible.center()).length();
    across *= reach / axisLength;
    band.addPolygon(QPolygonF({start + across, end + across, end - across, start - across}));
    band.closeSubpath();
    return band;
}
