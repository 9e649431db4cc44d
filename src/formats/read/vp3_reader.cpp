// VP3 reader: a header with the hoop extents before the first "xxPP" marker, then one section
// per colour with where its stitches start, the thread's RGB values and texts, and its stitch
// records. Numbers are big-endian; y grows downward in the file and is negated.
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
// Where the section's stitches begin: x then y, signed 32-bit, in 1/1000 mm from the design's
// centre, y growing downward.
constexpr std::size_t kVp3SectionStartOffset = 7;
constexpr double kVp3StartUnitsPerDesignUnit = 100;
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

// The header up to the colour count: makes the custom hoop and returns the number of colour
// sections and where the first one starts, or none after failing with the header's code.
struct Vp3Sections {
    std::size_t count = 0;
    std::size_t first = 0;
};
std::optional<Vp3Sections> readVp3Header(const HMKByteReader& reader, HMKDesign& design,
                                         HMKError* error) {
    if (reader.text(0, kVp3Magic.size()) != kVp3Magic) {
        fail(error, 150, "Unable to import VP3 file (missing header).");
        return std::nullopt;
    }
    const std::size_t marker = reader.allText().find(kVp3SectionMarker);
    // The marker cannot start before position 5, so when it exists the text length exists too.
    const auto textLength = reader.u16be(kVp3TextLengthOffset);
    if (marker == std::string_view::npos || !textLength) {
        fail(error, 151, "Unable to import VP3 file (no stitch section).");
        return std::nullopt;
    }
    if (marker < kVp3HoopWidthBeforeMarker) {
        fail(error, 152, "Unable to import VP3 file (no hoop data).");
        return std::nullopt;
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
        failTooSmall(error);
        return std::nullopt;
    }
    if (*colorCount == 0) {
        fail(error, 153, "Unable to import VP3 file (no colors).");
        return std::nullopt;
    }
    return Vp3Sections{*colorCount, marker + kVp3FirstSectionAfterMarker + *textLength};
}

// The section's thread from its colour and texts; position ends past the third text. None
// when a text runs past the end of the file.
std::optional<HMKThread> readVp3Thread(const HMKByteReader& reader, std::size_t section,
                                       std::size_t& position) {
    // All inside the minimum section size the caller checked.
    const std::size_t entryCount = reader.u8(section + kVp3EntryCountOffset).value_or(0);
    const std::uint8_t red = reader.u8(section + kVp3ColorOffset).value_or(0);
    const std::uint8_t green = reader.u8(section + kVp3ColorOffset + 1).value_or(0);
    const std::uint8_t blue = reader.u8(section + kVp3ColorOffset + 2).value_or(0);

    position = section + kVp3FirstTextLengthOffset + kVp3EntrySize * entryCount;
    auto firstText = readText(reader, position);
    auto secondText = firstText ? readText(reader, position) : std::nullopt;
    auto thirdText = secondText ? readText(reader, position) : std::nullopt;
    if (!thirdText) {
        return std::nullopt;
    }
    HMKColor color(red / kVp3MaxColorByte, green / kVp3MaxColorByte, blue / kVp3MaxColorByte);
    std::string name = secondText->empty()
                           ? *firstText
                           : formatText(kVp3ThreadNameFormat, {*secondText, *firstText});
    return HMKThread(color, name, "", kNoPalette, *thirdText);
}

// The stitch records from start up to the byte before end; false when a jump runs past the
// end of the file.
bool readVp3Stitches(const HMKByteReader& reader, std::size_t start, std::size_t end,
                     HMKStitchAppender& appender) {
    std::size_t position = start;
    while (position + 1 < end) {
        auto first = reader.u8(position);
        auto second = reader.s8(position + 1);
        if (!first || !second) {
            return false;
        }
        HMKStitch stitch(static_cast<std::int8_t>(*first), -*second, false, false);
        if (*first != kVp3Escape) {
            position += kVp3StitchSize;
        } else if (*second == kVp3Jump) {
            auto dx = reader.s16be(position + kVp3JumpXOffset);
            auto dy = reader.s16be(position + kVp3JumpYOffset);
            if (!reader.contains(position, kVp3JumpRecordSize) || !dx || !dy) {
                return false;
            }
            stitch = HMKStitch(*dx, -*dy, true, false);
            position += kVp3JumpRecordSize;
        } else {
            stitch = HMKStitch(0, 0, false, false);
            position += kVp3StitchSize;
        }
        appender.append(stitch);
    }
    return true;
}

