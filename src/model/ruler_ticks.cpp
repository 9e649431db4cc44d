#include "model/ruler_ticks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr double kUnitsPerMillimetre = 10;
// A ruler never draws more ticks than this, whatever the zoom asks for.
constexpr long long kMostTicks = 4000;

// How a unit's majors are chosen and divided.
struct RulerScheme {
    double millimetresPerUnit;
    // Candidate distances between labels, in the unit, smallest first; the list repeats
    // times ten beyond its end.
    std::vector<double> majorSteps;
    // Candidate numbers of parts a major is divided into, finest first.
    std::vector<int> divisions;
};

const RulerScheme& schemeFor(HMKMeasurementUnit unit) {
    // Labels are at least kMinimumLabelSpacing apart, so a tenth is always wide enough.
    static const RulerScheme kMillimetres{1, {1, 2, 5}, {10}};
    static const RulerScheme kDecimalInches{kMillimetresPerInch, {0.1, 0.2, 0.5}, {10}};
    // Fractions halve down to a sixteenth; whole inches then go 1, 2, 5, 10, ...
    static const RulerScheme kFractionalInches{
        kMillimetresPerInch, {0.125, 0.25, 0.5, 1, 2, 5}, {16, 8, 4, 2}};
    switch (unit) {
        case HMKMeasurementUnit::decimalInches:
            return kDecimalInches;
        case HMKMeasurementUnit::fractionalInches:
            return kFractionalInches;
        case HMKMeasurementUnit::millimetres:
            break;
    }
    return kMillimetres;
}

double majorStepFor(const RulerScheme& scheme, double pixelsPerUnit) {
    for (double decade = 1;; decade *= 10) {
        for (double step : scheme.majorSteps) {
            if (step * decade * pixelsPerUnit >= kMinimumLabelSpacing || decade > 1e9) {
                return step * decade;
            }
        }
    }
}

std::string labelFor(double value, HMKMeasurementUnit unit) {
    if (unit == HMKMeasurementUnit::fractionalInches) {
        std::string text = HMKValueTransformer::transformedValue(value * kMillimetresPerInch, unit);
        text.pop_back();  // the inch sign: the ruler's corner names the unit
        return text;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%g", std::fabs(value) < 1e-9 ? 0.0 : value);
    return text;
}

}  // namespace

std::vector<HMKRulerTick> rulerTicks(HMKMeasurementUnit unit, double zeroPixel,
                                     double pixelsPerMillimetre, double lengthPixels) {
    const RulerScheme& scheme = schemeFor(unit);
    const double pixelsPerUnit = std::fabs(pixelsPerMillimetre) * scheme.millimetresPerUnit;
    if (!(pixelsPerUnit > 0) || !std::isfinite(pixelsPerUnit) || !(lengthPixels > 0)) {
        return {};
    }
    const double major = majorStepFor(scheme, pixelsPerUnit);
    int parts = 1;
    for (int division : scheme.divisions) {
        if (major / division * pixelsPerUnit >= kMinimumTickSpacing) {
            parts = division;
            break;
        }
    }
    const double minor = major / parts;
    // The values at both ends of the ruler, in the unit.
    const double pixelsPerMinor = minor * pixelsPerUnit;
    const double direction = pixelsPerMillimetre < 0 ? -1 : 1;
    const double endA = (0 - zeroPixel) * direction / pixelsPerMinor;
    const double endB = (lengthPixels - zeroPixel) * direction / pixelsPerMinor;
    const long long first = static_cast<long long>(std::ceil(std::min(endA, endB)));
    const long long last = static_cast<long long>(std::floor(std::max(endA, endB)));
    std::vector<HMKRulerTick> ticks;
    if (last - first > kMostTicks) {
        return ticks;
    }
    for (long long index = first; index <= last; ++index) {
        HMKRulerTick tick;
        tick.pixel = zeroPixel + direction * static_cast<double>(index) * pixelsPerMinor;
        const long long within = ((index % parts) + parts) % parts;
        tick.level = within == 0 ? 0 : (parts % 2 == 0 && within == parts / 2 ? 1 : 2);
        if (tick.level == 0) {
            tick.label = labelFor(static_cast<double>(index / parts) * major, unit);
        }
        ticks.push_back(std::move(tick));
    }
    if (direction < 0) {
        std::reverse(ticks.begin(), ticks.end());
    }
    return ticks;
}

HMKMeasurement measureBetween(HMKPoint from, HMKPoint to) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    HMKMeasurement measurement;
    measurement.millimetres = std::hypot(dx, dy) / kUnitsPerMillimetre;
    measurement.degrees = std::atan2(dy, dx) * 180 / std::numbers::pi;
    return measurement;
}

std::string HMKMeasurement::text(HMKMeasurementUnit unit) const {
    char angle[32];
    std::snprintf(angle, sizeof angle, "%.1f\u00B0", degrees == 0 ? 0.0 : degrees);
    return HMKValueTransformer::transformedValue(millimetres, unit) + ", " + angle;
}
