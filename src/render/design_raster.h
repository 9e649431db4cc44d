// Drawing a design straight into pixels with the software raster context: the one entry point
// that the picture export, the PES/PEC thumbnails and the desktop canvas share. Plain C++ and
// free of shared state, so it may run on any thread while the design is left unchanged.
#pragma once

#include <atomic>
#include <cstdint>

#include "render/raster_context.h"

class HMKDesign;

// What the design view's switches select (see HMKDesign::drawDesignInRect).
struct HMKDrawingSwitches {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    // The only thread drawn, or -1 for all.
    std::int32_t thread = -1;
};

// Draws what of the design falls into the target, placed by designToPixels (design units to
// target pixels, y flipped by the caller as needed), over what the target already holds.
// Stops early, leaving the target half drawn, once cancel becomes true.
void drawDesignIntoRaster(const HMKDesign& design, HMKRasterTarget target,
                          const HMKAffineTransform& designToPixels,
                          const HMKDrawingSwitches& switches,
                          const std::atomic<bool>* cancel = nullptr);
