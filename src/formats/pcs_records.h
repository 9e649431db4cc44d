// Pfaff PCS-family records (PCS, PCD, PCQ), shared by the reader and the PCS writer: the short
// header with the type (for PCS also the hoop code) and a colour palette, then 9-byte records
// of absolute 24-bit positions in 1/6 mm measured from the hoop's corner.
#pragma once

#include <cstddef>
#include <cstdint>

// --- Header ---------------------------------------------------------------------------------
inline constexpr std::uint8_t kPcsMagic = 0x32;
inline constexpr std::size_t kPcsTypeOffset = 1;
// 16-bit colour count, then 4-byte palette entries (red, green, blue, 0), then the 16-bit
// stitch count and the records.
inline constexpr std::size_t kPcsColorCountOffset = 2;
inline constexpr std::size_t kPcsPaletteOffset = 4;
inline constexpr std::size_t kPcsPaletteEntrySize = 4;
inline constexpr std::size_t kPcsMaxColors = 16;

// --- Records --------------------------------------------------------------------------------
// A colour number (colour records only), X (24 bits), 0, Y (24 bits), then the flag.
inline constexpr std::size_t kPcsRecordSize = 9;
inline constexpr std::size_t kPcsRecordColorIndexOffset = 0;
inline constexpr std::size_t kPcsRecordXOffset = 1;
inline constexpr std::size_t kPcsRecordYOffset = 5;
inline constexpr std::size_t kPcsRecordFlagOffset = 8;
inline constexpr std::uint8_t kPcsStitchRecord = 0x00;
inline constexpr std::uint8_t kPcsColorRecord = 0x03;
inline constexpr std::uint8_t kPcsJumpRecord = 0x04;

// Deliberate: a negative coordinate v is stored as v + 0xFFFFFF, one less than its 24-bit
// two's complement, and read back the same way (0xFFFFFF reads as 0). Do not "fix" it.
inline constexpr std::int64_t kPcsNegativeOffset = 0xFFFFFF;
inline constexpr std::int32_t kPcsNegativeThreshold = 0x800000;

constexpr std::int32_t decodePcsCoordinate(std::uint32_t raw) {
    const auto value = static_cast<std::int32_t>(raw);
    return value >= kPcsNegativeThreshold ? static_cast<std::int32_t>(value - kPcsNegativeOffset)
                                          : value;
}

constexpr std::uint32_t encodePcsCoordinate(std::int64_t value) {
    return static_cast<std::uint32_t>(value < 0 ? value + kPcsNegativeOffset : value);
}
