// The Qt raster provider hands out straight RGBA pictures of what was drawn, and scales them.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "platform/qt_raster_provider.h"

namespace {

std::array<int, 4> rgba(const HMKRgbaImage& image, int x, int y) {
    const std::uint8_t* p = image.pixel(x, y);
    return {p[0], p[1], p[2], p[3]};
}

void fillSquare(HMKDrawingContext& context, const HMKRgba& color) {
    context.setFillColor(color);
    context.addRect(0, 0, 1, 1);
    context.fillPath();
}

TEST(QtRasterProvider, RendersStraightRgbaWithTheTransformApplied) {
    HMKQtRasterProvider provider;
    // Two pixels per unit, shifted one pixel right.
    HMKAffineTransform transform{2, 0, 0, 2, 1, 0};
    HMKRgbaImage image = provider.render(4, 4, transform, [](HMKDrawingContext& context) {
        fillSquare(context, {1, 0, 0, 0.5});
    });
    ASSERT_EQ(image.width, 4);
    ASSERT_EQ(image.height, 4);
    ASSERT_EQ(image.rgba.size(), 64u);
    EXPECT_EQ(rgba(image, 0, 0), (std::array<int, 4>{0, 0, 0, 0}));
    // Not premultiplied: half-transparent red keeps its full red.
    EXPECT_EQ(rgba(image, 1, 0), (std::array<int, 4>{255, 0, 0, 128}));
    EXPECT_EQ(rgba(image, 2, 1), (std::array<int, 4>{255, 0, 0, 128}));
    EXPECT_EQ(rgba(image, 3, 0)[3], 0);
    EXPECT_EQ(rgba(image, 1, 2)[3], 0);
}

TEST(QtRasterProvider, NonPositiveSizesGiveAnEmptyImage) {
    HMKQtRasterProvider provider;
    auto draw = [](HMKDrawingContext&) {};
    EXPECT_EQ(provider.render(0, 5, {}, draw).width, 0);
    EXPECT_TRUE(provider.render(5, -1, {}, draw).rgba.empty());
    HMKRgbaImage source = provider.render(2, 2, {}, draw);
    EXPECT_TRUE(provider.scaled(source, 0, 3).rgba.empty());
}

TEST(QtRasterProvider, ScalingAveragesWithoutDarkeningTransparentEdges) {
    HMKQtRasterProvider provider;
    HMKRgbaImage source{2, 1, {255, 0, 0, 255, 0, 0, 0, 0}};
    HMKRgbaImage scaled = provider.scaled(source, 1, 1);
    ASSERT_EQ(scaled.width, 1);
    ASSERT_EQ(scaled.height, 1);
    std::array<int, 4> pixel = rgba(scaled, 0, 0);
    EXPECT_EQ(pixel[0], 255);
    EXPECT_EQ(pixel[1], 0);
    EXPECT_NEAR(pixel[3], 128, 1);
}

TEST(QtRasterProvider, ScalingUpKeepsAUniformColour) {
    HMKQtRasterProvider provider;
    HMKRgbaImage source{1, 1, {10, 200, 30, 255}};
    HMKRgbaImage scaled = provider.scaled(source, 3, 2);
    ASSERT_EQ(scaled.rgba.size(), 24u);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(rgba(scaled, x, y), (std::array<int, 4>{10, 200, 30, 255}));
        }
    }
}

TEST(QtRasterProvider, InstallingMakesItTheCoresProvider) {
    installQtRasterProvider();
    std::shared_ptr<HMKRasterProvider> provider = rasterProvider();
    ASSERT_NE(provider, nullptr);
    HMKRgbaImage image = provider->render(2, 2, {}, [](HMKDrawingContext& context) {
        fillSquare(context, {0, 0, 1, 1});
    });
    EXPECT_EQ(rgba(image, 0, 0), (std::array<int, 4>{0, 0, 255, 255}));
}

}  // namespace
