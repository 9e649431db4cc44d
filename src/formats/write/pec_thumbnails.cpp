// PEC thumbnails: the design is drawn as ink areas at twice the scale of the 42 x 32 picture,
// averaged down, and turned into one-bit ink where a pixel is on the picture's outline or
// dark.
#include "formats/write/pec_thumbnails.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "model/design.h"
#include "render/drawn_stitches.h"
#include "render/thin_stitch_ink.h"

namespace {

constexpr int kThumbnailBytesPerRow = kPecThumbnailWidth / 8;
static_assert(kPecThumbnailBytes == kThumbnailBytesPerRow * kPecThumbnailHeight);
constexpr int kPictureWidth = 42;
constexpr int kPictureHeight = 32;
constexpr int kPictureFirstRow = 3;
constexpr int kPictureLastRow = 34;
constexpr int kPictureFirstColumn = 3;
constexpr int kPictureLastColumn = 44;
// Blank design units drawn around the design before it is scaled down.
constexpr int kThumbnailMarginUnits = 10;
// Pixels at most this bright in every channel count as ink.
constexpr std::uint8_t kThumbnailDarkLimit = 179;
// Rows 0 to 2; rows 35 to 37 are the same in reverse order. With the frame pixels of rows
// 3 to 34 they draw a rounded frame round the picture.
constexpr std::array<std::array<std::uint8_t, kThumbnailBytesPerRow>, 3> kThumbnailTopRows{{
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
    {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F},
    {0x08, 0x00, 0x00, 0x00, 0x00, 0x10},
}};

// The design is drawn at twice the thumbnail's scale and each 2 x 2 block averaged: finer
// drawing is no closer to the picture drawn at one pixel per unit and scaled down, coarser
// drawing loses which stitches cover which part of a pixel.
constexpr int kSupersampling = 2;

// The design drawn at the fine scale, then reduced to the thumbnail's picture.
class ThumbnailDrawing {
public:
    explicit ThumbnailDrawing(const HMKDesign& design)
        : design_(design), layout_(pecThumbnailLayout(design)) {
        const double scaleX = kSupersampling * double(layout_.pictureWidth) / layout_.fullWidth;
        const double scaleY = kSupersampling * double(layout_.pictureHeight) / layout_.fullHeight;
        // The design's y grows up and the raster's rows down, as in the view.
        toFine_ = {scaleX,
                   0,
                   0,
                   -scaleY,
                   -scaleX * layout_.left,
                   scaleY * (layout_.bottom + layout_.fullHeight)};
        fineWidth_ = layout_.pictureWidth * kSupersampling;
        fineHeight_ = layout_.pictureHeight * kSupersampling;
    }

    // One thread, or all for -1.
    HMKInkRaster draw(std::int32_t thread) const {
        HMKInkRaster fine(fineWidth_, fineHeight_);
        drawThinStitches(design_, toFine_, thread, [&](std::size_t) { return &fine; });
        return fine;
    }

    // Every thread on its own, drawn in one pass over the design.
    std::vector<HMKInkRaster> drawEachThread() const {
        std::vector<HMKInkRaster> threads(design_.threads().size(),
                                          HMKInkRaster(fineWidth_, fineHeight_));
        drawThinStitches(design_, toFine_, -1,
                         [&](std::size_t thread) { return &threads[thread]; });
        return threads;
    }

    // The picture area averaged from the fine pixels, in the middle of the 48 x 38 raster.
    HMKRaster picture(const HMKInkRaster& fine) const {
        HMKRaster picture(kPecThumbnailWidth, kPecThumbnailHeight);
        const int k = kSupersampling;
        for (int y = 0; y < layout_.pictureHeight; ++y) {
            for (int x = 0; x < layout_.pictureWidth; ++x) {
                float sums[4] = {0, 0, 0, 0};
                for (int sy = 0; sy < k; ++sy) {
                    for (int sx = 0; sx < k; ++sx) {
                        const float* p = fine.pixel(x * k + sx, y * k + sy);
                        for (int c = 0; c < 4; ++c) {
                            sums[c] += p[c];
                        }
                    }
                }
                std::uint32_t pixel = 0;
                for (int c = 0; c < 4; ++c) {
                    const float average = std::clamp(sums[c] / (k * k), 0.0f, 1.0f);
                    // Coverage in 256 steps, cut off as 8-bit drawing and scaling would.
                    pixel |= std::min<std::uint32_t>(255, static_cast<std::uint32_t>(average * 256))
                             << componentShift(c);
                }
                picture
                    .pixels[static_cast<std::size_t>(y + layout_.pictureTop) * kPecThumbnailWidth +
                            x + layout_.pictureLeft] = pixel;
            }
        }
        return picture;
    }

private:
    // Red, green, blue and alpha in a packed ARGB word.
    static int componentShift(int component) { return component == 3 ? 24 : 16 - 8 * component; }

