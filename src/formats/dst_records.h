// Tajima DST records, shared by the DST reader and writer so that both read the same layout:
// a 512-byte text header, one 3-byte record per stitch whose bits are balanced-ternary digits
// of the two axes, and an end record.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

inline constexpr std::size_t kDstHeaderSize = 512;
inline constexpr std::size_t kDstRecordSize = 3;
// The third byte of the record that ends the stitches.
inline constexpr std::uint8_t kDstEndRecord = 0xF3;
// The file's end-of-text byte, after the header's last line and after the end record.
inline constexpr std::uint8_t kDstEndOfText = 0x1A;

// --- Record kinds ---------------------------------------------------------------------------
// Bits 0, 1, 6 and 7 of the third byte tell the kind; its two low bits are always set.
inline constexpr std::uint8_t kDstKindMask = 0xC3;
inline constexpr std::uint8_t kDstStitchKind = 0x03;
inline constexpr std::uint8_t kDstJumpKind = 0x83;
inline constexpr std::uint8_t kDstColorChangeKind = 0xC3;

// --- Balanced-ternary digits ------------------------------------------------------------------
// One digit of each axis: its weight, the record byte that holds it and the bits that add or
// subtract it. A record reaches +-121 on each axis.
struct HMKDstDigit {
    int weight;
    std::size_t byteIndex;
    std::uint8_t xPlus;
    std::uint8_t xMinus;
    std::uint8_t yPlus;
    std::uint8_t yMinus;
};

// Largest weight first, the order in which the writer takes them.
inline constexpr std::array<HMKDstDigit, 5> kDstDigits{{
    {81, 2, 0x04, 0x08, 0x20, 0x10},
    {27, 1, 0x04, 0x08, 0x20, 0x10},
    {9, 0, 0x04, 0x08, 0x20, 0x10},
    {3, 1, 0x01, 0x02, 0x80, 0x40},
    {1, 0, 0x01, 0x02, 0x80, 0x40},
}};

// The movement each value of one record byte contributes, looked up per byte when reading.
struct HMKDstByteMoves {
    std::array<std::int8_t, 256> dx{};
    std::array<std::int8_t, 256> dy{};
};

constexpr HMKDstByteMoves dstByteMoves(std::size_t byteIndex) {
    HMKDstByteMoves moves;
    for (int byte = 0; byte < 256; ++byte) {
        int dx = 0;
        int dy = 0;
        for (const HMKDstDigit& digit : kDstDigits) {
            if (digit.byteIndex != byteIndex) {
                continue;
            }
            dx += digit.weight * (((byte & digit.xPlus) != 0) - ((byte & digit.xMinus) != 0));
            dy += digit.weight * (((byte & digit.yPlus) != 0) - ((byte & digit.yMinus) != 0));
        }
        moves.dx[byte] = static_cast<std::int8_t>(dx);
        moves.dy[byte] = static_cast<std::int8_t>(dy);
    }
    return moves;
}

inline constexpr std::array<HMKDstByteMoves, kDstRecordSize> kDstByteMoves{
    dstByteMoves(0), dstByteMoves(1), dstByteMoves(2)};

// Sets the digits of one axis's value into the record, each digit taken when the remainder
// is at least half its weight; returns what one record cannot hold (beyond +-121).
inline int encodeDstAxis(int value, bool isY, std::array<std::uint8_t, kDstRecordSize>& record) {
    for (const HMKDstDigit& digit : kDstDigits) {
        const int threshold = (digit.weight + 1) / 2;
        if (value >= threshold) {
            record[digit.byteIndex] |= isY ? digit.yPlus : digit.xPlus;
            value -= digit.weight;
        } else if (value <= -threshold) {
            record[digit.byteIndex] |= isY ? digit.yMinus : digit.xMinus;
            value += digit.weight;
        }
    }
    return value;
}
