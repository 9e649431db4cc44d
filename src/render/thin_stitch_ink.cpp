#include "render/thin_stitch_ink.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "model/design.h"
#include "render/drawn_stitches.h"

namespace {

using Ink = std::array<float, 4>;

Ink premultiplied(const HMKRgba& color) {
    auto unit = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    const float alpha = unit(color.alpha);
    return {unit(color.red) * alpha, unit(color.green) * alpha, unit(color.blue) * alpha, alpha};
}

// What one stitch leaves in one pixel: the area its outline covers there and the part of it
// its core covers, both in pixels.
struct Share {
    float outline;
    float core;
};

class InkPainter {
public:
    InkPainter(const HMKAffineTransform& transform, double width) : transform_(transform) {
        const double pixelArea = std::abs(transform.a * transform.d);
        outlinePerUnit_ = static_cast<float>(width * pixelArea);
        corePerUnit_ = static_cast<float>(width * kHMKCoreWidthFactor * pixelArea);
        // Each round end adds half a disc.
        const double radius = width / 2;
        outlineEnd_ = static_cast<float>(std::numbers::pi * radius * radius / 2 * pixelArea);
        const double coreRadius = radius * kHMKCoreWidthFactor;
        coreEnd_ = static_cast<float>(std::numbers::pi * coreRadius * coreRadius / 2 * pixelArea);
        outlineHalfWidth_ = radius * std::sqrt(pixelArea);
        endLength_ = std::numbers::pi * radius / 4;
    }

    void setRaster(HMKInkRaster* raster) { raster_ = raster; }

    // Walks the pixels the stitch's centre line crosses, with the length inside each.
    void stitch(const HMKPosition<double>& from, const HMKPosition<double>& to, const Ink& outline,
                const Ink& core) {
        // The round ends are drawn as the stitch made longer by as much as their area
        // would fill across the stitch's width.
        double userX = to.x - from.x;
        double userY = to.y - from.y;
        const double userLength = std::sqrt(userX * userX + userY * userY);
        double ux = 1, uy = 0;
        if (userLength > 0) {
            ux = userX / userLength;
            uy = userY / userLength;
        }
        const double x0 = transform_.a * (from.x - ux * endLength_) + transform_.tx;
        const double y0 = transform_.d * (from.y - uy * endLength_) + transform_.ty;
        const double x1 = transform_.a * (to.x + ux * endLength_) + transform_.tx;
        const double y1 = transform_.d * (to.y + uy * endLength_) + transform_.ty;
        const float length = static_cast<float>(userLength + 2 * endLength_);
        const double endShare = endLength_ / (userLength + 2 * endLength_);
        int x = static_cast<int>(std::floor(x0));
        int y = static_cast<int>(std::floor(y0));
        const int lastX = static_cast<int>(std::floor(x1));
        const int lastY = static_cast<int>(std::floor(y1));
        const double dx = x1 - x0;
        const double dy = y1 - y0;
        const int stepX = dx > 0 ? 1 : -1;
        const int stepY = dy > 0 ? 1 : -1;
        // Parameters (0 at the start, 1 at the end) of the next vertical and horizontal grid
        // line crossed, and how far apart such lines are.
        const double deltaX = dx != 0 ? std::abs(1 / dx) : INFINITY;
        const double deltaY = dy != 0 ? std::abs(1 / dy) : INFINITY;
        double nextX = dx != 0 ? ((stepX > 0 ? x + 1 - x0 : x0 - x) * deltaX) : INFINITY;
        double nextY = dy != 0 ? ((stepY > 0 ? y + 1 - y0 : y0 - y) * deltaY) : INFINITY;
        // A stroke reaches this far across its major axis on either side of its centre line.
        const bool alongX = std::abs(dx) >= std::abs(dy);
        const double deviceLength = std::sqrt(dx * dx + dy * dy);
        const double across =
            deviceLength > 0 ? deviceLength / std::max(std::abs(dx), std::abs(dy)) : 1;
        const double outlineReach = outlineHalfWidth_ * across;
        const double coreReach = outlineReach * kHMKCoreWidthFactor;
        const double outlineScale = 1 / (2 * outlineReach);
        const double coreScale = 1 / (2 * coreReach);
        double entered = 0;
        // Each crossing moves one pixel; a stitch crosses at most |dx| + |dy| + 2 of them.
        for (int guard = static_cast<int>(std::abs(dx) + std::abs(dy)) + 2; guard >= 0; --guard) {
            const bool last = x == lastX && y == lastY;
            const double left = last ? 1.0 : std::min(nextX, nextY);
            const double leaving = std::min(left, 1.0);
            const float inside = static_cast<float>(leaving - entered) * length;
            // Along the added ends the core is narrower in proportion, as its round end is.
            const double endsInside = std::max(0.0, std::min(leaving, endShare) - entered) +
                                      std::max(0.0, leaving - std::max(entered, 1 - endShare));
            const float coreInside =
                inside - static_cast<float>(endsInside * length * (1 - kHMKCoreWidthFactor));
            // The part of the stitch in this pixel is shared with the pixels beside it as far
            // as its width reaches over.
            const double middle = (entered + leaving) / 2;
            const double centre = alongX ? y0 + dy * middle : x0 + dx * middle;
            if (!(outlineReach > 0)) {
                paint(x, y, {inside * outlinePerUnit_, coreInside * corePerUnit_}, outline, core);
            } else {
                const int lowest = static_cast<int>(std::floor(centre - outlineReach));
                const int highest = static_cast<int>(std::floor(centre + outlineReach));
                for (int cell = lowest; cell <= highest; ++cell) {
                    const float outlineShare = overlap(centre, outlineReach, outlineScale, cell) *
                                               inside * outlinePerUnit_;
                    if (outlineShare > 0) {
                        paint(alongX ? x : cell, alongX ? cell : y,
                              {outlineShare, overlap(centre, coreReach, coreScale, cell) *
                                                 coreInside * corePerUnit_},
                              outline, core);
                    }
                }
            }
            if (last || left >= 1) {
                break;
            }
            entered = left;
            if (nextX < nextY) {
                nextX += deltaX;
                x += stepX;
            } else {
                nextY += deltaY;
                y += stepY;
            }
        }
    }

private:
    // The share of the interval centre +- reach that falls into pixel cell (scale is
    // 1 / (2 * reach)).
    static float overlap(double centre, double reach, double scale, int cell) {
        const double covered =
            std::min(centre + reach, cell + 1.0) - std::max(centre - reach, double(cell));
        return covered > 0 ? static_cast<float>(covered * scale) : 0.0f;
    }

