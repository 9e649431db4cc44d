// Brother PES and PEC: both files are reduced to their PEC section (everything after "LA:"),
// which one segment reader decodes: the stitch stream, then one thread per colour block from
// the PEC colour list through the Brother read-code table.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/pec_records.h"
#include "formats/read/readers.h"
#include "model/design.h"

namespace {

// --- File headers ----------------------------------------------------------------------------
constexpr std::string_view kPesMagic = "#PES";
constexpr std::string_view kPecMagic = "#PEC";
constexpr std::size_t kVersionOffset = 4;
constexpr std::size_t kVersionDigits = 4;
constexpr std::size_t kPesMinimumFileSize = 8;
constexpr std::size_t kPecMinimumFileSize = 11;
constexpr std::size_t kPecSectionTagOffset = 8;
// Current digitizing software writes "0100", "0110" and "0111"; their PEC section is laid out
// like every other version's, so they are read the same way. Versions not seen in files stay
// refused.
constexpr std::array<int, 16> kPesVersions = {1,  20, 25, 30, 40, 50,  55,  56,
                                              60, 70, 71, 80, 90, 100, 110, 111};
constexpr int kPecVersion = 1;
// Version 1 is kept as 10 (tenths); the later versions are kept as written.
constexpr std::int32_t kVersionOneDesignVersion = 10;

// --- PEC segment: the section after its "LA:" tag -----------------------------------------
constexpr std::size_t inSegment(std::size_t sectionOffset) {
    return sectionOffset - kPecSectionTag.size();
}
// Room for the stitch data's start position.
constexpr std::size_t kPecMinimumSegmentSize =
    inSegment(kPecStitchDataOffset + kPecStartPositionSize);
constexpr std::size_t kPecColorIndexOffset = inSegment(kPecColorListOffset);
constexpr std::size_t kPecGraphicHeaderOffset = inSegment(kPecHeaderSize);
constexpr std::size_t kPecThumbnailOffsetField = inSegment(kPecStitchLengthOffset);
constexpr std::size_t kPecSegmentWidthOffset = inSegment(kPecWidthOffset);
constexpr std::size_t kPecSegmentHeightOffset = inSegment(kPecHeightOffset);
constexpr std::size_t kPecSegmentStitchDataOffset = inSegment(kPecStitchDataOffset);
// Files from some machines carry the stitch data one byte later; a failed decode is retried
// there.
constexpr std::size_t kPecShiftedStitchDataOffset = kPecSegmentStitchDataOffset + 1;
// Long-form first bytes that still mean a plain stitch (no flags, value -256 to 255).
constexpr std::uint8_t kPecPlainLongPositive = 0x80;
constexpr std::uint8_t kPecPlainLongNegative = 0x8F;

constexpr const char* kBrotherPalette = "Brother";
constexpr const char* kBrotherFallbackKey = "005";

// The integer at the front of text, as the platform's string-to-integer reads it: leading
// blanks, an optional sign, then digits up to the first non-digit; 0 when there are none.
int leadingInteger(std::string_view text) {
    std::size_t index = 0;
    while (index < text.size() && std::isspace(static_cast<unsigned char>(text[index]))) {
        ++index;
    }
    bool negative = false;
    if (index < text.size() && (text[index] == '+' || text[index] == '-')) {
        negative = text[index] == '-';
        ++index;
    }
    int value = 0;
    for (; index < text.size() && text[index] >= '0' && text[index] <= '9'; ++index) {
        value = value * 10 + (text[index] - '0');
    }
    return negative ? -value : value;
}

std::int32_t designVersionOf(int fileVersion) {
    return fileVersion == 1 ? kVersionOneDesignVersion : fileVersion;
}

struct PecCoordinate {
    int value = 0;
    std::uint8_t firstByte = 0;
    std::size_t size = 0;

