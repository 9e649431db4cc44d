// The fast drawing paths against the slow full-resolution references they replaced: screen
// pictures from the software raster against the same drawing through QPainter, and PES/PEC
// thumbnails drawn as ink areas against the design drawn at one pixel per unit with QPainter
// and scaled down smoothly. Samples and random designs.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "formats/write/pec_thumbnails.h"
#include "platform/design_image.h"
#include "platform/painter_context.h"
#include "render/random_designs.h"

namespace {

// --- References ----------------------------------------------------------------------------

QImage referenceImage(const HMKDesign& design, const HMKDesignImageRequest& request) {
    QImage image(request.widthPixels, request.heightPixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const HMKAffineTransform& t = request.designToPixels;
    painter.setTransform(QTransform(t.a, t.b, t.c, t.d, t.tx, t.ty));
    HMKPainterContext context(painter);
    const HMKDrawingSwitches& s = request.switches;
    design.drawDesignInRect({-1e6, -1e6, 2e6, 2e6}, context, s.show3D, s.showJumps, s.showStructure,
                            s.thread);
    return image;
}

// The thumbnail as the design used to be drawn for it: one pixel per design unit, then
// smoothly scaled to the picture area.
std::vector<std::uint8_t> referenceThumbnail(const HMKDesign& design, std::int32_t thread) {
    const HMKPecThumbnailLayout layout = pecThumbnailLayout(design);
    QImage full(static_cast<int>(layout.fullWidth), static_cast<int>(layout.fullHeight),
                QImage::Format_ARGB32_Premultiplied);
    full.fill(Qt::transparent);
    {
        QPainter painter(&full);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setTransform(
            QTransform(1, 0, 0, -1, -layout.left, layout.bottom + layout.fullHeight));
        HMKPainterContext context(painter);
        design.drawDesignInRect(
            {layout.left, layout.bottom, double(layout.fullWidth), double(layout.fullHeight)},
            context, false, false, false, thread);
    }
    const QImage small = full.scaled(layout.pictureWidth, layout.pictureHeight,
                                     Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                             .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    HMKRaster picture(kPecThumbnailWidth, kPecThumbnailHeight);
    for (int y = 0; y < layout.pictureHeight; ++y) {
        for (int x = 0; x < layout.pictureWidth; ++x) {
            picture.pixels[static_cast<std::size_t>(y + layout.pictureTop) * kPecThumbnailWidth +
                           x + layout.pictureLeft] =
                reinterpret_cast<const std::uint32_t*>(small.constScanLine(y))[x];
        }
    }
    return pecThumbnailBits(picture);
}

// --- Comparing -----------------------------------------------------------------------------

struct PixelDifferences {
    long pixels = 0;
    // Pixels with some channel (premultiplied) more than kScreenTolerance apart.
    long beyondTolerance = 0;
    double sum = 0;
};

// Screen pictures agree within this many levels per premultiplied channel...
constexpr int kScreenTolerance = 32;
// ...except for at most this share of pixels: thin lines exactly at 45 degrees and lines
// cut by the picture's edge can land one pixel over, and there a stitch's rim and core swap.
constexpr double kScreenOutlierShare = 0.003;
// And on average no channel is further off than this.
constexpr double kScreenMeanTolerance = 1.0;

void compareImages(const QImage& reference, const QImage& fast, PixelDifferences& totals) {
    for (int y = 0; y < reference.height(); ++y) {
        const auto* a = reinterpret_cast<const std::uint32_t*>(reference.constScanLine(y));
        const auto* b = reinterpret_cast<const std::uint32_t*>(fast.constScanLine(y));
        for (int x = 0; x < reference.width(); ++x) {
            int largest = 0;
            for (int shift = 0; shift < 32; shift += 8) {
                largest = std::max(
                    largest, std::abs(int((a[x] >> shift) & 0xff) - int((b[x] >> shift) & 0xff)));
            }
            ++totals.pixels;
            totals.sum += largest;
            totals.beyondTolerance += largest > kScreenTolerance;
        }
    }
}

int differingBits(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    int count = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        count += __builtin_popcount(a[i] ^ b[i]);
    }
    return count;
}

// Thumbnails differ in at most this many of the 1,344 picture pixels (3 %), and in fewer than
// 1 % on average. The reference's pixels come from rounding the design drawn large and scaled
// down; the ink areas come from exact areas at a small scale. Where a stitch only grazes a
// pixel, one side rounds its trace of ink to nothing and the other not, so the pixel is or is
// not on the picture's outline; and pixels within a few levels of the brightness limit of 179
// fall either way.
constexpr int kThumbnailPixelTolerance = 40;
constexpr double kThumbnailMeanTolerance = 0.01 * 1344;

std::vector<HMKDesign> samples() {
    std::vector<HMKDesign> designs;
    for (const char* name : {"flower.pes", "heart.pes", "star.pes"}) {
        HMKDesign design;
        if (design.importDesignFromURL(std::filesystem::path(HEMLARK_SAMPLES_DIR) / name)) {
            designs.push_back(std::move(design));
        }
    }
    return designs;
}

HMKDesignImageRequest fitted(const HMKDesign& design, int pixels, HMKDrawingSwitches switches) {
    const double width = std::max(1.0f, design.xMax() - design.xMin()) + 3.5;
    const double height = std::max(1.0f, design.yMax() - design.yMin()) + 3.5;
    const double zoom = (pixels - 10) / std::max(width, height);
    HMKDesignImageRequest request;
    request.widthPixels = pixels;
    request.heightPixels = pixels;
    request.designToPixels = {zoom,
                              0,
                              0,
                              -zoom,
                              pixels / 2.0 - zoom * (design.xMin() + design.xMax()) / 2,
                              pixels / 2.0 + zoom * (design.yMin() + design.yMax()) / 2};
    request.switches = switches;
    return request;
}

TEST(DrawingDifferential, ScreenPicturesMatchThePainterWithinTolerance) {
    std::vector<HMKDesign> designs = samples();
    ASSERT_EQ(designs.size(), 3u);
    std::mt19937 random(16);
    for (int i = 0; i < 200; ++i) {
        designs.push_back(randomDesign(random));
    }
    const HMKDrawingSwitches looks[] = {
        {}, {true, false, false, -1}, {false, true, true, -1}, {true, true, false, 1}};
    PixelDifferences totals;
    for (std::size_t i = 0; i < designs.size(); ++i) {
        // Zoomed out (every stitch thinner than a pixel), near real size and zoomed in.
        const int pixels = i < 3 ? 600 : 60 + static_cast<int>(i % 5) * 60;
        const HMKDesignImageRequest request = fitted(designs[i], pixels, looks[i % 4]);
        compareImages(referenceImage(designs[i], request), drawDesignImage(designs[i], request),
                      totals);
    }
    EXPECT_LE(totals.beyondTolerance, kScreenOutlierShare * totals.pixels)
        << totals.beyondTolerance << " of " << totals.pixels;
    EXPECT_LE(totals.sum / totals.pixels, kScreenMeanTolerance);
}

TEST(DrawingDifferential, BandsOnSeveralThreadsPaintTheSamePicture) {
    std::mt19937 random(18);
    const HMKDesign design = randomDesign(random, 300, 6);
    HMKDesignImageRequest request = fitted(design, 1200, {true, true, true, -1});
    const QImage single = drawDesignImage(design, request);
    request.threads = 3;
    EXPECT_EQ(drawDesignImage(design, request), single);
}

TEST(DrawingDifferential, ThumbnailsMatchTheFullResolutionDrawingScaledDown) {
    std::vector<HMKDesign> designs = samples();
    ASSERT_EQ(designs.size(), 3u);
    std::mt19937 random(17);
    for (int i = 0; i < 120; ++i) {
        designs.push_back(randomDesign(random, 50 + (i % 4) * 80, 3));
    }
    long total = 0;
    long count = 0;
    for (const HMKDesign& design : designs) {
        const std::vector<std::uint8_t> fast = pecThumbnails(design, true);
        for (std::int32_t thread = -1; thread < std::int32_t(design.numberOfThreads()); ++thread) {
            const std::vector<std::uint8_t> one(fast.begin() + (thread + 1) * kPecThumbnailBytes,
                                                fast.begin() + (thread + 2) * kPecThumbnailBytes);
            const int differing = differingBits(referenceThumbnail(design, thread), one);
            EXPECT_LE(differing, kThumbnailPixelTolerance) << "thread " << thread;
            total += differing;
            ++count;
        }
    }
    EXPECT_LE(double(total) / count, kThumbnailMeanTolerance);
}

}  // namespace