    void paint(int x, int y, Share share, const Ink& outline, const Ink& core) {
        if (x < 0 || y < 0 || x >= raster_->width || y >= raster_->height) {
            return;
        }
        const float covered = std::min(share.outline, 1.0f);
        const float inner = std::min(share.core, covered);
        float* pixel =
            raster_->rgba.data() + (static_cast<std::size_t>(y) * raster_->width + x) * 4;
        float source[4];
        for (int c = 0; c < 4; ++c) {
            source[c] = core[c] * inner + outline[c] * (covered - inner);
        }
        const float keep = 1 - source[3];
        for (int c = 0; c < 4; ++c) {
            pixel[c] = source[c] + pixel[c] * keep;
        }
    }

    HMKInkRaster* raster_ = nullptr;
    HMKAffineTransform transform_;
    float outlinePerUnit_ = 0;
    float corePerUnit_ = 0;
    float outlineEnd_ = 0;
    float coreEnd_ = 0;
    double outlineHalfWidth_ = 0;
    double endLength_ = 0;
};

}  // namespace

HMKInkRaster::HMKInkRaster(int width, int height)
    : width(std::max(width, 0)),
      height(std::max(height, 0)),
      rgba(static_cast<std::size_t>(this->width) * this->height * 4, 0.0f) {}

void drawThinStitches(const HMKDesign& design, const HMKAffineTransform& designToPixels,
                      std::int32_t thread,
                      const std::function<HMKInkRaster*(std::size_t thread)>& rasterFor) {
    InkPainter painter(designToPixels, kHMKStitchWidth);
    HMKInkRaster* raster = nullptr;
    // The selection overlay is an outline of one colour throughout.
    const Ink selection = premultiplied(kHMKSelectionColor);
    HMKThreadPaint paint;
    Ink outline{}, core{}, fadedOutline{}, fadedCore{};
    std::size_t paintedThread = 0;
    bool painted = false;
    walkDrawnStitches(design, nullptr, false, thread, [&](const HMKDrawnStitch& drawn) {
        if (!painted || drawn.thread != paintedThread) {
            paint.setThreadColor(design.threads()[drawn.thread].color);
            outline = premultiplied(paint.dark);
            core = premultiplied(paint.color);
            fadedOutline = premultiplied(paint.fadedDark);
            fadedCore = premultiplied(paint.faded);
            paintedThread = drawn.thread;
            painted = true;
            raster = rasterFor(drawn.thread);
            painter.setRaster(raster);
        }
        if (!raster) {
            return;
        }
        painter.stitch(drawn.from, drawn.to, drawn.faded ? fadedOutline : outline,
                       drawn.faded ? fadedCore : core);
        if (drawn.stitch->isSelected) {
            painter.stitch(drawn.from, drawn.to, selection, selection);
        }
    });
}