// Moves the needle to where the section says its stitches begin. A section's stitches do not
// continue from where the previous section's ended: in files from many sources each block
// lands where its stored start places it (as the same design's other formats confirm), and
// read from the previous end they all land in the wrong places. A section that starts where
// the needle already is adds no move.
void moveToSectionStart(const HMKByteReader& reader, std::size_t section,
                        HMKStitchAppender& appender) {
    // Inside the minimum section size the caller checked.
    const double startX =
        reader.s32be(section + kVp3SectionStartOffset).value_or(0) / kVp3StartUnitsPerDesignUnit;
    // Negated as a double: the most negative 32-bit value has no positive counterpart. A start
    // at zero stays +0: a -0 would reach the design as a move of -0.
    const std::int32_t fileY = reader.s32be(section + kVp3SectionStartOffset + 4).value_or(0);
    const double startY =
        fileY == 0 ? 0.0 : -static_cast<double>(fileY) / kVp3StartUnitsPerDesignUnit;
    const auto dx = static_cast<float>(startX - appender.x());
    const auto dy = static_cast<float>(startY - appender.y());
    if (dx != 0 || dy != 0) {
        appender.append(dx, dy, true, false);
    }
}

// One colour section: its thread, the colour change that begins it (all but the first), the
// move to its start and its stitches. Returns where the next section starts, or none after
// failing with 154 (the thread stays when the stitches were the problem).
std::optional<std::size_t> readVp3Section(const HMKByteReader& reader, std::size_t section,
                                          bool isFirst, HMKDesign& design,
                                          HMKStitchAppender& appender, HMKError* error) {
    if (!reader.contains(section, kVp3SectionMinimumSize)) {
        failTooSmall(error);
        return std::nullopt;
    }
    std::size_t position = 0;
    auto thread = readVp3Thread(reader, section, position);
    if (!thread) {
        failTooSmall(error);
        return std::nullopt;
    }
    design.threads().push_back(std::move(*thread));
    // Colour changes are implied by the section boundaries. Every stitch of a section is sewn,
    // its last one too, so the change is a record of its own between the sections.
    if (!isFirst) {
        appender.append(0, 0, false, true);
    }

    const auto skipLength = reader.u16be(position + kVp3SkipLengthAfterTexts);
    const auto sectionLength = reader.u32be(section + kVp3SectionLengthOffset);
    if (!skipLength || !sectionLength) {
        failTooSmall(error);
        return std::nullopt;
    }
    const std::size_t stitchStart = position + kVp3StitchesAfterTexts + *skipLength;
    // 64-bit sums: a stated length near 4 GiB must not wrap around.
    const std::uint64_t nextSection =
        std::uint64_t{section} + *sectionLength + kVp3SectionLengthBase;
    // Beyond the checks the format asks for, a section must also end inside the file, so the
    // stitch loop never runs off its end.
    if (stitchStart > reader.size() || nextSection > reader.size()) {
        failTooSmall(error);
        return std::nullopt;
    }
    moveToSectionStart(reader, section, appender);
    if (!readVp3Stitches(reader, stitchStart, static_cast<std::size_t>(nextSection), appender)) {
        failTooSmall(error);
        return std::nullopt;
    }
    // Always at least kVp3SectionLengthBase further on, so sections never repeat.
    return static_cast<std::size_t>(nextSection);
}

}  // namespace

bool importVp3DesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    design.setDesignType("VP3");
    design.setDesignVersion(kVp3Version);
    const HMKByteReader reader(data);
    const auto sections = readVp3Header(reader, design, error);
    if (!sections) {
        return false;
    }
    design.resetBounds();
    if (sections->first < reader.size()) {
        design.stitches().reserve(design.stitches().size() +
                                  (reader.size() - sections->first) / kVp3StitchSize);
    }
    HMKStitchAppender appender(design);
    std::size_t section = sections->first;
    for (std::size_t index = 0; index < sections->count; ++index) {
        const auto next = readVp3Section(reader, section, index == 0, design, appender, error);
        if (!next) {
            return false;
        }
        section = *next;
    }
    return true;
}

bool HMKDesign::importVp3DesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty and so fails for its missing header.
    return importVp3DesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
