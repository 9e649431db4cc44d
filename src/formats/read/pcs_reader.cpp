// PCS-family reader (PCS, PCD, PCQ): a short header with the type and a colour palette, then
// 9-byte records of absolute 24-bit positions in 1/6 mm, turned into relative stitches in
// 0.1 mm about the hoop centre. The PCS layout is the one the PCS writer produces.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/pcs_records.h"
#include "formats/read/readers.h"
#include "model/format_text.h"
#include "model/strings.h"

namespace {

constexpr std::int32_t kPcxVersion = 20;
// A PCS file whose colour records also move the needle.
constexpr std::int32_t kPcxMovingColorVersion = 21;
constexpr std::size_t kPcxHeaderSize = 6;

constexpr std::uint8_t kPcxTypePcd = 0;
constexpr std::uint8_t kPcxTypePcq = 1;
// For PCS the type byte is also the Pfaff hoop code.
constexpr std::uint8_t kPcxTypePcsSmallHoop = 2;
constexpr std::uint8_t kPcxTypePcsLargeHoop = 3;
constexpr const char* kPcxHoopVendor = "Pfaff";

// 1/6 mm to 0.1 mm, in double precision as the format has always been read.
constexpr double kPcxUnitsToDesignUnits = 1.6666666667;
// Only the upper limits are checked, deliberately.
constexpr double kPcxMaxX = 1200;
constexpr double kPcxMaxY = 1150;
// Half the hoop size in 0.1 mm: hoop millimetres x 10 x 0.5.
constexpr double kPcxHalfHoopPerMm = 5;
// Moves longer than 12 mm on either axis cannot be sewn and become jumps.
constexpr double kPcxMaxStitchLength = 120;

constexpr double kPcxMaxColorByte = 255.0;

bool failTooSmall(HMKError* error) {
    return fail(error, 160, "Unable to read PCx (file too small)");
}

HMKThread paletteThread(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    HMKColor color(red / kPcxMaxColorByte, green / kPcxMaxColorByte, blue / kPcxMaxColorByte);
    std::string name = formatText(
        localizedString(kDesignStringTable, "COLOR_INDIVIDUAL", "Individual color (%i, %i, %i)"),
        {int{red}, int{green}, int{blue}});
    return HMKThread(color, name, "", kNoPalette,
                     localizedString(kDesignStringTable, "PATTERN_PALETTE", "Threadcolors"));
}

}  // namespace

