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

std::array<std::uint8_t, kDstRecordSize> recordAt(const HMKByteReader& reader, std::size_t offset) {
    return {reader.u8(offset).value_or(0), reader.u8(offset + 1).value_or(0),
            reader.u8(offset + 2).value_or(kDstEndRecord)};
}

HMKStitch recordMove(const std::array<std::uint8_t, kDstRecordSize>& record, bool isJump,
                     bool isColorChange) {
    int dx = 0;
    int dy = 0;
    for (std::size_t byte = 0; byte < kDstRecordSize; ++byte) {
        dx += kDstByteMoves[byte].dx[record[byte]];
        dy += kDstByteMoves[byte].dy[record[byte]];
    }
    return HMKStitch(static_cast<float>(dx), static_cast<float>(dy), isJump, isColorChange);
}

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
    // The last three bytes of a file are normally its end record or the end record's 0x1A
    // trailer, so the loop stops before them and they are looked at only below.
    std::size_t offset = kDstHeaderSize;
    for (; offset + kDstRecordSize < reader.size(); offset += kDstRecordSize) {
        const std::array<std::uint8_t, kDstRecordSize> record = recordAt(reader, offset);
        if (record[2] == kDstEndRecord) {
            return true;
        }
        const std::uint8_t kind = record[2] & kDstKindMask;
        if (kind != kDstStitchKind && kind != kDstJumpKind && kind != kDstColorChangeKind) {
            return fail(error, 111, "Unable to import DST file (invalid function codes).");
        }
        const bool isColorChange = kind == kDstColorChangeKind;
        if (isColorChange) {
            placeholders.appendTo(design);
        }
        appender.append(recordMove(record, kind == kDstJumpKind, isColorChange));
    }
    // Files from some machines stop without an end record, their last stitch filling the
    // final three bytes; that stitch is sewn, so it is kept. Anything else there (a colour
    // change with nothing after it, padding) is not a stitch and is left out without error.
    if (offset + kDstRecordSize == reader.size()) {
        const std::array<std::uint8_t, kDstRecordSize> record = recordAt(reader, offset);
        const std::uint8_t kind = record[2] & kDstKindMask;
        if (record[2] != kDstEndRecord && (kind == kDstStitchKind || kind == kDstJumpKind)) {
            appender.append(recordMove(record, kind == kDstJumpKind, false));
        }
    }
    return true;
}

bool HMKDesign::importDstDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    return importDstDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
