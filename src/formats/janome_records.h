// Janome JEF and JPX headers, shared by the JEF/JPX reader and the JEF writer: where the
// stitch-data offset, version, colour count, hoop code and colour table lie. The stitch data
// itself is the escape stream of escape_records.h.
#pragma once

#include <cstddef>
#include <cstdint>

// Every header value is a little-endian 32-bit integer.
inline constexpr std::size_t kJanomeValueSize = 4;
inline constexpr std::size_t kJanomeStitchOffsetField = 0;
inline constexpr std::size_t kJanomeVersionOffset = 4;

// --- JEF --------------------------------------------------------------------------------------
inline constexpr std::size_t kJefColorCountOffset = 24;
// The number of 2-byte stitch records, the end record included.
inline constexpr std::size_t kJefRecordCountOffset = 28;
inline constexpr std::size_t kJefHoopCodeOffset = 32;
// After the hoop code: the absolute values of xMin, yMin, xMax and yMax, then 16 reserved
// integers.
inline constexpr std::size_t kJefReservedIntegers = 16;
// One colour code per thread, then one tension per thread.
inline constexpr std::size_t kJefColorTableOffset = 116;

// --- JPX --------------------------------------------------------------------------------------
inline constexpr std::size_t kJpxColorCountOffset = 32;
inline constexpr std::size_t kJpxHoopCodeOffset = 40;
inline constexpr std::size_t kJpxColorTableOffset = 60;
