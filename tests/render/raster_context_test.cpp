// The software raster context: exact area coverage, round ends, thin lines, dashes, clips with
// gradients, stitches of outline and core painted in one pass, and stopping when cancelled.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <numbers>

#include "render/raster_context.h"

namespace {

const HMKRgba kBlack{0, 0, 0, 1};

int alphaAt(const HMKRaster& raster, int x, int y) {
    return static_cast<int>(raster.pixel(x, y) >> 24);
}

double inkArea(const HMKRaster& raster) {
    double sum = 0;
    for (std::uint32_t pixel : raster.pixels) {
        sum += (pixel >> 24) / 255.0;
    }
    return sum;
}

HMKRaster draw(int width, int height, const std::function<void(HMKDrawingContext&)>& paint,
               HMKAffineTransform transform = {}, const std::atomic<bool>* cancel = nullptr) {
    HMKRaster raster(width, height);
    HMKRasterContext context(raster.target(), transform);
    context.setCancelFlag(cancel);
    paint(context);
    return raster;
}

TEST(RasterContext, CoverageIsTheExactAreaOfEachPixel) {
    // A square from (1.5, 1.5) to (4.5, 3.5): whole pixels inside, halves on the edges,
    // quarters in the corners (coverage in 256 steps, full coverage capped at 255).
    const HMKRaster raster = draw(6, 5, [](HMKDrawingContext& c) {
        c.addRect(1.5, 1.5, 3, 2);
        c.fillPath();
    });
    const struct {
        int x, y, alpha;
    } cases[] = {{2, 2, 255}, {3, 2, 255}, {1, 2, 128}, {4, 2, 128}, {2, 1, 128},
                 {1, 1, 64},  {4, 1, 64},  {0, 0, 0},   {5, 2, 0},   {2, 4, 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(alphaAt(raster, c.x, c.y), c.alpha) << c.x << "," << c.y;
    }
}

TEST(RasterContext, ShapesReachingPastTheEdgesAreCutExactly) {
    // A triangle from x = -4 to 8 over rows 0 to 4: what lies inside the raster is the part
    // of its area right of x = 0 and left of x = 6.
    const HMKRaster raster = draw(6, 4, [](HMKDrawingContext& c) {
        c.moveTo(-4, 0);
        c.lineTo(8, 0);
        c.lineTo(8, 4);
        c.fillPath();
    });
    // The triangle's height at x is (x + 4) / 3; from 0 to 6 that is the area 4/3 * 6 + 3.
    EXPECT_NEAR(inkArea(raster), 4.0 / 3 * 6 + 6.0 * 6 / 6, 0.05);
    EXPECT_EQ(alphaAt(raster, 5, 0), 255);
    EXPECT_EQ(alphaAt(raster, 0, 3), 0);
}

TEST(RasterContext, StrokesCoverTheirOutlineWithRoundEnds) {
    const struct {
        const char* name;
        double width;
        HMKAffineTransform transform;
        double area;
    } cases[] = {
        {"wide", 4, {}, 10 * 4 + std::numbers::pi * 4},
        {"scaled", 2, {2, 0, 0, -2, 0, 20}, (10 * 2 + std::numbers::pi) * 4},
        // At most a pixel wide: one pixel across, as faint as it is thin, each end half a
        // pixel longer.
        {"thin", 0.5, {}, 11 * 0.5},
        {"thinnest", 0, {}, 11},
    };
    for (const auto& c : cases) {
        const HMKRaster raster = draw(
            40, 30,
            [&](HMKDrawingContext& context) {
                context.setRoundLineCap();
                context.setLineWidth(c.width);
                context.moveTo(4, 5.5);
                context.lineTo(14, 5.5);
                context.strokePath();
            },
            c.transform);
        EXPECT_NEAR(inkArea(raster), c.area, c.area * 0.02) << c.name;
    }
}

TEST(RasterContext, DashesLeaveGapsAlongTheLine) {
    const HMKRaster raster = draw(24, 6, [](HMKDrawingContext& c) {
        c.setLineWidth(2);
        c.setLineDash({2, 3});
        c.moveTo(0, 3);
        c.lineTo(24, 3);
        c.strokePath();
    });
    // On 0-2, 5-7, 10-12 ...: pixel columns 0, 1, 5, 6 inked, 2 to 4 not.
    for (int x : {0, 1, 5, 6, 10, 21}) {
        EXPECT_EQ(alphaAt(raster, x, 2), 255) << x;
    }
    for (int x : {2, 3, 4, 7, 9, 13}) {
        EXPECT_EQ(alphaAt(raster, x, 2), 0) << x;
    }
}

TEST(RasterContext, GradientFillsOnlyTheClipAndRunsAlongItsAxis) {
    const HMKRaster raster = draw(10, 4, [](HMKDrawingContext& c) {
        c.saveState();
        c.addRect(2, 0, 6, 4);
        c.clipToPath();
        c.drawLinearGradient({{kBlack, {1, 1, 1, 1}}, {0, 1}}, 2, 0, 8, 0);
        c.restoreState();
    });
    EXPECT_EQ(raster.pixel(1, 1), 0u);
    EXPECT_EQ(raster.pixel(8, 1), 0u);
    // Sampled at pixel centres: the first is 0.5 / 6 of the way from black to white.
    EXPECT_NEAR((raster.pixel(2, 1) >> 8) & 0xff, 21, 2);
    int previous = -1;
    for (int x = 2; x < 8; ++x) {
        const int green = static_cast<int>((raster.pixel(x, 1) >> 8) & 0xff);
        EXPECT_EQ(alphaAt(raster, x, 1), 255);
        EXPECT_GT(green, previous) << x;
        previous = green;
    }
}

TEST(RasterContext, AStitchIsItsCoreOverItsOutline) {
    // The outline waits for the narrower core along the same segment; restoring the state
    // paints both.
    HMKRaster raster(20, 9);
    {
        HMKRasterContext context(raster.target(), {});
        context.saveState();
        context.setRoundLineCap();
        for (auto [width, color] : {std::pair{5.0, kBlack}, std::pair{3.0, HMKRgba{1, 0, 0, 1}}}) {
            context.setLineWidth(width);
            context.setStrokeColor(color);
            context.moveTo(4, 4.5);
            context.lineTo(15, 4.5);
            context.strokePath();
        }
        context.restoreState();
        EXPECT_EQ(raster.pixel(9, 4), 0xFFFF0000u);  // the core
        EXPECT_EQ(raster.pixel(9, 2), 0xFF000000u);  // the rim
        EXPECT_EQ(raster.pixel(9, 0), 0u);
    }
}

TEST(RasterContext, PaintsNothingOnceCancelled) {
    const std::atomic<bool> cancel{true};
    const HMKRaster raster = draw(
        8, 8,
        [](HMKDrawingContext& c) {
            c.addRect(0, 0, 8, 8);
            c.fillPath();
        },
        {}, &cancel);
    EXPECT_EQ(inkArea(raster), 0);
}

}  // namespace
