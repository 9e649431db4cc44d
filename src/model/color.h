// An RGB thread colour with components from 0 to 1. Colours are immutable values:
// nothing changes a colour in place, a thread is given a new one instead.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

class HMKColor {
public:
    // The neutral light grey used for threads whose colour is unknown.
    HMKColor() : HMKColor(0.8, 0.8, 0.8) {}
    HMKColor(double red, double green, double blue) : red_(red), green_(green), blue_(blue) {}

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
    double red_;
    double green_;
    double blue_;
};

template <>
struct std::hash<HMKColor> {
    std::size_t operator()(const HMKColor& color) const noexcept { return color.hash(); }
};
