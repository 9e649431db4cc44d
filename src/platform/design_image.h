// A design drawn into a QImage of any size, zoom and scroll position, flat or shaded: what the
// desktop canvas redraws at every zoom and the PNG export writes. Safe to call from a worker
// thread, provided nobody changes the design meanwhile (hand the worker its own copy).
#pragma once

#include <QImage>
#include <atomic>
#include <optional>

#include "model/color.h"
#include "render/design_raster.h"

class HMKDesign;

struct HMKDesignImageRequest {
    // The image size in device pixels.
    int widthPixels = 0;
    int heightPixels = 0;
    // Design units to image pixels: zoom, scroll position and the flip of y to point up
    // (for a zoom z and the design point (x0, y0) at the top left: {z, 0, 0, -z, -z*x0, z*y0}).
    HMKAffineTransform designToPixels;
    // Fills the image first; without one it stays transparent.
    std::optional<HMKColor> background;
    HMKDrawingSwitches switches;
    // Horizontal bands drawn at the same time; 0 uses every processor. Each band walks the
    // whole design, so more bands pay off only for large or shaded images.
    int threads = 1;
};

// The image (ARGB32 premultiplied), or a null image when the size is not positive or cannot
// be allocated. When cancel becomes true the drawing stops early and the image is unfinished.
QImage drawDesignImage(const HMKDesign& design, const HMKDesignImageRequest& request,
                       const std::atomic<bool>* cancel = nullptr);
