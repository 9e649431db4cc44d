// The 2-byte move streams of EXP, SEW, JEF and JPX files, shared by their readers and
// writers: each record is a signed (dx, dy) byte pair in 0.1 mm, unless its first byte is
// 0x80, which starts an escape record whose second byte each format family reads its own way.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::uint8_t kEscapeByte = 0x80;
inline constexpr std::size_t kMoveRecordSize = 2;
// The escape, its code and (for most codes) the move that goes with it.
inline constexpr std::size_t kEscapeRecordSize = 4;

// --- Janome (JEF, JPX, SEW) -----------------------------------------------------------------
inline constexpr std::uint8_t kJanomeColorChange = 0x01;
inline constexpr std::uint8_t kJanomeJump = 0x02;
// Read as a jump; written by some machines for a plain move.
inline constexpr std::uint8_t kJanomeMove = 0x04;
inline constexpr std::uint8_t kJanomeEnd = 0x10;

// --- Melco EXP ------------------------------------------------------------------------------
inline constexpr std::uint8_t kExpColorChange = 0x01;
inline constexpr std::uint8_t kExpJump = 0x02;
// 0x80 0x80 is an escaped plain stitch of (0, 0), not a jump.
inline constexpr std::uint8_t kExpEscapedZeroStitch = 0x80;

// A positive odd code (0x01, 0x03, ... 0x7F) changes the colour; 0x81 and above are negative
// as signed bytes and therefore jumps, like every even code.
constexpr bool isExpColorChangeCode(std::uint8_t code) {
    return code < 0x80 && code % 2 == 1;
}
