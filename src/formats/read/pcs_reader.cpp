// PCS-family reader (PCS, PCD, PCQ): a short header with the type and a colour palette, then
// 9-byte records of absolute 24-bit positions in 1/6 mm, turned into relative stitches in
// 0.1 mm about the hoop centre. The PCS layout is the one the PCS writer produces.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
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

// Positions are in 1/6 mm: 5/3 design units (0.1 mm) each, taken as the exact ratio so that a
// design exactly at a limit does not come out a hair beyond it.
constexpr double kPcxDesignUnitsPerFive = 5;
constexpr double kPcxUnitsPerThree = 3;
// The largest positions, 120 mm and 115 mm, compared in the file's own units (exactly 720 and
// 690) so that no rounding decides. Only the upper limits are checked, deliberately.
constexpr std::int32_t kPcxMaxX = 720;
constexpr std::int32_t kPcxMaxY = 690;
// Half the hoop size in 0.1 mm: hoop millimetres x 10 x 0.5.
constexpr double kPcxHalfHoopPerMm = 5;
// Moves longer than 12 mm on either axis cannot be sewn and become jumps.
constexpr double kPcxMaxStitchLength = 120;

constexpr double kPcxMaxColorByte = 255.0;

bool failTooSmall(HMKError* error) {
    return fail(error, 160, "Unable to read PCx (file too small)");
}

double designUnits(std::int32_t raw) {
    return raw * kPcxDesignUnitsPerFive / kPcxUnitsPerThree;
}

HMKThread paletteThread(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    HMKColor color(red / kPcxMaxColorByte, green / kPcxMaxColorByte, blue / kPcxMaxColorByte);
    std::string name = formatText(
        localizedString(kDesignStringTable, "COLOR_INDIVIDUAL", "Individual color (%i, %i, %i)"),
        {int{red}, int{green}, int{blue}});
    return HMKThread(color, name, "", kNoPalette,
                     localizedString(kDesignStringTable, "PATTERN_PALETTE", "Threadcolors"));
}

// What the header says about the records that follow it.
struct PcxHeader {
    bool isPcs = false;
    std::size_t colorCount = 0;
    std::size_t stitchCount = 0;
    std::size_t firstRecord = 0;
};

// Checks the header, sets type, version and (for PCS) the hoop; none after failing with the
// header's code.
std::optional<PcxHeader> readPcxHeader(const HMKByteReader& reader, HMKDesign& design,
                                       HMKError* error) {
    if (reader.size() < kPcxHeaderSize) {
        failTooSmall(error);
        return std::nullopt;
    }
    if (reader.u8(0) != kPcsMagic) {
        fail(error, 161, "Unable to read PCx (missing magic)");
        return std::nullopt;
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
            fail(error, 162, "Unable to read PCx (invalid type)");
            return std::nullopt;
    }
    PcxHeader header;
    header.isPcs = type == kPcxTypePcsSmallHoop || type == kPcxTypePcsLargeHoop;
    design.setDesignVersion(kPcxVersion);
    if (header.isPcs) {
        design.setHoopFromVendor(kPcxHoopVendor, type);
    }

    header.colorCount = reader.u16le(kPcsColorCountOffset).value_or(0);
    if (header.colorCount > kPcsMaxColors) {
        fail(error, 163, "Unable to read PCx (color palette > 16)");
        return std::nullopt;
    }
    const std::size_t stitchCountOffset =
        kPcsPaletteOffset + kPcsPaletteEntrySize * header.colorCount;
    const auto stitchCount = reader.u16le(stitchCountOffset);
    // The second size check counts two bytes more than the records need; kept as it stands.
    if (!stitchCount || reader.size() < stitchCountOffset + 4 + kPcsRecordSize * *stitchCount) {
        failTooSmall(error);
        return std::nullopt;
    }
    header.stitchCount = *stitchCount;
    header.firstRecord = stitchCountOffset + 2;
    return header;
}

// Everything the records carry from one to the next.
struct PcxState {
    PcxState(HMKDesign& design, const PcxHeader& header)
        : design(design),
          header(header),
          appender(design),
          halfHoopWidth(design.hoopWidth() * kPcxHalfHoopPerMm),
          halfHoopHeight(design.hoopHeight() * kPcxHalfHoopPerMm) {}

    HMKDesign& design;
    const PcxHeader& header;
    HMKStitchAppender appender;
    double halfHoopWidth;
    double halfHoopHeight;
    // The hoop centre is where the needle starts (the writer's colour record 0 stays there).
    double previousX = 0;
    double previousY = 0;
    // The first record only sets where the design starts.
    std::optional<std::pair<std::int32_t, std::int32_t>> start;
    bool madeThread = false;
    std::size_t stitchRecordsRead = 0;
    // Built once per palette entry: colour records may follow each other closely.
    std::array<std::optional<HMKThread>, kPcsMaxColors> paletteThreads;
};

