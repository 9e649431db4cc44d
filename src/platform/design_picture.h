// Pictures of a design as PNG, SVG or PDF files, y pointing up as in the design view: PNG
// fitted into a picture of a given pixel size, SVG and PDF at the design's real size (or a
// multiple of it) with a margin. Used by the tool's picture export, the application's
// drag-out and the print preview.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include <QImage>

#include "model/color.h"
#include "model/design.h"
#include "model/error.h"
#include "render/drawing_context.h"

// Error codes of the picture helpers (outside the ranges of the design's file formats).
inline constexpr int kPictureFormatError = 300;
inline constexpr int kPictureSizeError = 301;
inline constexpr int kPictureEncodingError = 302;

// The largest picture side, in pixels (Qt's raster engine paints up to this size).
inline constexpr int kMaximumPictureSide = 32767;
// The vector scales accepted: from a hundredth to a hundred times the real size.
inline constexpr double kMinimumVectorScale = 0.01;
inline constexpr double kMaximumVectorScale = 100;

enum class HMKPictureFormat { png, svg, pdf };

struct HMKPictureOptions {
    // PNG only: the picture size and the empty space left on every side of the design.
    int widthPixels = 1000;
    int heightPixels = 1000;
    int marginPixels = 20;
    // SVG and PDF only: 1 draws the design at its real size, 2 at twice that.
    double vectorScale = 1;
    // Fills the picture first; without one PNG and SVG stay transparent and PDF white.
    std::optional<HMKColor> background;
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    // The only thread drawn, or -1 for all.
    std::int32_t thread = -1;
};

// --- Choosing the format ----------------------------------------------------------------
// The format of a file name's extension (.png, .svg, .pdf in any case), or none.
std::optional<HMKPictureFormat> pictureFormatForPath(const std::filesystem::path& path);

// --- Geometry ----------------------------------------------------------------------------
// Maps design units to picture pixels: the design's bounds, widened by half a stitch width,
// centred and scaled uniformly to fit inside the margins, with y flipped to point up.
HMKAffineTransform designPictureTransform(const HMKDesign& design,
                                          const HMKPictureOptions& options);

// Sizes the picture to the design's proportions: the longer side is longerSidePixels, the
// shorter one follows, so the design fills the picture up to the options' margins.
void fitPictureToDesign(const HMKDesign& design, int longerSidePixels, HMKPictureOptions& options);

// --- Rendering ---------------------------------------------------------------------------
// The picture as a raster (ARGB32 premultiplied), or a null image when the size is invalid.
QImage renderDesignImage(const HMKDesign& design, const HMKPictureOptions& options);

// The encoded file contents, or none with kPictureSizeError (a PNG size or vector scale out
// of range) or kPictureEncodingError.
// Needs no application object and no display: nothing is drawn as text.
std::optional<std::vector<std::uint8_t>> designPictureData(const HMKDesign& design,
                                                           HMKPictureFormat format,
                                                           const HMKPictureOptions& options,
                                                           HMKError* error = nullptr);

// Renders the picture in memory and writes it atomically; the format follows the extension
// (anything but .png, .svg or .pdf fails with kPictureFormatError). A failed write passes
// the file system's error on and leaves an existing file as it was.
bool writeDesignPicture(const HMKDesign& design, const std::filesystem::path& path,
                        const HMKPictureOptions& options, HMKError* error = nullptr);
