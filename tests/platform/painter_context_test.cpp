// The QPainter drawing context paints what the renderer asks for, checked on small rasters.
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "platform/painter_context.h"

namespace {

// A side x side raster showing user space 0..side/10 on both axes, y pointing up (ten pixels
// per unit), so user (x, y) is the pixel (10x, side - 10y).
constexpr int kSide = 40;
const QTransform kYUp(10, 0, 0, -10, 0, kSide);

QImage paint(const std::function<void(HMKPainterContext&)>& draw) {
    QImage image(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(kYUp);
    HMKPainterContext context(painter);
    draw(context);
    return image;
}

// The pixel that covers a point of user space.
QColor at(const QImage& image, double x, double y) {
    QPointF device = kYUp.map(QPointF(x, y));
    int column = static_cast<int>(std::floor(device.x()));
    int row = static_cast<int>(std::floor(device.y()));
    return image.pixelColor(std::clamp(column, 0, kSide - 1), std::clamp(row, 0, kSide - 1));
}

void line(HMKPainterContext& context, double x0, double y0, double x1, double y1) {
    context.moveTo(x0, y0);
    context.lineTo(x1, y1);
    context.strokePath();
}

// A pixel expectation: the exact colour, or for a transparent colour only that nothing is there.
struct Pixel {
    double x, y;
    QColor color;
};
const QColor kNothing(0, 0, 0, 0);

TEST(PainterContext, PaintsStrokesFillsDashesAndClipsInUserSpace) {
    const struct {
        const char* name;
        std::function<void(HMKPainterContext&)> draw;
        std::vector<Pixel> pixels;
    } cases[] = {
        {"strokes with width and colour; the default butt cap ends the line at its end",
         [](HMKPainterContext& context) {
             context.setLineWidth(1);
             context.setStrokeColor({1, 0, 0, 1});
             line(context, 1, 2, 3, 2);
         },
         {{2, 2, QColor(255, 0, 0)}, {2, 2.8, kNothing}, {0.7, 2, kNothing}}},
        {"a round cap extends the line by half its width",
         [](HMKPainterContext& context) {
             context.setRoundLineCap();
             context.setLineWidth(1);
             context.setStrokeColor({0, 0, 1, 1});
             line(context, 1, 2, 3, 2);
         },
         {{0.75, 2, QColor(0, 0, 255)}}},
        {"dashes are measured in user space",
         [](HMKPainterContext& context) {
             context.setLineWidth(0.5);
             context.setLineDash({1, 1});
             line(context, 0, 2, 4, 2);
         },
         {{0.5, 2, QColor(0, 0, 0)}, {1.5, 2, kNothing}, {2.5, 2, QColor(0, 0, 0)}}},
        {"a structure marker is filled",
         [](HMKPainterContext& context) {
             context.setFillColor({0, 0, 0, 1});
             context.addRect(1.5, 1.5, 1, 1);
             context.fillPath();
         },
         {{2, 2, QColor(0, 0, 0)}, {2.7, 2, kNothing}}},
        {"restoring the state drops the clip, and colour and width are back to black and 1",
         [](HMKPainterContext& context) {
             context.saveState();
             context.addRect(0, 0, 1, 1);
             context.clipToPath();
             context.setLineWidth(0.5);
             context.setStrokeColor({0, 1, 0, 1});
             line(context, 0.5, 0.5, 3.5, 0.5);
             context.restoreState();
             line(context, 0.5, 3, 3.5, 3);
         },
         {{0.5, 0.5, QColor(0, 255, 0)},
          {2, 0.5, kNothing},
          {2, 3, QColor(0, 0, 0)},
          {2, 3.4, QColor(0, 0, 0)}}},
    };
    for (const auto& c : cases) {
        QImage image = paint(c.draw);
        for (const Pixel& pixel : c.pixels) {
            QColor actual = at(image, pixel.x, pixel.y);
            if (pixel.color.alpha() == 0) {
                EXPECT_EQ(actual.alpha(), 0) << c.name << " at " << pixel.x << "," << pixel.y;
            } else {
                EXPECT_EQ(actual, pixel.color) << c.name << " at " << pixel.x << "," << pixel.y;
            }
        }
    }
}

TEST(PainterContext, ColoursOutsideTheUnitRangeAreClampedByTheDevice) {
    QImage image = paint([](HMKPainterContext& context) {
        context.setLineWidth(1);
        context.setStrokeColor({1.3, -0.2, 0.5, 1});
        line(context, 1, 2, 3, 2);
    });
    QColor color = at(image, 2, 2);
    EXPECT_EQ(color.red(), 255);
    EXPECT_EQ(color.green(), 0);
    EXPECT_NEAR(color.blue(), 128, 1);
}

TEST(PainterContext, ArcsTurnTowardIncreasingAnglesUnlessClockwise) {
    for (bool clockwise : {false, true}) {
        QImage image = paint([&](HMKPainterContext& context) {
            context.setFillColor({0, 0, 0, 1});
            context.moveTo(2, 2);
            context.addArc(2, 2, 1.5, 0, std::numbers::pi, clockwise);
            context.fillPath();
        });
        EXPECT_EQ(at(image, 2, 3).alpha(), clockwise ? 0 : 255) << clockwise;
        EXPECT_EQ(at(image, 2, 1).alpha(), clockwise ? 255 : 0) << clockwise;
    }
}

// The renderer's 3D capsule for a stitch from (1, 2) to (3, 2.5) with radius 0.8.
void capsule(HMKPainterContext& context) {
    const double theta = std::atan(0.25);
    const double s = std::sin(theta);
    const double c = std::cos(theta);
    context.moveTo(1 + 0.8 * s, 2 - 0.8 * c);
    context.addArc(3, 2.5, 0.8, s - 1.571, s + 1.571, false);
    context.addArc(1, 2, 0.8, s + 1.571, s - 1.571, false);
}

const HMKGradient kCapsuleGradient{{{0.6, 0, 0, 1}, {1, 0.6, 0.2, 1}, {0.6, 0, 0, 1}},
                                   {0.0, 0.4, 1.0}};

TEST(PainterContext, GradientInAClipPaintsWhatAClippedGradientPaints) {
    const double s = std::sin(std::atan(0.25));
    const double c = std::cos(std::atan(0.25));
    QImage image = paint([&](HMKPainterContext& context) {
        capsule(context);
        context.saveState();
        context.clipToPath();
        context.drawLinearGradient(kCapsuleGradient, 1 - 0.8 * s, 2 + 0.8 * c, 1 + 0.8 * s,
                                   2 - 0.8 * c);
        context.restoreState();
    });

    // The reference: a real clip to the same path, and the gradient across the whole raster.
    QImage reference(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    reference.fill(Qt::transparent);
    {
        QPainter painter(&reference);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setTransform(kYUp);
        QPainterPath clip;
        clip.moveTo(1 + 0.8 * s, 2 - 0.8 * c);
        const double degrees = 180 / std::numbers::pi;
        clip.arcTo(QRectF(3 - 0.8, 2.5 - 0.8, 1.6, 1.6), -(s - 1.571) * degrees, -3.142 * degrees);
        clip.arcTo(QRectF(1 - 0.8, 2 - 0.8, 1.6, 1.6), -(s + 1.571) * degrees, -3.142 * degrees);
        clip.setFillRule(Qt::WindingFill);
        painter.setClipPath(clip);
        QLinearGradient gradient(1 - 0.8 * s, 2 + 0.8 * c, 1 + 0.8 * s, 2 - 0.8 * c);
        gradient.setColorAt(0.0, QColor::fromRgbF(0.6f, 0, 0));
        gradient.setColorAt(0.4, QColor::fromRgbF(1, 0.6f, 0.2f));
        gradient.setColorAt(1.0, QColor::fromRgbF(0.6f, 0, 0));
        painter.fillRect(QRectF(0, 0, 4, 4), QBrush(gradient));
    }

    int painted = 0;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            QColor a = image.pixelColor(x, y);
            QColor b = reference.pixelColor(x, y);
            // Edge pixels may differ by a little antialiasing coverage.
            ASSERT_NEAR(a.alpha(), b.alpha(), 40) << x << "," << y;
            if (a.alpha() == 255 && b.alpha() == 255) {
                ++painted;
                ASSERT_NEAR(a.red(), b.red(), 2) << x << "," << y;
                ASSERT_NEAR(a.green(), b.green(), 2) << x << "," << y;
                ASSERT_NEAR(a.blue(), b.blue(), 2) << x << "," << y;
            }
        }
    }
    EXPECT_GT(painted, 100);
}

TEST(PainterContext, WidthZeroIsTheThinnestLineTheDeviceDrawsWithDashesInUserSpace) {
    QImage solid = paint([](HMKPainterContext& context) {
        context.setLineWidth(0);
        line(context, 0, 1.95, 4, 1.95);
    });
    int paintedRows = 0;
    for (int y = 0; y < kSide; ++y) {
        paintedRows += solid.pixelColor(20, y).alpha() > 0 ? 1 : 0;
    }
    EXPECT_GE(paintedRows, 1);
    EXPECT_LE(paintedRows, 2);
    QImage dashed = paint([](HMKPainterContext& context) {
        context.setLineWidth(0);
        context.setLineDash({1, 1});
        line(context, 0, 1.95, 4, 1.95);
    });
    EXPECT_GT(at(dashed, 0.5, 1.95).alpha(), 0);
    EXPECT_EQ(at(dashed, 1.5, 1.95).alpha(), 0);
}

TEST(PainterContext, LeavesThePainterAsItWasEvenWhenSavesAreUnbalanced) {
    QImage image(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    {
        HMKPainterContext context(painter);
        context.addRect(0, 0, 1, 1);
        context.clipToPath();
        context.saveState();
        context.addRect(0, 0, 1, 1);
        context.clipToPath();
        context.moveTo(0, 0);
        context.lineTo(1, 1);
        context.strokePath();
        EXPECT_TRUE(painter.hasClipping());
    }
    EXPECT_FALSE(painter.hasClipping());
}

}  // namespace
