// Pfaff PCS: a short header with the Pfaff hoop code and a 16-slot RGB colour table, then
// 9-byte records of absolute 24-bit coordinates in 1/6 mm measured from the hoop's corner.
#include <cmath>

#include "formats/pcs_records.h"
#include "formats/write/byte_writer.h"
#include "formats/write/hoop_check.h"
#include "formats/write/writer_support.h"
#include "formats/write/writers.h"
#include "model/design.h"

namespace {

constexpr std::int32_t kPcsMaxStitches = 14000;
constexpr std::size_t kPcsTailSize = 13;
// Design units (0.1 mm) to PCS units (1/6 mm).
constexpr double kPcsUnitsPerDesignUnit = 0.6;

void appendColorRecord(HMKByteWriter& file, std::uint8_t colorNumber) {
    file.byte(colorNumber);
    file.repeat(0x00, 7);
    file.byte(kPcsColorRecord);
}

std::uint32_t encodeCoordinate(double position) {
    return encodePcsCoordinate(static_cast<std::int64_t>(std::round(position)));
}

}  // namespace

std::optional<HMKEncodedDesign> encodePcsDesign(HMKDesign& design, HMKError* error) {
    const std::vector<HMKThread>& threads = design.threads();
    if (threads.size() > kPcsMaxColors) {
        return refuse(error, 180, "Unable to export PCS file (too many colors).");
    }
    if (design.numberOfStitches() > kPcsMaxStitches) {
        return refuse(error, 181, "Unable to export PCS file (too many stitches).");
    }
    HMKByteWriter file(70 + kPcsRecordSize * (design.stitches().size() + threads.size()) +
                       kPcsTailSize);
    file.byte(kPcsMagic);
    std::optional<HMKHoop> hoop =
        checkHoopForWriting(design, kPfaffVendor,
                            {"Operation aborted: Design exceeds largest hoop size.",
                             "Unable to export file (unsupported hoop)."},
                            error);
    if (!hoop) {
        return std::nullopt;
    }
    file.bytes(
        {static_cast<std::uint8_t>(hoop->code()), static_cast<std::uint8_t>(kPcsMaxColors), 0x00});

    for (const HMKThread& thread : threads) {
        file.bytes({colorByte(thread.color.red()), colorByte(thread.color.green()),
                    colorByte(thread.color.blue()), 0x00});
    }
    file.repeat(0x00, 4 * (kPcsMaxColors - threads.size()));
    // The stitch records that follow, colour records not counted, as readers count them; every
    // stitch of the design has one, colour changes included.
    file.le16(static_cast<std::int32_t>(design.stitches().size()));
    std::uint8_t colorNumber = 0;
    appendColorRecord(file, colorNumber);

    // Positions are measured from the hoop's corner: the design origin is the hoop centre.
    const double halfWidth = design.hoopWidth() * 10 * 0.5;
    const double halfHeight = design.hoopHeight() * 10 * 0.5;
    float x = 0;
    float y = 0;
    for (const HMKStitch& stitch : design.stitches()) {
        if (stitch.isColorChange) {
            appendColorRecord(file, ++colorNumber);
        }
        x += stitch.deltaX;
        y += stitch.deltaY;
        file.byte(0x00);
        file.le24(encodeCoordinate((halfWidth + x) * kPcsUnitsPerDesignUnit));
        file.byte(0x00);
        // y is not negated: the format's y axis runs the same way as the design's.
        file.le24(encodeCoordinate((halfHeight + y) * kPcsUnitsPerDesignUnit));
        file.byte(stitch.isJumpStitch ? kPcsJumpRecord : kPcsStitchRecord);
    }
    file.repeat(0x00, kPcsTailSize);

    return encodedFile(file, design, [](std::vector<HMKThread>& threads) {
        // Detached from any manufacturer palette: the file holds bare RGB colours.
        for (HMKThread& thread : threads) {
            thread.changeToColor(thread.color, kNoPalette);
        }
    });
}