    bool isLongForm() const { return size == 2; }
    // Deliberately coarse: a long form that could hold a jump flag counts as a move.
    bool marksMove() const {
        return isLongForm() && firstByte != kPecPlainLongPositive &&
               firstByte != kPecPlainLongNegative;
    }
};

// One coordinate at offset, or none when its bytes run past the segment.
std::optional<PecCoordinate> readPecCoordinate(const HMKByteReader& reader, std::size_t offset) {
    const auto first = reader.u8(offset);
    if (!first) {
        return std::nullopt;
    }
    if ((*first & kPecLongFormBit) == 0) {
        return PecCoordinate{decodePecShort(*first), *first, 1};
    }
    const auto second = reader.u8(offset + 1);
    if (!second) {
        return std::nullopt;
    }
    return PecCoordinate{decodePecLong(*first, *second), *first, 2};
}

// Where the stitch data's start position is measured from. Machine-written files measure it
// from the top-left corner of the design's extents, which puts the extents' centre on the
// origin. Files from some widely used converters measure it from the design's own origin
// instead; read the first way they come out shifted by half the design's size (x by -w/2, y by
// +h/2), outside every hoop and refused by every writer that checks centring. The two readings
// differ only by that shift, so the file's own extents decide: the reading that puts the
// decoded stitches' centre nearer the origin is the one the file was written for (the corner
// reading on a tie). Either way no design ends up further from its centre than the corner
// reading alone would put it. The file readers hand the segment an emptied design, so the
// design's bounds are the decoded stitches' own.
void placeStartByItsConvention(HMKDesign& design, std::size_t firstStitch, int halfWidth,
                               int halfHeight) {
    const double centerX = (double{design.xMin()} + design.xMax()) / 2;
    const double centerY = (double{design.yMin()} + design.yMax()) / 2;
    const double originCenterX = centerX + halfWidth;
    const double originCenterY = centerY - halfHeight;
    if (originCenterX * originCenterX + originCenterY * originCenterY >=
        centerX * centerX + centerY * centerY) {
        return;
    }
    HMKStitch& start = design.stitches()[firstStitch];
    start.deltaX += static_cast<float>(halfWidth);
    start.deltaY -= static_cast<float>(halfHeight);
    design.recomputeBounds();
}

// Code 33 alone carries its text as the failure reason (kept as the files' readers expect).
bool failWithReason(HMKError* error, int code, std::string_view defaultText) {
    if (error) {
        *error = makeError(code, defaultText);
        error->failureReason = std::move(error->recoverySuggestion);
        error->recoverySuggestion.clear();
    }
    return false;
}

}  // namespace

bool importPesDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error) {
    design.setDesignType("PES");
    const HMKByteReader reader(bytes);
    if (reader.size() < kPesMinimumFileSize || reader.text(0, kPesMagic.size()) != kPesMagic) {
        return fail(error, 30, "Unable to import PES file (missing header).");
    }
    const int version = leadingInteger(reader.text(kVersionOffset, kVersionDigits).value_or(""));
    design.setDesignVersion(designVersionOf(version));
    if (std::find(kPesVersions.begin(), kPesVersions.end(), version) == kPesVersions.end()) {
        return fail(error, 31, "Unable to import PES file (unsupported version).");
    }
    // The file must split at "LA:" into exactly two pieces: find the first and make sure no
    // second one follows, rather than cutting the file apart.
    const std::string_view text = reader.allText();
    const std::size_t tag = text.find(kPecSectionTag);
    if (tag == std::string_view::npos) {
        return fail(error, 32, "Unable to import PES file (PEC part missing).");
    }
    const std::size_t segmentOffset = tag + kPecSectionTag.size();
    if (text.find(kPecSectionTag, segmentOffset) != std::string_view::npos) {
        return failWithReason(
            error, 33,
            "Unable to import PES file (PEC multiparts not supported by PES file version).");
    }
    design.resetBounds();
    return design.importPecSegmentFromData(bytes.subspan(segmentOffset), error);
}

bool importPecDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error) {
    design.setDesignType("PEC");
    const HMKByteReader reader(bytes);
    if (reader.size() < kPecMinimumFileSize || reader.text(0, kPecMagic.size()) != kPecMagic) {
        return fail(error, 30, "Unable to import PES/PEC file (missing header).");
    }
    const int version = leadingInteger(reader.text(kVersionOffset, kVersionDigits).value_or(""));
    if (version != kPecVersion) {
        return fail(error, 31, "Unable to import PES/PEC file (unsupported version).");
    }
    design.setDesignVersion(designVersionOf(version));
    if (reader.text(kPecSectionTagOffset, kPecSectionTag.size()) != kPecSectionTag) {
        return fail(error, 32, "Unable to import PES file (PEC part missing).");
    }
    design.resetBounds();
    const std::size_t segmentOffset = kPecSectionTagOffset + kPecSectionTag.size();
    return design.importPecSegmentFromData(bytes.subspan(segmentOffset), error);
}

