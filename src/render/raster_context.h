// A drawing context that paints straight into pixels, antialiased, with no pixel library
// underneath: the fast way to draw designs on screen, into PNG pictures and into the PES/PEC
// thumbnails. Plain C++, so it runs on any thread; one context per thread and target.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "render/coverage_rasterizer.h"
#include "render/drawing_context.h"

// Pixels to paint: premultiplied ARGB, one native 32-bit word per pixel (alpha in the top
// byte), rows from the top. This is QImage::Format_ARGB32_Premultiplied, so a QImage's bits
// can be painted in place.
struct HMKRasterTarget {
    std::uint32_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    // Pixels from the start of one row to the start of the next.
    std::size_t stride = 0;
};

// A raster that owns its pixels, transparent when made.
struct HMKRaster {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    HMKRaster() = default;
    HMKRaster(int width, int height);
    HMKRasterTarget target() {
        return {pixels.data(), width, height, static_cast<std::size_t>(width)};
    }
    std::uint32_t pixel(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * width + x];
    }
};

// --- Pixel arithmetic shared with code that composes rasters ---------------------------
// The colour as a premultiplied pixel; components are clamped to 0..1 first, as a device
// colour space would.
std::uint32_t premultipliedPixel(const HMKRgba& color);
// x * a / 255 for the four bytes of a pixel at once, rounded.
inline std::uint32_t byteMultiply(std::uint32_t x, std::uint32_t a) {
    std::uint32_t t = (x & 0xff00ff) * a;
    t = (t + ((t >> 8) & 0xff00ff) + 0x800080) >> 8;
    t &= 0xff00ff;
    x = ((x >> 8) & 0xff00ff) * a;
    x = (x + ((x >> 8) & 0xff00ff) + 0x800080);
    x &= 0xff00ff00;
    return x | t;
}
// source drawn over destination, source weighted by coverage (0..255).
inline std::uint32_t blendPixelOver(std::uint32_t destination, std::uint32_t source,
                                    std::uint32_t coverage) {
    const std::uint32_t weighted = coverage >= 255 ? source : byteMultiply(source, coverage);
    const std::uint32_t alpha = weighted >> 24;
    if (alpha == 255) {
        return weighted;
    }
    return weighted + byteMultiply(destination, 255 - alpha);
}
// The straight (not premultiplied) red, green, blue and alpha of a pixel, 0..255 each.
std::array<std::uint8_t, 4> straightComponents(std::uint32_t pixel);

class HMKRasterContext : public HMKDrawingContext {
public:
    // Paints into target through userToPixels; the target must outlive the context. Joins of
    // multi-segment strokes are drawn round; the renderer strokes single segments only. A
    // stroke of one segment may be painted only at the next call (it waits for a narrower
    // stroke along the same segment to paint both in one pass); restoreState and the
    // destructor paint whatever still waits. Lines at most one pixel wide are drawn as the
    // screen's painter draws them: one pixel across, as faint as they are thin, with round
    // ends half a pixel long.
    HMKRasterContext(HMKRasterTarget target, const HMKAffineTransform& userToPixels);
    ~HMKRasterContext() override;
    HMKRasterContext(const HMKRasterContext&) = delete;
    HMKRasterContext& operator=(const HMKRasterContext&) = delete;

    // Paints nothing more once the flag is true (a redraw nobody waits for any more).
    void setCancelFlag(const std::atomic<bool>* cancel) { cancel_ = cancel; }

    void saveState() override;
    void restoreState() override;
    void setRoundLineCap() override;
    void setLineWidth(double width) override;
    void setLineDash(const std::vector<double>& pattern) override;
    void setStrokeColor(const HMKRgba& color) override;
    void setFillColor(const HMKRgba& color) override;
    void moveTo(double x, double y) override;
    void lineTo(double x, double y) override;
    void addArc(double centerX, double centerY, double radius, double startAngle, double endAngle,
                bool clockwise) override;
    void addRect(double x, double y, double width, double height) override;
    void strokePath() override;
    void fillPath() override;
    void clipToPath() override;
    void drawLinearGradient(const HMKGradient& gradient, double startX, double startY, double endX,
                            double endY) override;

private:
    struct Point {
        double x, y;
    };
    // A coverage mask over part of the target: pixels outside it are clipped away.
    struct ClipMask {
        int left = 0, top = 0, width = 0, height = 0;
        std::vector<std::uint8_t> coverage;
    };
    struct State {
        double lineWidth = 1;
        std::vector<double> dash;
        bool roundCap = false;
        std::uint32_t strokeColor = 0xFF000000;
        std::uint32_t fillColor = 0xFF000000;
        std::shared_ptr<const ClipMask> mask;
        // A clip path not yet turned into a mask (index into pendingClips_, or -1): a
        // gradient drawn into it fills the path directly, one pass instead of two.
        int pendingClip = -1;
    };
    struct Subpath {
        std::size_t first = 0;
        bool closed = false;
    };

    Point toDevice(Point p) const;
    bool cancelled() const { return cancel_ && cancel_->load(std::memory_order_relaxed); }
    void ensureCurrentPoint(Point p);
    void clearPath();
    // Segments of a half circle (or less) for a radius in user units.
    int arcSegments(double radius, double sweep) const;
    void addDevicePolygonOfPath(const std::vector<Point>& points,
                                const std::vector<Subpath>& subpaths);
    void addSegmentOutline(Point from, Point to, double halfWidth, bool roundCap, int layer = 0);
    void paintWaitingStroke();
    void paintTwoLayers(std::uint32_t outer, std::uint32_t inner);
    const std::vector<Point>& capTurns(int segments);
    void addHairline(Point from, Point to);
    void strokeSegmentDashed(Point from, Point to, double& dashPhase);
    void drawThinLine(Point from, Point to, float opacity, double& dashPhase);
    void applyPendingClip();
    // Sweeps the shape built in the rasterizer within the clip, calling paint(pixel, x, y,
    // coverage, innerCoverage, clip) for every pixel it touches; clip points to the clip
    // mask's coverage of the pixel, or is null without a mask.
    template <typename Paint>
    void sweepWithinClip(Paint&& paint);
    void paintShape(std::uint32_t color, float coverageScale);
    void paintGradientShape(const HMKGradient& gradient, Point start, Point end, bool wholeClip);

    HMKRasterTarget target_;
    HMKAffineTransform transform_;
    // Device pixels per user unit (the geometric mean of the transform's scales).
    double deviceScale_ = 1;
    const std::atomic<bool>* cancel_ = nullptr;
    // A one-segment stroke not painted yet (see the constructor).
    struct WaitingStroke {
        bool active = false;
        Point from{0, 0};
        Point to{0, 0};
        double width = 0;
        bool roundCap = false;
        std::uint32_t color = 0;
    };

    State state_;
    std::vector<State> stack_;
    WaitingStroke waiting_;
    std::vector<std::vector<double>> pendingClips_;
    std::vector<Point> points_;
    std::vector<Subpath> subpaths_;
    HMKCoverageRasterizer rasterizer_;
    std::vector<double> polygon_;
    std::vector<Point> capTurns_;
    HMKGradient lastGradient_;
    std::vector<std::uint32_t> gradientTable_;
};
