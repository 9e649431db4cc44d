// Stitches drawn as ink areas, for the tiny PES/PEC thumbnails: every pixel gets the area of
// the stitch outlines and cores that cross it, worked out from the length of the stitch inside
// the pixel and spread across its width. Ten times faster than outlining each stitch, exact
// for stitches thinner than a pixel and close for wider ones (their round ends are drawn as
// square ends of the same area). Used by formats/write/pec_thumbnails.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "render/drawing_context.h"

class HMKDesign;

// Premultiplied red, green, blue and alpha per pixel, each 0..1, rows from the top; floats,
// so that thousands of faint stitches in one pixel add up as they would at full size.
struct HMKInkRaster {
    int width = 0;
    int height = 0;
    std::vector<float> rgba;

    HMKInkRaster(int width, int height);
    const float* pixel(int x, int y) const {
        return rgba.data() + (static_cast<std::size_t>(y) * width + x) * 4;
    }
};

// Draws the thread stitches of the design (all threads, or only `thread`) flat, as
// drawDesignInRect draws them without jumps or structure marks, through designToPixels (a
// scale and a translation; y may be flipped), each thread into rasterFor(thread index): one
// raster for all, one per thread, or null to leave a thread out. An outline and its core share
// each pixel in proportion to their areas.
void drawThinStitches(const HMKDesign& design, const HMKAffineTransform& designToPixels,
                      std::int32_t thread,
                      const std::function<HMKInkRaster*(std::size_t thread)>& rasterFor);
