// KSM reader: a 512-byte header that is not read, then 3-byte records of two unsigned
// magnitudes (0.1 mm) and a flag byte carrying the signs and the record kind.
#include <cstdint>
#include <vector>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/read/readers.h"

namespace {

constexpr std::int32_t kKsmVersion = 10;
constexpr std::size_t kKsmHeaderSize = 512;
// The smallest readable file holds the header and one whole record.
constexpr std::size_t kKsmMinimumSize = kKsmHeaderSize + 3;
constexpr std::size_t kKsmRecordSize = 3;

constexpr std::uint8_t kKsmValidRecordBit = 0x80;
constexpr std::uint8_t kKsmNegativeXBit = 0x40;
constexpr std::uint8_t kKsmNegativeYBit = 0x20;
constexpr std::uint8_t kKsmEnd = 0x88;
constexpr std::uint8_t kKsmColorChange = 0x8B;
constexpr std::uint8_t kKsmColorChangeMask = 0x8C;
// Files from current machines also change the colour with 0x90: without it their designs lose
// a block (19 colours read as 18 where the same design's other formats all have 19). Nothing
// in those files says it starts a run of jumps, so unlike the other colour changes it leaves
// the jump state as it finds it.
constexpr std::uint8_t kKsmPlainColorChange = 0x90;
constexpr std::uint8_t kKsmJumpRunStart = 0x89;
constexpr std::uint8_t kKsmJumpRunStartMask = 0x8F;
constexpr std::uint8_t kKsmJumpRunStartBits = 0x87;
constexpr std::uint8_t kKsmJumpRunEndMask = 0x9E;
constexpr std::uint8_t kKsmJumpRunEndBits = 0x98;

bool isColorChange(std::uint8_t flag) {
    return flag == kKsmColorChange || (flag & kKsmColorChangeMask) == kKsmColorChangeMask;
}
bool startsJumpRun(std::uint8_t flag) {
    return flag == kKsmJumpRunStart || (flag & kKsmJumpRunStartMask) == kKsmJumpRunStartBits;
}
bool endsJumpRun(std::uint8_t flag) {
    return (flag & kKsmJumpRunEndMask) == kKsmJumpRunEndBits;
}

}  // namespace

bool importKsmDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    design.setDesignType("KSM");
    design.setDesignVersion(kKsmVersion);
    HMKByteReader reader(data);
    if (reader.size() < kKsmMinimumSize) {
        return fail(error, 170, "Unable to read KSM (file too small)");
    }
    HMKPlaceholderThreads placeholders;
    placeholders.appendTo(design);
    design.resetBounds();

    auto& stitches = design.stitches();
    stitches.reserve(stitches.size() + (reader.size() - kKsmHeaderSize) / kKsmRecordSize);
    // The first record moves the needle to the start of the design, so it is a jump.
    bool pendingJump = true;
    HMKStitchAppender appender(design);
    for (std::size_t position = kKsmHeaderSize; reader.contains(position, kKsmRecordSize);
         position += kKsmRecordSize) {
        auto yMagnitude = reader.u8(position);
        auto xMagnitude = reader.u8(position + 1);
        auto flag = reader.u8(position + 2);
        if (!yMagnitude || !xMagnitude || !flag) {
            break;
        }
        if ((*flag & kKsmValidRecordBit) == 0) {
            return fail(error, 171, "Unable to read KSM (invalid stich data)");
        }
        if (*flag == kKsmEnd) {
            return true;
        }
        const int dx = (*flag & kKsmNegativeXBit) ? -int{*xMagnitude} : int{*xMagnitude};
        const int dy = (*flag & kKsmNegativeYBit) ? -int{*yMagnitude} : int{*yMagnitude};
        if (startsJumpRun(*flag)) {
            pendingJump = true;
        }
        HMKStitch stitch(static_cast<float>(dx), static_cast<float>(dy), pendingJump, false);
        if (isColorChange(*flag)) {
            placeholders.appendTo(design);
            stitch.isJumpStitch = true;
            stitch.isColorChange = true;
        } else if (*flag == kKsmPlainColorChange) {
            placeholders.appendTo(design);
            stitch.isColorChange = true;
        }
        // A run of jumps goes on record after record, through colour changes too, until a
        // record that ends it; that record is still a jump itself.
        pendingJump = stitch.isJumpStitch && !endsJumpRun(*flag);
        appender.append(stitch);
    }
    return true;
}

bool HMKDesign::importKsmDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty and so fails as too small.
    return importKsmDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
