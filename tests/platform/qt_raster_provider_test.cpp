// The Qt raster provider hands out straight RGBA pictures of what was drawn, and scales them.
#include <gtest/gtest.h>

#include <array>

#include "platform/qt_raster_provider.h"

namespace {

std::array<int, 4> rgba(const HMKRgbaImage& image, int x, int y) {
    const std::uint8_t* p = image.pixel(x, y);
    return {p[0], p[1], p[2], p[3]};
}

}  // namespace

TEST(QtRasterProvider, RendersStraightRgbaWithTheTransformAndScalesWithoutDarkeningEdges) {
    installQtRasterProvider();
    HMKRasterProvider& provider = *rasterProvider();
    // Two pixels per unit, shifted one pixel right.
    const HMKRgbaImage image =
        provider.render(4, 4, {2, 0, 0, 2, 1, 0}, [](HMKDrawingContext& context) {
            context.setFillColor({1, 0, 0, 0.5});
            context.addRect(0, 0, 1, 1);
            context.fillPath();
        });
    ASSERT_EQ(image.rgba.size(), 64u);
    ASSERT_EQ(image.width, 4);
    // Not premultiplied: half-transparent red keeps its full red.
    EXPECT_EQ(rgba(image, 0, 0), (std::array<int, 4>{0, 0, 0, 0}));
    EXPECT_EQ(rgba(image, 1, 0), (std::array<int, 4>{255, 0, 0, 128}));
    EXPECT_EQ(rgba(image, 2, 1), (std::array<int, 4>{255, 0, 0, 128}));
    EXPECT_EQ(rgba(image, 3, 0)[3], 0);
    EXPECT_EQ(rgba(image, 1, 2)[3], 0);

    const HMKRgbaImage half = provider.scaled({2, 1, {255, 0, 0, 255, 0, 0, 0, 0}}, 1, 1);
    ASSERT_EQ(half.rgba.size(), 4u);
    EXPECT_EQ(rgba(half, 0, 0)[0], 255);
    EXPECT_NEAR(rgba(half, 0, 0)[3], 128, 1);
    const HMKRgbaImage larger = provider.scaled({1, 1, {10, 200, 30, 255}}, 3, 2);
    ASSERT_EQ(larger.rgba.size(), 24u);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(rgba(larger, i % 3, i / 3), (std::array<int, 4>{10, 200, 30, 255}));
    }
    // Non-positive sizes give an empty image.
    EXPECT_TRUE(provider.render(0, 5, {}, [](HMKDrawingContext&) {}).rgba.empty());
    EXPECT_TRUE(provider.render(5, -1, {}, [](HMKDrawingContext&) {}).rgba.empty());
    EXPECT_TRUE(provider.scaled(image, 0, 3).rgba.empty());
}
