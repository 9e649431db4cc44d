// Offscreen RGBA pictures for the parts of the core that need pixels (the PEC thumbnails).
// The core has no pixel engine of its own: the platform layer installs a provider at start-up
// (installRasterProvider), and code that finds none falls back to drawing nothing.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "render/drawing_context.h"

// Straight (not premultiplied) RGBA, 4 bytes per pixel, rows from the top.
struct HMKRgbaImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;

    const std::uint8_t* pixel(int x, int y) const {
        return rgba.data() + (static_cast<std::size_t>(y) * width + x) * 4;
    }
};

// Maps user space to raster pixels: x' = a*x + c*y + tx, y' = b*x + d*y + ty.
struct HMKAffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
};

class HMKRasterProvider {
public:
    virtual ~HMKRasterProvider() = default;
    // A transparent width x height raster into which draw() paints through a context whose
    // user space is mapped to pixels by transform (antialiased).
    virtual HMKRgbaImage render(int width, int height, const HMKAffineTransform& transform,
                                const std::function<void(HMKDrawingContext&)>& draw) = 0;
    // The image smoothly scaled to width x height.
    virtual HMKRgbaImage scaled(const HMKRgbaImage& image, int width, int height) = 0;
};

void installRasterProvider(std::shared_ptr<HMKRasterProvider> provider);
// The installed provider, or null. Shared, so that installing another provider meanwhile
// cannot free the one a drawing on another thread is using.
std::shared_ptr<HMKRasterProvider> rasterProvider();
