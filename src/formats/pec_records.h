// Brother PEC section records, shared by the PES/PEC reader and writer: the section's layout
// (a 512-byte label and colour header, the graphics header, the stitch stream) and the
// stream's short and long coordinate forms. PES files carry the same section after their own
// blocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// --- Section layout (offsets from the section's "LA:" tag) ----------------------------------
inline constexpr std::string_view kPecSectionTag = "LA:";
inline constexpr std::size_t kPecLabelNameWidth = 16;
// The number of threads less one, then one Brother code per thread.
inline constexpr std::size_t kPecColorCountOffset = 48;
inline constexpr std::size_t kPecColorListOffset = 49;
// The graphics header starts here, after the label and colour header.
inline constexpr std::size_t kPecHeaderSize = 512;
// 3 bytes: the length of the graphics header and the stitch stream, the end byte included.
inline constexpr std::size_t kPecStitchLengthOffset = 514;
// The extents follow the three bytes 31 FF F0 that end at 520, which is where machine-written
// files put them; four more bytes (E0 01 B0 01) come before the stitch data.
inline constexpr std::size_t kPecWidthOffset = 520;
inline constexpr std::size_t kPecHeightOffset = 522;
// The stitch data opens with the start position, two long-form coordinates.
inline constexpr std::size_t kPecStitchDataOffset = 528;
inline constexpr std::size_t kPecStartPositionSize = 4;

// --- Stitch stream --------------------------------------------------------------------------
inline constexpr std::uint8_t kPecEndOfStitches = 0xFF;
// FE B0 and one more byte change the colour.
inline constexpr std::uint8_t kPecCommand = 0xFE;
inline constexpr std::uint8_t kPecColorChange = 0xB0;
inline constexpr std::size_t kPecColorChangeSize = 3;

// A coordinate is one byte (seven-bit two's complement) unless its top bit is set; then it is
// two bytes holding a 12-bit two's complement, the first byte's flag nibble marking a move.
inline constexpr std::uint8_t kPecLongFormBit = 0x80;
inline constexpr std::uint8_t kPecLongFormJump = 0x90;
inline constexpr std::uint8_t kPecShortNegativeBit = 0x40;
inline constexpr int kPecShortFormRange = 128;
inline constexpr std::uint8_t kPecLongFormHighBits = 0x0F;
inline constexpr int kPecLongFormRange = 4096;

// The value of a short-form byte.
constexpr int decodePecShort(std::uint8_t byte) {
    return (byte & kPecShortNegativeBit) ? byte - kPecShortFormRange : byte;
}

// The value of a long form: 12-bit two's complement from the low nibble of the first byte
// and the second byte.
constexpr int decodePecLong(std::uint8_t first, std::uint8_t second) {
    const int value = (first & kPecLongFormHighBits) * 256 + second;
    return value >= kPecLongFormRange / 2 ? value - kPecLongFormRange : value;
}

// The short form of a value from -64 to 63 (seven-bit two's complement); not range-checked.
constexpr std::uint8_t encodePecShort(int value) {
    return static_cast<std::uint8_t>(value < 0 ? value + kPecShortFormRange : value);
}

// The long form with the jump flag: 0x90 with the top four bits of the 12-bit two's
// complement, then its low eight bits.
constexpr std::array<std::uint8_t, 2> encodePecLong(int value) {
    const auto twelveBits = static_cast<std::uint32_t>(value) & 0x0FFF;
    return {static_cast<std::uint8_t>(kPecLongFormJump | (twelveBits >> 8)),
            static_cast<std::uint8_t>(twelveBits & 0xFF)};
}
