// The design as runs of joined stitches, each with the strokes that draw it: how the vector
// pictures (SVG, PDF) draw a design in a path per run instead of a path per stitch. A run is
// what drawDesignInRect draws stitch by stitch, with the outline, core and shading of the whole
// run stroked one over the other (so the dark rim where one stitch meets the next is not
// drawn), then its selection overlay and structure marks.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "model/stitch_walk.h"
#include "render/design_raster.h"

class HMKDesign;

// One stroke along a whole run; width 0 is the thinnest line the device can draw.
struct HMKRunStroke {
    double width = 0;
    HMKRgba color;
    // Dashed 2 on, 3 off (design units), as jumps are.
    bool dashed = false;
};

struct HMKStitchRun {
    // Thread stitches, or jump lines.
    bool isThread = true;
    std::size_t thread = 0;
    // The polyline, at least two points.
    std::vector<HMKPosition<double>> points;
    // Bottom to top.
    std::vector<HMKRunStroke> strokes;
    // Structure mode: a filled square of this side at every point but the first, else 0.
    double markerSize = 0;
    HMKRgba markerColor;
};

// Calls visit for every run in drawing order, the selection overlay of a run as runs of
// their own right after it. The run passed is reused for the next call.
void walkStitchRuns(const HMKDesign& design, const HMKDrawingSwitches& switches,
                    const std::function<void(const HMKStitchRun&)>& visit);