bool importPcxDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    HMKByteReader reader(data);
    const std::size_t length = reader.size();
    if (length < kPcxHeaderSize) {
        return failTooSmall(error);
    }
    if (reader.u8(0) != kPcsMagic) {
        return fail(error, 161, "Unable to read PCx (missing magic)");
    }
    const std::uint8_t type = reader.u8(kPcsTypeOffset).value_or(0);
    switch (type) {
        case kPcxTypePcq:
            design.setDesignType("PCQ");
            break;
        case kPcxTypePcd:
            design.setDesignType("PCD");
            break;
        case kPcxTypePcsSmallHoop:
        case kPcxTypePcsLargeHoop:
            design.setDesignType("PCS");
            break;
        default:
            return fail(error, 162, "Unable to read PCx (invalid type)");
    }
    const bool isPcs = type == kPcxTypePcsSmallHoop || type == kPcxTypePcsLargeHoop;
    design.setDesignVersion(kPcxVersion);
    if (isPcs) {
        design.setHoopFromVendor(kPcxHoopVendor, type);
    }

    const std::size_t colorCount = reader.u16le(kPcsColorCountOffset).value_or(0);
    if (colorCount > kPcsMaxColors) {
        return fail(error, 163, "Unable to read PCx (color palette > 16)");
    }
    const std::size_t stitchCountOffset = kPcsPaletteOffset + kPcsPaletteEntrySize * colorCount;
    const auto stitchCount = reader.u16le(stitchCountOffset);
    // The second size check counts two bytes more than the records need; kept as it stands.
    if (!stitchCount || length < stitchCountOffset + 4 + kPcsRecordSize * *stitchCount) {
        return failTooSmall(error);
    }

    design.resetBounds();
    const double halfHoopWidth = design.hoopWidth() * kPcxHalfHoopPerMm;
    const double halfHoopHeight = design.hoopHeight() * kPcxHalfHoopPerMm;
    const std::size_t firstRecord = stitchCountOffset + 2;
    auto& stitches = design.stitches();
    // Not sized from the header alone: colour records come on top of the counted ones, and
    // the file must hold every record reserved for.
    stitches.reserve(stitches.size() + (length - firstRecord) / kPcsRecordSize);

    // The hoop centre is where the needle starts (the writer's colour record 0 stays there).
    double previousX = 0;
    double previousY = 0;
    HMKStitchAppender appender(design);
    bool isFirstRecord = true;
    bool madeThread = false;
    // Built once per palette entry: colour records may follow each other closely.
    std::array<std::optional<HMKThread>, kPcsMaxColors> paletteThreads;
    std::size_t stitchRecordsRead = 0;
    for (std::size_t record = firstRecord;
         stitchRecordsRead < *stitchCount && reader.contains(record, kPcsRecordSize);
         record += kPcsRecordSize) {
        const std::int32_t rawX =
            decodePcsCoordinate(reader.u24le(record + kPcsRecordXOffset).value_or(0));
        const std::int32_t rawY =
            decodePcsCoordinate(reader.u24le(record + kPcsRecordYOffset).value_or(0));
        const std::uint8_t flag = reader.u8(record + kPcsRecordFlagOffset).value_or(0);
        if (rawX * kPcxUnitsToDesignUnits > kPcxMaxX || rawY * kPcxUnitsToDesignUnits > kPcxMaxY) {
            return fail(error, 165, "Unable to read PCx (invalid stitch position)");
        }
        double positionX = rawX * kPcxUnitsToDesignUnits - halfHoopWidth;
        double positionY = rawY * kPcxUnitsToDesignUnits - halfHoopHeight;
        bool isJump = false;
        bool isColorChange = false;
        if (isPcs && flag == kPcsColorRecord) {
            const std::size_t index = reader.u8(record + kPcsRecordColorIndexOffset).value_or(0);
            if (index >= colorCount) {
                return fail(error, 164, "Unable to read PCS (invalid color index)");
            }
            auto& thread = paletteThreads[index];
            if (!thread) {
                const std::size_t entry = kPcsPaletteOffset + kPcsPaletteEntrySize * index;
                thread =
                    paletteThread(reader.u8(entry).value_or(0), reader.u8(entry + 1).value_or(0),
                                  reader.u8(entry + 2).value_or(0));
            }
            design.threads().push_back(*thread);
            madeThread = true;
            isColorChange = true;
            if (rawX == 0 || rawY == 0) {
                positionX = previousX;
                positionY = previousY;
            } else {
                design.setDesignVersion(kPcxMovingColorVersion);
            }
        } else {
            ++stitchRecordsRead;
            if (isPcs && flag == kPcsJumpRecord) {
                isJump = true;
            } else if (positionX == previousX && positionY == previousY && !stitches.empty()) {
                // A stitch onto the same spot marks the move before it as a jump.
                stitches.back().isJumpStitch = true;
            }
        }
        if (!isFirstRecord) {
            const double dx = positionX - previousX;
            const double dy = positionY - previousY;
            if (std::fabs(dx) > kPcxMaxStitchLength || std::fabs(dy) > kPcxMaxStitchLength) {
                isJump = true;
            }
            appender.append(static_cast<float>(dx), static_cast<float>(dy), isJump, isColorChange);
        }
        isFirstRecord = false;
        previousX = positionX;
        previousY = positionY;
    }

    if (!madeThread) {
        HMKPlaceholderThreads().appendTo(design);
    }
    if (!isPcs) {
        // Deliberate: PCD and PCQ stretch the box to the origin horizontally only.
        design.setBounds(std::min(design.xMin(), 0.0f), design.yMin(), design.xMax(),
                         design.yMax());
    }
    return true;
}

bool HMKDesign::importPcxDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty and so fails as too small.
    return importPcxDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
