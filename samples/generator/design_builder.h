// Builds sample designs from needle positions: running stitches, satin columns and fills are
// laid down in absolute positions (0.1 mm units, y upward) and stored as the relative records
// of an HMKDesign. Positions are rounded to whole units so every format stores them exactly.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "model/design.h"

struct SamplePoint {
    double x = 0;
    double y = 0;
};

inline SamplePoint operator+(SamplePoint a, SamplePoint b) {
    return {a.x + b.x, a.y + b.y};
}
inline SamplePoint operator-(SamplePoint a, SamplePoint b) {
    return {a.x - b.x, a.y - b.y};
}
inline SamplePoint operator*(SamplePoint a, double s) {
    return {a.x * s, a.y * s};
}
inline double distance(SamplePoint a, SamplePoint b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}
inline SamplePoint polar(double radius, double radians) {
    return {radius * std::cos(radians), radius * std::sin(radians)};
}

class DesignBuilder {
public:
    // Starts the next colour block with a thread of the "Janome" palette, so that every format
    // can carry its colour: JEF by its own code, the others by the nearest thread of theirs, or
    // by the thread side file written beside DST and EXP.
    void beginThread(const std::string& janomeKey);
    // Moves the needle without sewing.
    void jumpTo(SamplePoint point);
    void stitchTo(SamplePoint point);
    // Jumps to the first point and secures the thread with two short stitches there.
    void startRunAt(SamplePoint point);
    // Sews along a polyline with stitches of at most stitchLength.
    void runAlong(const std::vector<SamplePoint>& points, double stitchLength);
    // Zig-zags between two edges sampled at the same parameters (a satin column).
    void satin(const std::vector<SamplePoint>& left, const std::vector<SamplePoint>& right);

    HMKDesign finish(const std::string& name);

private:
    void record(SamplePoint point, bool jump);

    HMKDesign design_;
    long x_ = 0;
    long y_ = 0;
    bool colorChangePending_ = false;
};
