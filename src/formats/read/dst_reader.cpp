// Tajima DST: a 512-byte text header whose tags are only checked for presence, then 3-byte
// stitch records in balanced-ternary bit weights. Colours are not stored, so the reader makes
// numbered placeholder threads.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/byte_reader.h"
#include "formats/dst_records.h"
#include "formats/file_io.h"
#include "formats/read/readers.h"
#include "model/design.h"

namespace {

// The header plus one record plus one byte: the last three bytes are never decoded.
constexpr std::size_t kDstMinimumFileSize = 516;
// Tags must lie in the first 511 characters; a tag ending on the 512th is not found.
constexpr std::size_t kDstHeaderSearchLength = 511;
constexpr std::int32_t kDstDesignVersion = 10;

struct DstHeaderTag {
    std::string_view tag;
    int code;
    std::string_view message;
};

// Checked in this order; the first missing tag decides the error.
constexpr std::array<DstHeaderTag, 9> kDstHeaderTags = {{
    {"LA:", 110, "Unable to import DST file (missing LA: tag in header)."},
    {"ST:", 112, "Unable to import DST file (missing ST: tag in header)."},
    {"CO:", 113, "Unable to import DST file (missing CO: tag in header)."},
    {"+X:", 114, "Unable to import DST file (missing +X: tag in header)."},
    {"-X:", 115, "Unable to import DST file (missing -X: tag in header)."},
    {"+Y:", 116, "Unable to import DST file (missing +Y: tag in header)."},
    {"-Y:", 117, "Unable to import DST file (missing -Y: tag in header)."},
    {"AX:", 118, "Unable to import DST file (missing AX: tag in header)."},
    {"AY:", 119, "Unable to import DST file (missing AY: tag in header)."},
}};

}  // namespace

bool importDstDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error) {
    design.setDesignType("DST");
    design.setDesignVersion(kDstDesignVersion);
    const HMKByteReader reader(bytes);
    if (reader.size() < kDstMinimumFileSize) {
        return fail(error, 123, "Unable to import DST file (missing header).");
    }
    const std::string_view header = reader.text(0, kDstHeaderSearchLength).value_or("");
    for (const auto& tag : kDstHeaderTags) {
        if (header.find(tag.tag) == std::string_view::npos) {
            return fail(error, tag.code, tag.message);
        }
    }

    design.resetBounds();
    HMKPlaceholderThreads placeholders;
    placeholders.appendTo(design);

    auto& stitches = design.stitches();
    stitches.reserve(stitches.size() + (reader.size() - kDstHeaderSize) / kDstRecordSize);
    HMKStitchAppender appender(design);
    // Deliberate: a record is decoded only while offset + 3 is below the length, so the last
    // three bytes of the file are never read as a record, even when they hold a stitch.
    for (std::size_t offset = kDstHeaderSize; offset + kDstRecordSize < reader.size();
         offset += kDstRecordSize) {
        const std::uint8_t b0 = reader.u8(offset).value_or(0);
        const std::uint8_t b1 = reader.u8(offset + 1).value_or(0);
        const std::uint8_t b2 = reader.u8(offset + 2).value_or(kDstEndRecord);
        if (b2 == kDstEndRecord) {
            return true;
        }
        const std::uint8_t kind = b2 & kDstKindMask;
        if (kind != kDstStitchKind && kind != kDstJumpKind && kind != kDstColorChangeKind) {
            return fail(error, 111, "Unable to import DST file (invalid function codes).");
        }
        const bool isColorChange = kind == kDstColorChangeKind;
        if (isColorChange) {
            placeholders.appendTo(design);
        }
        const float dx = static_cast<float>(kDstByteMoves[0].dx[b0] + kDstByteMoves[1].dx[b1] +
                                            kDstByteMoves[2].dx[b2]);
        const float dy = static_cast<float>(kDstByteMoves[0].dy[b0] + kDstByteMoves[1].dy[b1] +
                                            kDstByteMoves[2].dy[b2]);
        appender.append(dx, dy, kind == kDstJumpKind, isColorChange);
    }
    return true;
}

bool HMKDesign::importDstDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    return importDstDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
