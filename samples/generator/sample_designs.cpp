#include "sample_designs.h"

#include <algorithm>
#include <numbers>

#include "design_builder.h"

namespace {

constexpr double kPi = std::numbers::pi;
// Distance along a satin column between two consecutive crossings (0.12 mm): dense enough
// to cover the fabric.
constexpr double kSatinSpacing = 1.2;
constexpr double kRunningStitch = 25;
constexpr double kUnderlayStitch = 30;

// A pointed satin column from base to tip, sewn as a running underlay out to the tip and a
// satin back to the base. halfWidth is the widest half width, reached in the middle.
void petal(DesignBuilder& builder, SamplePoint base, SamplePoint tip, double halfWidth) {
    const SamplePoint axis = tip - base;
    const double length = distance(base, tip);
    const SamplePoint normal = SamplePoint{-axis.y, axis.x} * (1 / length);
    builder.startRunAt(base);
    builder.runAlong({base, tip}, kUnderlayStitch);
    const int crossings = static_cast<int>(length / kSatinSpacing);
    std::vector<SamplePoint> left, right;
    for (int k = crossings; k >= 0; --k) {
        const double t = double(k) / crossings;
        const double width = halfWidth * std::pow(std::sin(kPi * t), 0.7);
        const SamplePoint middle = base + axis * t;
        left.push_back(middle + normal * width);
        right.push_back(middle - normal * width);
    }
    builder.satin(left, right);
}

// A leaf: two satin halves on either side of a central vein, so no stitch is wider than
// the leaf's half width.
void leaf(DesignBuilder& builder, SamplePoint base, SamplePoint tip, double halfWidth) {
    const SamplePoint axis = tip - base;
    const double length = distance(base, tip);
    const SamplePoint normal = SamplePoint{-axis.y, axis.x} * (1 / length);
    const int crossings = static_cast<int>(length / kSatinSpacing);
    for (double side : {1.0, -1.0}) {
        builder.startRunAt(base);
        builder.runAlong({base, tip}, kUnderlayStitch);
        std::vector<SamplePoint> vein, edge;
        for (int k = crossings; k >= 0; --k) {
            const double t = double(k) / crossings;
            const SamplePoint middle = base + axis * t;
            vein.push_back(middle);
            edge.push_back(middle + normal * (side * halfWidth * std::sin(kPi * t)));
        }
        builder.satin(edge, vein);
    }
}

// A tatami fill of a disc: rows of stitches of at most stitchLength, the needle points of
// each row shifted by a third of a stitch against the row before, so they form no furrows.
void discFill(DesignBuilder& builder, double radius, double rowSpacing, double stitchLength) {
    const int rows = static_cast<int>(2 * radius / rowSpacing);
    bool first = true;
    for (int row = 1; row < rows; ++row) {
        const double y = -radius + row * rowSpacing;
        const double half = std::sqrt(radius * radius - y * y);
        const bool forward = row % 2 == 1;
        const double start = forward ? -half : half;
        const double end = forward ? half : -half;
        if (first) {
            builder.startRunAt({start, y});
            first = false;
        } else {
            builder.stitchTo({start, y});
        }
        const double shift = (row % 3) * stitchLength / 3;
        std::vector<double> needlePoints;
        for (double x = -radius - shift; x < radius; x += stitchLength) {
            if (x > -half + 2 && x < half - 2) {
                needlePoints.push_back(x);
            }
        }
        if (!forward) {
            std::reverse(needlePoints.begin(), needlePoints.end());
        }
        for (double x : needlePoints) {
            builder.stitchTo({x, y});
        }
        builder.stitchTo({end, y});
    }
}

// A satin ring between two radii, once around.
void satinRing(DesignBuilder& builder, double inner, double outer) {
    const int crossings = static_cast<int>(2 * kPi * (inner + outer) / 2 / kSatinSpacing);
    std::vector<SamplePoint> in, out;
    for (int k = 0; k <= crossings; ++k) {
        const double angle = 2 * kPi * k / crossings;
        in.push_back(polar(inner, angle));
        out.push_back(polar(outer, angle));
    }
    builder.startRunAt(in.front());
    builder.runAlong(in, kUnderlayStitch);
    builder.satin(out, in);
}

std::vector<SamplePoint> heartOutline(double scale, int points) {
    std::vector<SamplePoint> outline;
    for (int k = 0; k <= points; ++k) {
        const double t = 2 * kPi * k / points;
        const double s = std::sin(t);
        outline.push_back(
            {scale * 16 * s * s * s, scale * (13 * std::cos(t) - 5 * std::cos(2 * t) -
                                              2 * std::cos(3 * t) - std::cos(4 * t) + 2.5)});
    }
    return outline;
}

}  // namespace

