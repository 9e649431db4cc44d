// The 48 x 38 one-bit thumbnails that PES and PEC files carry after the PEC section: the
// design drawn flat, scaled into a 42 x 32 picture inside a rounded frame. Used by the PES
// and PEC writers; HMKDesign::exportPecBitmapToDataForThread gives one thumbnail on its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class HMKDesign;

// One thumbnail: 38 rows of 6 bytes, least significant bit first.
inline constexpr std::size_t kPecThumbnailBytes = 228;

// The thumbnail of all threads, followed (withThreadThumbnails, as PES files want) by one
// thumbnail per thread in thread order, drawn in the design's current thread colours.
std::vector<std::uint8_t> pecThumbnails(const HMKDesign& design, bool withThreadThumbnails);
