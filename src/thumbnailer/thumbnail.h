// Thumbnails of embroidery designs for file managers: the design drawn with shaded thread on
// a transparent background, its longer side the requested size. hemlark-thumbnailer makes them
// when a file manager asks through the freedesktop thumbnailer convention.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "model/design.h"
#include "model/error.h"

// Design files larger than this are refused unread: real designs stay far below it (a
// 500,000-stitch DST file is 1.5 MB), and a thumbnail must come fast or not at all.
inline constexpr std::uintmax_t kMaximumThumbnailInputBytes = 16 * 1024 * 1024;

// The thumbnail sizes asked for: freedesktop sizes run from 128 to 1024 pixels.
inline constexpr int kMinimumThumbnailSize = 8;
inline constexpr int kMaximumThumbnailSize = 4096;

// Error codes of the thumbnailer (outside the ranges of the formats and the pictures).
inline constexpr int kThumbnailInputError = 310;
inline constexpr int kThumbnailSizeError = 311;

// --- Reading -----------------------------------------------------------------------------
// Reads the design as the application opens it (by extension, with its thread side file),
// refusing anything but a regular file of at most kMaximumThumbnailInputBytes first.
bool readThumbnailDesign(const std::filesystem::path& path, HMKDesign& design,
                         HMKError* error = nullptr);

// --- Drawing -----------------------------------------------------------------------------
// The PNG bytes of the design's thumbnail whose longer side is sizePixels, or none with
// kThumbnailSizeError or a picture error.
std::optional<std::vector<std::uint8_t>> designThumbnailPng(const HMKDesign& design, int sizePixels,
                                                            HMKError* error = nullptr);