HMKDesign makeFlower() {
    DesignBuilder builder;
    builder.beginThread("226");  // leaves: Green
    for (int i = 0; i < 4; ++i) {
        const double angle = kPi / 4 + i * kPi / 2;
        leaf(builder, polar(200, angle), polar(420, angle), 55);
    }
    builder.beginThread("001");  // outer petals: White
    for (int i = 0; i < 16; ++i) {
        const double angle = 2 * kPi * i / 16;
        petal(builder, polar(105, angle), polar(385, angle), 30);
    }
    builder.beginThread("201");  // inner petals: Pink
    for (int i = 0; i < 16; ++i) {
        const double angle = 2 * kPi * (i + 0.5) / 16;
        petal(builder, polar(100, angle), polar(270, angle), 24);
    }
    builder.beginThread("239");  // centre: Sunflower
    discFill(builder, 110, 3, 22);
    builder.beginThread("214");  // border around the centre: Brown
    satinRing(builder, 100, 125);
    return builder.finish("flower");
}

HMKDesign makeHeart() {
    DesignBuilder builder;
    const std::vector<SamplePoint> outline = heartOutline(18, 720);
    builder.beginThread("244");  // satin border: Cardinal Red
    // The satin crosses the outline at equal distances along it, square to its direction.
    const std::vector<SamplePoint> dense = heartOutline(18, 20000);
    std::vector<SamplePoint> inner, outer;
    const double halfWidth = 15;
    double along = 0;
    double nextCrossing = 0;
    for (std::size_t i = 1; i < dense.size(); ++i) {
        along += distance(dense[i - 1], dense[i]);
        if (along < nextCrossing) {
            continue;
        }
        nextCrossing += kSatinSpacing;
        const SamplePoint tangent = dense[i] - dense[i - 1];
        const double length = std::max(distance(dense[i], dense[i - 1]), 1e-9);
        const SamplePoint normal = SamplePoint{tangent.y, -tangent.x} * (1 / length);
        outer.push_back(dense[i] + normal * halfWidth);
        inner.push_back(dense[i] - normal * halfWidth);
    }
    builder.startRunAt(outline.front());
    builder.runAlong(outline, kUnderlayStitch);
    builder.satin(outer, inner);
    // Smaller running outlines inside, each in a lighter colour.
    const std::pair<const char*, double> outlines[] = {
        {"201", 13}, {"211", 9}, {"001", 5}};  // Pink, Pale Pink, White
    for (const auto& [key, scale] : outlines) {
        builder.beginThread(key);
        const std::vector<SamplePoint> small = heartOutline(scale, 360);
        builder.startRunAt(small.front());
        builder.runAlong(small, kRunningStitch);
    }
    return builder.finish("heart");
}

HMKDesign makeStar() {
    DesignBuilder builder;
    // Three nested stars, each in its own colour.
    const std::pair<const char*, double> stars[] = {
        {"239", 1.0}, {"235", 0.65}, {"207", 0.3}};  // Sunflower, Burnt Orange, Blue
    for (const auto& [key, scale] : stars) {
        builder.beginThread(key);
        std::vector<SamplePoint> corners;
        for (int k = 0; k <= 10; ++k) {
            const double radius = (k % 2 == 0 ? 300 : 125) * scale;
            corners.push_back(polar(radius, kPi / 2 + k * kPi / 5));
        }
        builder.startRunAt(corners.front());
        // Triple running stitch: forward, back, forward along every edge.
        for (std::size_t k = 1; k < corners.size(); ++k) {
            builder.runAlong({corners[k - 1], corners[k], corners[k - 1], corners[k]},
                             kRunningStitch);
        }
    }
    return builder.finish("star");
}
