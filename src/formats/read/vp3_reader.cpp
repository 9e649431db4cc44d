// VP3 reader: a header with the hoop extents before the first "xxPP" marker, then one section
// per colour with the thread's RGB values and texts followed by its stitch records. Numbers
// are big-endian; y grows downward in the file and is negated.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/read/readers.h"
#include "model/format_text.h"

namespace {

constexpr std::int32_t kVp3Version = 10;
constexpr std::string_view kVp3Magic = "%vsm%";
constexpr std::size_t kVp3TextLengthOffset = 6;
constexpr std::string_view kVp3SectionMarker = "xxPP";

// Positions relative to the section marker; the text length read at offset 6 is added to the
// last two whatever the file holds there (a shortcut that is part of the format as read here).
constexpr std::size_t kVp3HoopWidthBeforeMarker = 28;
constexpr std::size_t kVp3HoopHeightBeforeMarker = 24;
constexpr std::size_t kVp3ColorCountAfterMarker = 8;
constexpr std::size_t kVp3FirstSectionAfterMarker = 10;
// Hoop extents are stored in 1/1000 mm; the hoop is made of whole millimetres, rounded up.
constexpr std::uint64_t kVp3HoopUnitsPerMm = 1000;

// Positions relative to the start of a colour section.
constexpr std::size_t kVp3SectionLengthOffset = 3;
// The next section starts this far plus the stated length after the section start.
constexpr std::uint64_t kVp3SectionLengthBase = 7;
constexpr std::size_t kVp3SectionMinimumSize = 20;
constexpr std::size_t kVp3EntryCountOffset = 15;
constexpr std::size_t kVp3ColorOffset = 17;
constexpr std::size_t kVp3FirstTextLengthOffset = 19;
constexpr std::size_t kVp3EntrySize = 6;
// Positions relative to the end of the third text.
constexpr std::size_t kVp3SkipLengthAfterTexts = 8;
constexpr std::size_t kVp3StitchesAfterTexts = 17;
constexpr std::string_view kVp3ThreadNameFormat = "%@ (%@)";

constexpr std::uint8_t kVp3Escape = 0x80;
constexpr std::int8_t kVp3Jump = 0x01;
constexpr std::size_t kVp3StitchSize = 2;
constexpr std::size_t kVp3JumpRecordSize = 8;
constexpr std::size_t kVp3JumpXOffset = 2;
constexpr std::size_t kVp3JumpYOffset = 4;

constexpr double kVp3MaxColorByte = 255.0;

bool failTooSmall(HMKError* error) {
    return fail(error, 154, "Unable to import VP3 file (file too small for offset).");
}

// The file's texts are ISO Latin-1, one character per byte; the model holds UTF-8.
std::string latin1ToUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | (byte >> 6));
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

// Reads a text stored as a 16-bit big-endian length and its bytes, advancing position past
// it; none when either part runs past the end of the file.
std::optional<std::string> readText(const HMKByteReader& reader, std::size_t& position) {
    auto length = reader.u16be(position);
    if (!length) {
        return std::nullopt;
    }
    auto text = reader.text(position + 2, *length);
    if (!text) {
        return std::nullopt;
    }
    position += 2 + *length;
    return latin1ToUtf8(*text);
}

}  // namespace