// A colour record of a PCS file adds its palette entry's thread; false after failing with 164.
bool addPaletteThread(const HMKByteReader& reader, std::size_t record, PcxState& state,
                      HMKError* error) {
    const std::size_t index = reader.u8(record + kPcsRecordColorIndexOffset).value_or(0);
    if (index >= state.header.colorCount) {
        return fail(error, 164, "Unable to read PCS (invalid color index)");
    }
    auto& thread = state.paletteThreads[index];
    if (!thread) {
        const std::size_t entry = kPcsPaletteOffset + kPcsPaletteEntrySize * index;
        thread = paletteThread(reader.u8(entry).value_or(0), reader.u8(entry + 1).value_or(0),
                               reader.u8(entry + 2).value_or(0));
    }
    state.design.threads().push_back(*thread);
    state.madeThread = true;
    return true;
}

// One 9-byte record at offset record, the last one the reader will take when isLast; false
// after failing with its code.
bool readPcxRecord(const HMKByteReader& reader, std::size_t record, bool isLast, PcxState& state,
                   HMKError* error) {
    const std::int32_t rawX =
        decodePcsCoordinate(reader.u24le(record + kPcsRecordXOffset).value_or(0));
    const std::int32_t rawY =
        decodePcsCoordinate(reader.u24le(record + kPcsRecordYOffset).value_or(0));
    const std::uint8_t flag = reader.u8(record + kPcsRecordFlagOffset).value_or(0);
    if (rawX > kPcxMaxX || rawY > kPcxMaxY) {
        return fail(error, 165, "Unable to read PCx (invalid stitch position)");
    }
    double positionX = designUnits(rawX) - state.halfHoopWidth;
    double positionY = designUnits(rawY) - state.halfHoopHeight;
    bool isJump = false;
    bool isColorChange = false;
    auto& stitches = state.design.stitches();
    if (state.header.isPcs && flag == kPcsColorRecord) {
        if (!addPaletteThread(reader, record, state, error)) {
            return false;
        }
        isColorChange = true;
        if (rawX == 0 || rawY == 0) {
            positionX = state.previousX;
            positionY = state.previousY;
        } else {
            state.design.setDesignVersion(kPcxMovingColorVersion);
        }
    } else {
        ++state.stitchRecordsRead;
        // PCD and PCQ files end with the same jump back to the start that PCS files flag 4;
        // sewn, it would draw a line across the whole design.
        const bool returnsToStart = isLast && state.start == std::pair{rawX, rawY};
        if (flag == kPcsJumpRecord && (state.header.isPcs || returnsToStart)) {
            isJump = true;
        } else if (positionX == state.previousX && positionY == state.previousY &&
                   !stitches.empty()) {
            // A stitch onto the same spot marks the move before it as a jump.
            stitches.back().isJumpStitch = true;
        }
    }
    if (state.start) {
        const double dx = positionX - state.previousX;
        const double dy = positionY - state.previousY;
        if (std::fabs(dx) > kPcxMaxStitchLength || std::fabs(dy) > kPcxMaxStitchLength) {
            isJump = true;
        }
        state.appender.append(static_cast<float>(dx), static_cast<float>(dy), isJump,
                              isColorChange);
    } else {
        state.start = std::pair{rawX, rawY};
    }
    state.previousX = positionX;
    state.previousY = positionY;
    return true;
}

}  // namespace

bool importPcxDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    const HMKByteReader reader(data);
    const auto header = readPcxHeader(reader, design, error);
    if (!header) {
        return false;
    }
    design.resetBounds();
    // Not sized from the header alone: colour records come on top of the counted ones, and
    // the file must hold every record reserved for.
    design.stitches().reserve(design.stitches().size() +
                              (reader.size() - header->firstRecord) / kPcsRecordSize);
    PcxState state(design, *header);
    for (std::size_t record = header->firstRecord;
         state.stitchRecordsRead < header->stitchCount && reader.contains(record, kPcsRecordSize);
         record += kPcsRecordSize) {
        const bool isLast = state.stitchRecordsRead + 1 == header->stitchCount ||
                            !reader.contains(record + kPcsRecordSize, kPcsRecordSize);
        if (!readPcxRecord(reader, record, isLast, state, error)) {
            return false;
        }
    }

    if (!state.madeThread) {
        HMKPlaceholderThreads().appendTo(design);
    }
    if (!header->isPcs) {
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
