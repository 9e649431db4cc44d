// PEC thumbnails: the design is drawn by the renderer through the raster provider at one
// pixel per design unit, scaled to fit the 42 x 32 picture area, and turned into one-bit ink
// where a pixel is on the picture's outline or dark.
#include "formats/write/pec_thumbnails.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "model/design.h"
#include "render/raster_provider.h"

namespace {

constexpr int kThumbnailWidth = 48;
constexpr int kThumbnailHeight = 38;
constexpr int kThumbnailBytesPerRow = kThumbnailWidth / 8;
static_assert(kPecThumbnailBytes == kThumbnailBytesPerRow * kThumbnailHeight);
constexpr int kPictureWidth = 42;
constexpr int kPictureHeight = 32;
constexpr int kPictureFirstRow = 3;
constexpr int kPictureLastRow = 34;
constexpr int kPictureFirstColumn = 3;
constexpr int kPictureLastColumn = 44;
// Blank design units drawn around the design before it is scaled down.
constexpr int kThumbnailMarginUnits = 10;
// The largest side of the raster the design is first drawn into: files can hold designs far
// wider than any hoop, and the picture ends up 42 pixels wide anyway.
constexpr double kLargestRasterSide = 2048;
// Pixels at most this bright in every channel count as ink.
constexpr std::uint8_t kThumbnailDarkLimit = 179;
// Rows 0 to 2; rows 35 to 37 are the same in reverse order. With the frame pixels of rows
// 3 to 34 they draw a rounded frame round the picture.
constexpr std::array<std::array<std::uint8_t, kThumbnailBytesPerRow>, 3> kThumbnailTopRows{{
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
    {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F},
    {0x08, 0x00, 0x00, 0x00, 0x00, 0x10},
}};

// The design's pixels scaled into a transparent 48 x 38 raster, or a blank raster when no
// raster provider is installed.
HMKRgbaImage thumbnailPicture(const HMKDesign& design, std::int32_t thread) {
    HMKRgbaImage picture{kThumbnailWidth, kThumbnailHeight,
                         std::vector<std::uint8_t>(kThumbnailWidth * kThumbnailHeight * 4, 0)};
    std::shared_ptr<HMKRasterProvider> provider = rasterProvider();
    if (!provider) {
        return picture;
    }
    const double width = design.designWidth() + 2.0 * kThumbnailMarginUnits;
    const double height = design.designHeight() + 2.0 * kThumbnailMarginUnits;
    const double left = design.xMin() - kThumbnailMarginUnits;
    const double bottom = design.yMin() - kThumbnailMarginUnits;
    // One pixel per unit, except for designs too large for the raster; the design's y grows
    // up and the raster's rows down, as in the view.
    const double scale = std::min(1.0, kLargestRasterSide / std::max(width, height));
    HMKAffineTransform toPixels{scale, 0, 0, -scale, -left * scale, (bottom + height) * scale};
    HMKRect rect{left, bottom, width, height};
    HMKRgbaImage full = provider->render(
        static_cast<int>(std::ceil(width * scale)), static_cast<int>(std::ceil(height * scale)),
        toPixels, [&](HMKDrawingContext& context) {
            design.drawDesignInRect(rect, context, false, false, false, thread);
        });
    double scaledWidth = kPictureWidth;
    double scaledHeight = height * static_cast<double>(kPictureWidth) / width;
    if (scaledHeight > kPictureHeight) {
        scaledWidth = scaledWidth * kPictureHeight / scaledHeight;
        scaledHeight = kPictureHeight;
    }
    const int smallWidth = std::max(1, static_cast<int>(std::lround(scaledWidth)));
    const int smallHeight = std::max(1, static_cast<int>(std::lround(scaledHeight)));
    HMKRgbaImage small = provider->scaled(full, smallWidth, smallHeight);
    const int marginLeft = (kThumbnailWidth - smallWidth) / 2;
    const int marginTop = (kThumbnailHeight - smallHeight) / 2;
    for (int y = 0; y < std::min(small.height, smallHeight); ++y) {
        for (int x = 0; x < std::min(small.width, smallWidth); ++x) {
            std::copy_n(
                small.pixel(x, y), 4,
                picture.rgba.data() +
                    ((y + marginTop) * static_cast<std::size_t>(kThumbnailWidth) + x + marginLeft) *
                        4);
        }
    }
    return picture;
}

// Ink where the pixel is drawn and either lies on the picture's outline or is dark.
bool isInk(const HMKRgbaImage& picture, int x, int y) {
    const std::uint8_t* pixel = picture.pixel(x, y);
    if (pixel[3] == 0) {
        return false;
    }
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            if ((dx != 0 || dy != 0) && picture.pixel(x + dx, y + dy)[3] == 0) {
                return true;
            }
        }
    }
    return std::max({pixel[0], pixel[1], pixel[2]}) <= kThumbnailDarkLimit;
}

void setPixel(std::uint8_t* row, int column) {
    row[column / 8] |= static_cast<std::uint8_t>(1 << (column % 8));
}

}  // namespace

std::vector<std::uint8_t> HMKDesign::exportPecBitmapToDataForThread(std::int32_t thread) const {
    std::vector<std::uint8_t> bits(kThumbnailBytesPerRow * kThumbnailHeight, 0);
    for (int row = 0; row < 3; ++row) {
        std::copy(kThumbnailTopRows[row].begin(), kThumbnailTopRows[row].end(),
                  bits.begin() + row * kThumbnailBytesPerRow);
        std::copy(kThumbnailTopRows[row].begin(), kThumbnailTopRows[row].end(),
                  bits.begin() + (kThumbnailHeight - 1 - row) * kThumbnailBytesPerRow);
    }
    HMKRgbaImage picture = thumbnailPicture(*this, thread);
    for (int y = kPictureFirstRow; y <= kPictureLastRow; ++y) {
        std::uint8_t* row = bits.data() + y * kThumbnailBytesPerRow;
        bool cornerRow = y == kPictureFirstRow || y == kPictureLastRow;
        setPixel(row, cornerRow ? kPictureFirstColumn - 1 : kPictureFirstColumn - 2);
        setPixel(row, cornerRow ? kPictureLastColumn + 1 : kPictureLastColumn + 2);
        for (int x = kPictureFirstColumn; x <= kPictureLastColumn; ++x) {
            if (isInk(picture, x, y)) {
                setPixel(row, x);
            }
        }
    }
    return bits;
}

std::vector<std::uint8_t> pecThumbnails(const HMKDesign& design, bool withThreadThumbnails) {
    std::vector<std::uint8_t> thumbnails = design.exportPecBitmapToDataForThread(-1);
    if (withThreadThumbnails) {
        for (std::size_t i = 0; i < design.threads().size(); ++i) {
            std::vector<std::uint8_t> thumbnail =
                design.exportPecBitmapToDataForThread(static_cast<std::int32_t>(i));
            thumbnails.insert(thumbnails.end(), thumbnail.begin(), thumbnail.end());
        }
    }
    return thumbnails;
}
