#include "design_builder.h"

#include <algorithm>

namespace {

// Two short stitches that lock the thread at the start of every run.
constexpr double kTieLength = 8;

}  // namespace

void DesignBuilder::beginThread(const std::string& janomeKey) {
    const HMKThread thread = HMKThread::fromPaletteKey(janomeKey, "Janome");
    if (!design_.threads().empty()) {
        colorChangePending_ = true;
    }
    design_.threads().push_back(thread);
}

void DesignBuilder::record(SamplePoint point, bool jump) {
    const long x = std::lround(point.x);
    const long y = std::lround(point.y);
    if (x == x_ && y == y_ && !colorChangePending_) {
        return;
    }
    design_.stitches().emplace_back(static_cast<float>(x - x_), static_cast<float>(y - y_),
                                    jump || colorChangePending_, colorChangePending_);
    colorChangePending_ = false;
    x_ = x;
    y_ = y;
}

void DesignBuilder::jumpTo(SamplePoint point) {
    record(point, true);
}

void DesignBuilder::stitchTo(SamplePoint point) {
    record(point, false);
}

void DesignBuilder::startRunAt(SamplePoint point) {
    jumpTo(point);
    stitchTo(point + SamplePoint{kTieLength, 0});
    stitchTo(point);
}

void DesignBuilder::runAlong(const std::vector<SamplePoint>& points, double stitchLength) {
    for (std::size_t i = 1; i < points.size(); ++i) {
        const double length = distance(points[i - 1], points[i]);
        const int pieces = std::max(1, static_cast<int>(std::ceil(length / stitchLength)));
        for (int k = 1; k <= pieces; ++k) {
            stitchTo(points[i - 1] + (points[i] - points[i - 1]) * (double(k) / pieces));
        }
    }
}

void DesignBuilder::satin(const std::vector<SamplePoint>& left,
                          const std::vector<SamplePoint>& right) {
    for (std::size_t i = 0; i < left.size() && i < right.size(); ++i) {
        stitchTo(i % 2 == 0 ? left[i] : right[i]);
    }
}

HMKDesign DesignBuilder::finish(const std::string& name) {
    design_.setDesignName(name);
    design_.setDesignType("DST");
    design_.setDesignVersion(10);
    design_.recomputeBounds();
    design_.setDisplayRange({0, design_.stitches().size()});
    return design_;
}
