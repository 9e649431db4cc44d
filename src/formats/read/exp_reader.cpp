// EXP reader: a headerless stream of 2-byte moves (signed dx, dy in 0.1 mm) with 4-byte
// escape records for colour changes and jumps; the layout the EXP writer produces.
#include <cstdint>
#include <vector>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/read/readers.h"

namespace {

constexpr std::int32_t kExpVersion = 10;
constexpr std::uint8_t kExpEscape = 0x80;
// 0x80 0x80 is an escaped plain stitch of (0, 0), not a jump.
constexpr std::uint8_t kExpEscapedZeroStitch = 0x80;
constexpr std::size_t kExpStitchSize = 2;
constexpr std::size_t kExpEscapeRecordSize = 4;

// A positive odd code (0x01, 0x03, ... 0x7F) changes the colour; 0x81 and above are negative
// as signed bytes and therefore jumps, like every even code.
bool isColorChangeCode(std::int8_t code) {
    return code > 0 && code % 2 == 1;
}

}  // namespace

bool importExpDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    design.setDesignType("EXP");
    design.setDesignVersion(kExpVersion);
    HMKByteReader reader(data);
    const std::size_t length = reader.size();
    if (length % 2 != 0) {
        return fail(error, 100, "Unable to read EXP: file contains uneven number of bytes.");
    }
    design.resetBounds();
    HMKPlaceholderThreads placeholders;
    placeholders.appendTo(design);

    auto& stitches = design.stitches();
    stitches.reserve(stitches.size() + length / kExpStitchSize);
    HMKStitchAppender appender(design);
    std::size_t p = 0;
    while (p + 1 < length) {
        auto first = reader.u8(p);
        auto second = reader.s8(p + 1);
        if (!first || !second) {
            break;
        }
        HMKStitch stitch(static_cast<std::int8_t>(*first), *second, false, false);
        if (*first == kExpEscape) {
            auto dx = reader.s8(p + 2);
            auto dy = reader.s8(p + 3);
            if (!dx || !dy) {
                // A cut-short escape record at the very end ends the design quietly.
                return true;
            }
            if (static_cast<std::uint8_t>(*second) == kExpEscapedZeroStitch) {
                stitch = HMKStitch(0, 0, false, false);
            } else if (isColorChangeCode(*second)) {
                placeholders.appendTo(design);
                stitch = HMKStitch(0, 0, false, true);
            } else {
                stitch = HMKStitch(*dx, *dy, true, false);
            }
            p += kExpEscapeRecordSize;
        } else {
            p += kExpStitchSize;
        }
        appender.append(stitch);
    }
    return true;
}

bool HMKDesign::importExpDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty: it then holds no stitches, which the caller rejects.
    return importExpDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
