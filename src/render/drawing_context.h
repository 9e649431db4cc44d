// The 2D drawing operations the design renderer needs, and nothing more. The renderer depends
// only on this interface; src/platform/ backs it with QPainter (images, PDF, SVG) and the tests
// with a recording context. Colours are RGBA with components nominally 0..1 (not clamped here).
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

struct HMKRgba {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const HMKRgba&, const HMKRgba&) = default;
};

// A three-stop (or longer) linear gradient: colours at locations 0..1.
struct HMKGradient {
    std::vector<HMKRgba> colors;
    std::vector<double> locations;
    friend bool operator==(const HMKGradient&, const HMKGradient&) = default;
};

// Where each of the gradient's colours stands, ascending within 0..1 as painting needs them: a
// colour without a location takes its index, and a location below the one before takes that.
inline std::vector<double> gradientStopLocations(const HMKGradient& gradient) {
    std::vector<double> stops;
    stops.reserve(gradient.colors.size());
    double previous = 0;
    for (std::size_t i = 0; i < gradient.colors.size(); ++i) {
        const double location =
            i < gradient.locations.size() ? gradient.locations[i] : static_cast<double>(i);
        previous = std::clamp(location, previous, 1.0);
        stops.push_back(previous);
    }
    return stops;
}

// Maps user space to device pixels: x' = a*x + c*y + tx, y' = b*x + d*y + ty.
struct HMKAffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
};

class HMKDrawingContext {
public:
    virtual ~HMKDrawingContext() = default;

    virtual void saveState() = 0;
    virtual void restoreState() = 0;
    virtual void setRoundLineCap() = 0;
    virtual void setLineWidth(double width) = 0;
    // Dash lengths with phase 0; an empty pattern draws solid lines.
    virtual void setLineDash(const std::vector<double>& pattern) = 0;
    virtual void setStrokeColor(const HMKRgba& color) = 0;
    virtual void setFillColor(const HMKRgba& color) = 0;

    virtual void moveTo(double x, double y) = 0;
    virtual void lineTo(double x, double y) = 0;
    // Angles in radians, measured from the x axis toward the y axis of user space; the arc
    // sweeps toward decreasing angles when clockwise (clockwise as seen with y pointing up).
    // Like lineTo, it first joins the current point to the arc's start.
    virtual void addArc(double centerX, double centerY, double radius, double startAngle,
                        double endAngle, bool clockwise) = 0;
    virtual void addRect(double x, double y, double width, double height) = 0;

    // Each of these consumes the current path.
    virtual void strokePath() = 0;
    virtual void fillPath() = 0;
    virtual void clipToPath() = 0;

    // Fills the current clip with the gradient drawn linearly from start to end.
    virtual void drawLinearGradient(const HMKGradient& gradient, double startX, double startY,
                                    double endX, double endY) = 0;
};

// The signed sweep addArc draws from startAngle to endAngle (negative when clockwise), within
// one full turn: every context turns its arguments into the same arc.
inline double arcSweep(double startAngle, double endAngle, bool clockwise) {
    constexpr double kFullTurn = 2 * std::numbers::pi;
    double sweep = clockwise ? startAngle - endAngle : endAngle - startAngle;
    if (sweep < 0) {
        sweep = std::fmod(sweep, kFullTurn) + kFullTurn;
    }
    sweep = std::min(sweep, kFullTurn);
    return clockwise ? -sweep : sweep;
}
