// Plain geometry values shared by the model, the editors and the renderer.
// Design coordinates are in 0.1 mm, x to the right and y upward.
#pragma once

#include <cstdint>

struct HMKPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const HMKPoint&, const HMKPoint&) = default;
};

// Origin plus size, as a graphics rectangle: contains() is half-open on both axes.
struct HMKRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool contains(HMKPoint p) const {
        return p.x >= x && p.x < x + width && p.y >= y && p.y < y + height;
    }
    friend bool operator==(const HMKRect&, const HMKRect&) = default;
};

// A range of stitch indices (the stitch-out player shows only these).
struct HMKRange {
    std::uint64_t location = 0;
    std::uint64_t length = 0;
    friend bool operator==(const HMKRange&, const HMKRange&) = default;
};