bool HMKDesign::importPesDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    return importPesDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}

bool HMKDesign::importPecDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    return importPecDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}

bool HMKDesign::importPecSegmentFromData(std::span<const std::uint8_t> segment, HMKError* error) {
    if (segment.size() < kPecMinimumSegmentSize) {
        return fail(error, 190, "Unable to import PEC segment (segment too small for attributes).");
    }
    std::int32_t colorBlocks = importPecStichesFromData(segment, kPecSegmentStitchDataOffset);
    if (colorBlocks == 0) {
        stitches().clear();
        resetBounds();
        colorBlocks = importPecStichesFromData(segment, kPecShiftedStitchDataOffset, error);
        if (colorBlocks == 0) {
            return false;
        }
    }

    // Making a thread loads its palette, so each colour index is looked up once.
    const HMKByteReader reader(segment);
    const auto codes = brotherReadColorCodes();
    std::array<std::optional<HMKThread>, 256> threadOfIndex;
    for (std::int32_t block = 0; block < colorBlocks; ++block) {
        const std::uint8_t index =
            reader.u8(kPecColorIndexOffset + static_cast<std::size_t>(block)).value_or(0);
        auto& thread = threadOfIndex[index];
        if (!thread) {
            const auto code = codes.find(index);
            thread =
                HMKThread::fromPaletteKey(code == codes.end() ? "" : code->second, kBrotherPalette);
            if (thread->paletteName.empty()) {
                thread = HMKThread::fromPaletteKey(kBrotherFallbackKey, kBrotherPalette);
            }
        }
        threads().push_back(*thread);
    }
    return true;
}

std::int32_t HMKDesign::importPecStichesFromData(std::span<const std::uint8_t> segment,
                                                 std::size_t offset, HMKError* error) {
    const HMKByteReader reader(segment);
    const std::size_t end =
        kPecGraphicHeaderOffset + reader.u24le(kPecThumbnailOffsetField).value_or(0);

    // The first stitch moves from the design's centre to the start position.
    const int startX =
        decodePecLong(reader.u8(offset).value_or(0), reader.u8(offset + 1).value_or(0));
    const int startY =
        decodePecLong(reader.u8(offset + 2).value_or(0), reader.u8(offset + 3).value_or(0));
    const int halfWidth = reader.s16le(kPecSegmentWidthOffset).value_or(0) / 2;
    const int halfHeight = reader.s16le(kPecSegmentHeightOffset).value_or(0) / 2;
    const std::size_t firstStitch = stitches().size();
    HMKStitchAppender appender(*this);
    appender.append(static_cast<float>(startX - halfWidth), static_cast<float>(halfHeight - startY),
                    true, false);

    if (reader.size() < end) {
        fail(error, 191, "Unable to import PEC segment (segment too small for bitmap pointer).");
        return 0;
    }
    std::size_t position = offset + kPecStartPositionSize;
    if (position >= end) {
        fail(error, 192, "Unable to import PEC segment (stitches not terminated).");
        return 0;
    }

    // Every record takes at least two bytes.
    stitches().reserve(stitches().size() + (end - position) / 2);
    std::int32_t colorBlocks = 1;
    while (position < end) {
        const std::uint8_t first = reader.u8(position).value_or(kPecEndOfStitches);
        if (first == kPecEndOfStitches) {
            placeStartByItsConvention(*this, firstStitch, halfWidth, halfHeight);
            return colorBlocks;
        }
        if (first == kPecCommand && reader.u8(position + 1) == kPecColorChange) {
            // A zero move: the needle, and so the bounds, stay where they are.
            appender.append(0.0f, 0.0f, false, true);
            ++colorBlocks;
            position += kPecColorChangeSize;
            continue;
        }
        const auto dx = readPecCoordinate(reader, position);
        if (!dx) {
            break;
        }
        const auto dy = readPecCoordinate(reader, position + dx->size);
        if (!dy) {
            break;
        }
        position += dx->size + dy->size;
        const bool isJump = dx->marksMove() && dy->marksMove();
        // PEC y grows downward.
        const float deltaX = static_cast<float>(dx->value);
        const float deltaY = static_cast<float>(-dy->value);
        appender.append(deltaX, deltaY, isJump, false);
    }
    fail(error, 192, "Unable to import PEC segment (stitches not terminated).");
    return 0;
}
