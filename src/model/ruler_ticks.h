// The tick marks of the design view's rulers and the measuring tool's reading, in the user's
// unit: millimetres, decimal inches or fractional inches (binary steps down to 1/16 inch).
// Plain arithmetic, so that the rulers are tested without a window.
#pragma once

#include <string>
#include <vector>

#include "model/geometry.h"
#include "model/units.h"

struct HMKRulerTick {
    // Pixels along the ruler.
    double pixel = 0;
    // 0 a labelled major tick, 1 a half-way tick, 2 any finer tick.
    int level = 0;
    // The major ticks' value in the unit, without the unit ("20", "1.5", "1 1/2").
    std::string label;
};

// The ticks between pixel 0 and lengthPixels of a ruler on which the design's 0 mm lies at
// zeroPixel and one millimetre spans pixelsPerMillimetre (negative when the ruler's pixels
// run against the design axis, as the vertical ruler's do). Labels are at least
// kMinimumLabelSpacing pixels apart, finer ticks at least kMinimumTickSpacing.
std::vector<HMKRulerTick> rulerTicks(HMKMeasurementUnit unit, double zeroPixel,
                                     double pixelsPerMillimetre, double lengthPixels);
inline constexpr double kMinimumLabelSpacing = 50;
inline constexpr double kMinimumTickSpacing = 5;

// The measuring tool's reading between two design points: the distance in the unit and the
// direction in degrees counter-clockwise from the x axis ("42.4 mm, 45.0°").
struct HMKMeasurement {
    double millimetres = 0;
    double degrees = 0;
    std::string text(HMKMeasurementUnit unit) const;
};
HMKMeasurement measureBetween(HMKPoint from, HMKPoint to);
