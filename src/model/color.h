// An RGB thread colour with components from 0 to 1. Colours are immutable values:
// nothing changes a colour in place, a thread is given a new one instead. Components outside
// the range (side files and archives may hold anything) are brought to its nearest end, and
// one that is no number to 0, so that every use of a colour can rely on the range.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

class HMKColor {
public:
    // The neutral light grey used for threads whose colour is unknown.
    HMKColor() : HMKColor(0.8, 0.8, 0.8) {}
    HMKColor(double red, double green, double blue)
        : red_(inUnitRange(red)), green_(inUnitRange(green)), blue_(inUnitRange(blue)) {}

    double red() const { return red_; }
    double green() const { return green_; }
    double blue() const { return blue_; }

    // Exact component comparison; equal colours hash alike.
    friend bool operator==(const HMKColor& a, const HMKColor& b) {
        return a.red_ == b.red_ && a.green_ == b.green_ && a.blue_ == b.blue_;
    }
    std::uint64_t hash() const;

    // "RGB color (r / g / b)" with components scaled to 0..255.
    std::string description() const;

private:
    static double inUnitRange(double component) {
        return component > 1 ? 1 : component > 0 ? component : 0;
    }

    double red_;
    double green_;
    double blue_;
};

template <>
struct std::hash<HMKColor> {
    std::size_t operator()(const HMKColor& color) const noexcept { return color.hash(); }
};