    const HMKDesign& design_;
    HMKPecThumbnailLayout layout_;
    HMKAffineTransform toFine_;
    int fineWidth_ = 0;
    int fineHeight_ = 0;
};

// upper drawn over lower, in place.
void drawOver(HMKInkRaster& lower, const HMKInkRaster& upper) {
    for (std::size_t i = 0; i < lower.rgba.size(); i += 4) {
        const float keep = 1 - upper.rgba[i + 3];
        for (int c = 0; c < 4; ++c) {
            lower.rgba[i + c] = upper.rgba[i + c] + lower.rgba[i + c] * keep;
        }
    }
}

bool drawsNothing(const HMKDesign& design) {
    return design.stitches().empty() || design.threads().empty();
}

// Ink where the pixel is drawn and either lies on the picture's outline or is dark.
bool isInk(const HMKRaster& picture, int x, int y) {
    const std::uint32_t pixel = picture.pixel(x, y);
    if ((pixel >> 24) == 0) {
        return false;
    }
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            if ((dx != 0 || dy != 0) && (picture.pixel(x + dx, y + dy) >> 24) == 0) {
                return true;
            }
        }
    }
    const std::array<std::uint8_t, 4> straight = straightComponents(pixel);
    return std::max({straight[0], straight[1], straight[2]}) <= kThumbnailDarkLimit;
}

void setPixel(std::uint8_t* row, int column) {
    row[column / 8] |= static_cast<std::uint8_t>(1 << (column % 8));
}

}  // namespace

HMKPecThumbnailLayout pecThumbnailLayout(const HMKDesign& design) {
    HMKPecThumbnailLayout layout;
    layout.fullWidth = design.designWidth() + 2.0 * kThumbnailMarginUnits;
    layout.fullHeight = design.designHeight() + 2.0 * kThumbnailMarginUnits;
    layout.left = design.xMin() - kThumbnailMarginUnits;
    layout.bottom = design.yMin() - kThumbnailMarginUnits;
    // 42 pixels wide, or 32 high if that would be taller.
    double width = kPictureWidth;
    double height = layout.fullHeight * kPictureWidth / layout.fullWidth;
    if (height > kPictureHeight) {
        width = width * kPictureHeight / height;
        height = kPictureHeight;
    }
    layout.pictureWidth = std::max(1, static_cast<int>(std::lround(width)));
    layout.pictureHeight = std::max(1, static_cast<int>(std::lround(height)));
    layout.pictureLeft = (kPecThumbnailWidth - layout.pictureWidth) / 2;
    layout.pictureTop = (kPecThumbnailHeight - layout.pictureHeight) / 2;
    return layout;
}

std::vector<std::uint8_t> pecThumbnailBits(const HMKRaster& picture) {
    std::vector<std::uint8_t> bits(kPecThumbnailBytes, 0);
    for (int row = 0; row < 3; ++row) {
        std::copy(kThumbnailTopRows[row].begin(), kThumbnailTopRows[row].end(),
                  bits.begin() + row * kThumbnailBytesPerRow);
        std::copy(kThumbnailTopRows[row].begin(), kThumbnailTopRows[row].end(),
                  bits.begin() + (kPecThumbnailHeight - 1 - row) * kThumbnailBytesPerRow);
    }
    const bool fits = picture.width == kPecThumbnailWidth && picture.height == kPecThumbnailHeight;
    for (int y = kPictureFirstRow; y <= kPictureLastRow; ++y) {
        std::uint8_t* row = bits.data() + y * kThumbnailBytesPerRow;
        bool cornerRow = y == kPictureFirstRow || y == kPictureLastRow;
        setPixel(row, cornerRow ? kPictureFirstColumn - 1 : kPictureFirstColumn - 2);
        setPixel(row, cornerRow ? kPictureLastColumn + 1 : kPictureLastColumn + 2);
        for (int x = kPictureFirstColumn; x <= kPictureLastColumn && fits; ++x) {
            if (isInk(picture, x, y)) {
                setPixel(row, x);
            }
        }
    }
    return bits;
}

std::vector<std::uint8_t> HMKDesign::exportPecBitmapToDataForThread(std::int32_t thread) const {
    if (drawsNothing(*this)) {
        return pecThumbnailBits(HMKRaster(kPecThumbnailWidth, kPecThumbnailHeight));
    }
    const ThumbnailDrawing drawing(*this);
    return pecThumbnailBits(drawing.picture(drawing.draw(thread)));
}

std::vector<std::uint8_t> pecThumbnails(const HMKDesign& design, bool withThreadThumbnails) {
    if (!withThreadThumbnails || drawsNothing(design)) {
        // Without stitches every thumbnail is the same empty frame.
        const std::vector<std::uint8_t> whole = design.exportPecBitmapToDataForThread(-1);
        std::vector<std::uint8_t> thumbnails = whole;
        for (std::size_t i = 0; withThreadThumbnails && i < design.threads().size(); ++i) {
            thumbnails.insert(thumbnails.end(), whole.begin(), whole.end());
        }
        return thumbnails;
    }
    // Each thread is drawn once; the whole design is the threads drawn over each other in
    // order, which is the same picture.
    const ThumbnailDrawing drawing(design);
    std::vector<HMKInkRaster> threads = drawing.drawEachThread();
    HMKInkRaster whole = threads.front();
    for (std::size_t i = 1; i < threads.size(); ++i) {
        drawOver(whole, threads[i]);
    }
    std::vector<std::uint8_t> thumbnails = pecThumbnailBits(drawing.picture(whole));
    for (const HMKInkRaster& thread : threads) {
        std::vector<std::uint8_t> bits = pecThumbnailBits(drawing.picture(thread));
        thumbnails.insert(thumbnails.end(), bits.begin(), bits.end());
    }
    return thumbnails;
}
