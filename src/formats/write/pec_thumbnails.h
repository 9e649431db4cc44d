// The 48 x 38 one-bit thumbnails that PES and PEC files carry after the PEC section: the
// design drawn flat, fitted into a 42 x 32 picture inside a rounded frame, a pixel inked where
// the picture is dark or on its outline. Used by the PES and PEC writers;
// HMKDesign::exportPecBitmapToDataForThread gives one thumbnail on its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "render/raster_context.h"

class HMKDesign;

// One thumbnail: 38 rows of 6 bytes, least significant bit first.
inline constexpr std::size_t kPecThumbnailBytes = 228;
inline constexpr int kPecThumbnailWidth = 48;
inline constexpr int kPecThumbnailHeight = 38;

// --- Thumbnails for the writers ----------------------------------------------------------
// The thumbnail of all threads, followed (withThreadThumbnails, as PES files want) by one
// thumbnail per thread in thread order, drawn in the design's current thread colours.
std::vector<std::uint8_t> pecThumbnails(const HMKDesign& design, bool withThreadThumbnails);

// --- The parts of a thumbnail ------------------------------------------------------------
// Where the design lands: the thumbnail stands for the design and a blank margin drawn at one
// pixel per design unit (fullWidth x fullHeight pixels, (left, bottom) at its bottom left
// corner) and scaled to pictureWidth x pictureHeight, placed at (pictureLeft, pictureTop).
struct HMKPecThumbnailLayout {
    // Doubles: files can hold designs far wider than any hoop.
    double fullWidth = 0;
    double fullHeight = 0;
    double left = 0;
    double bottom = 0;
    int pictureWidth = 0;
    int pictureHeight = 0;
    int pictureLeft = 0;
    int pictureTop = 0;
};
HMKPecThumbnailLayout pecThumbnailLayout(const HMKDesign& design);

// The thumbnail bits of a 48 x 38 picture: the fixed frame, and ink in the picture area where
// a pixel is drawn and either touches an undrawn neighbour or is dark in every channel.
std::vector<std::uint8_t> pecThumbnailBits(const HMKRaster& picture);