bool importVp3DesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    design.setDesignType("VP3");
    design.setDesignVersion(kVp3Version);
    HMKByteReader reader(data);
    const std::size_t length = reader.size();
    if (reader.text(0, kVp3Magic.size()) != kVp3Magic) {
        return fail(error, 150, "Unable to import VP3 file (missing header).");
    }
    const std::size_t marker = reader.allText().find(kVp3SectionMarker);
    // The marker cannot start before position 5, so when it exists the text length exists too.
    const auto textLength = reader.u16be(kVp3TextLengthOffset);
    if (marker == std::string_view::npos || !textLength) {
        return fail(error, 151, "Unable to import VP3 file (no stitch section).");
    }
    if (marker < kVp3HoopWidthBeforeMarker) {
        return fail(error, 152, "Unable to import VP3 file (no hoop data).");
    }
    // Both lie before the marker, which is inside the file.
    const std::uint64_t hoopWidth = reader.u32be(marker - kVp3HoopWidthBeforeMarker).value_or(0);
    const std::uint64_t hoopHeight = reader.u32be(marker - kVp3HoopHeightBeforeMarker).value_or(0);
    design.setDesignHoop(HMKHoop(
        "", "", 0,
        static_cast<std::int32_t>((hoopWidth + kVp3HoopUnitsPerMm - 1) / kVp3HoopUnitsPerMm),
        static_cast<std::int32_t>((hoopHeight + kVp3HoopUnitsPerMm - 1) / kVp3HoopUnitsPerMm),
        false, false, false));

    const auto colorCount = reader.u16be(marker + kVp3ColorCountAfterMarker + *textLength);
    if (!colorCount) {
        return failTooSmall(error);
    }
    if (*colorCount == 0) {
        return fail(error, 153, "Unable to import VP3 file (no colors).");
    }

    design.resetBounds();
    auto& stitches = design.stitches();
    std::size_t section = marker + kVp3FirstSectionAfterMarker + *textLength;
    if (section < length) {
        stitches.reserve(stitches.size() + (length - section) / kVp3StitchSize);
    }
    HMKStitchAppender appender(design);
    for (std::size_t k = 0; k < *colorCount; ++k) {
        if (!reader.contains(section, kVp3SectionMinimumSize)) {
            return failTooSmall(error);
        }
        // All inside the minimum section size checked above.
        const std::size_t entryCount = reader.u8(section + kVp3EntryCountOffset).value_or(0);
        const std::uint8_t red = reader.u8(section + kVp3ColorOffset).value_or(0);
        const std::uint8_t green = reader.u8(section + kVp3ColorOffset + 1).value_or(0);
        const std::uint8_t blue = reader.u8(section + kVp3ColorOffset + 2).value_or(0);

        std::size_t position = section + kVp3FirstTextLengthOffset + kVp3EntrySize * entryCount;
        auto firstText = readText(reader, position);
        auto secondText = firstText ? readText(reader, position) : std::nullopt;
        auto thirdText = secondText ? readText(reader, position) : std::nullopt;
        if (!thirdText) {
            return failTooSmall(error);
        }
        HMKColor color(red / kVp3MaxColorByte, green / kVp3MaxColorByte, blue / kVp3MaxColorByte);
        std::string name = secondText->empty()
                               ? *firstText
                               : formatText(kVp3ThreadNameFormat, {*secondText, *firstText});
        design.threads().push_back(HMKThread(color, name, "", kNoPalette, *thirdText));

        const auto skipLength = reader.u16be(position + kVp3SkipLengthAfterTexts);
        const auto sectionLength = reader.u32be(section + kVp3SectionLengthOffset);
        if (!skipLength || !sectionLength) {
            return failTooSmall(error);
        }
        const std::size_t stitchStart = position + kVp3StitchesAfterTexts + *skipLength;
        // 64-bit sums: a stated length near 4 GiB must not wrap around.
        const std::uint64_t nextSection =
            std::uint64_t{section} + *sectionLength + kVp3SectionLengthBase;
        // Beyond the checks the format asks for, a section must also end inside the file,
        // so the stitch loop below never runs off its end.
        if (stitchStart > length || nextSection > length) {
            return failTooSmall(error);
        }

        std::size_t p = stitchStart;
        while (p + 1 < nextSection) {
            auto first = reader.u8(p);
            auto second = reader.s8(p + 1);
            if (!first || !second) {
                return failTooSmall(error);
            }
            HMKStitch stitch(static_cast<std::int8_t>(*first), -*second, false, false);
            if (*first != kVp3Escape) {
                p += kVp3StitchSize;
            } else if (*second == kVp3Jump) {
                auto dx = reader.s16be(p + kVp3JumpXOffset);
                auto dy = reader.s16be(p + kVp3JumpYOffset);
                if (!reader.contains(p, kVp3JumpRecordSize) || !dx || !dy) {
                    return failTooSmall(error);
                }
                stitch = HMKStitch(*dx, -*dy, true, false);
                p += kVp3JumpRecordSize;
            } else {
                stitch = HMKStitch(0, 0, false, false);
                p += kVp3StitchSize;
            }
            appender.append(stitch);
        }
        // Colour changes are implied by the section boundaries: the last stitch so far ends
        // every section but the last.
        if (k + 1 < *colorCount && !stitches.empty()) {
            stitches.back().isColorChange = true;
        }
        // Always at least kVp3SectionLengthBase further on, so sections never repeat.
        section = static_cast<std::size_t>(nextSection);
    }
    return true;
}

bool HMKDesign::importVp3DesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty and so fails for its missing header.
    return importVp3DesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
