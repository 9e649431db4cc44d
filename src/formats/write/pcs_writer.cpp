// Pfaff PCS: a short header with the Pfaff hoop code and a 16-slot RGB colour table, then
// 9-byte records of absolute 24-bit coordinates in 1/6 mm measured from the hoop's corner.
#include <cmath>

#include "formats/file_io.h"
#include "formats/pcs_records.h"
#include "formats/write/byte_writer.h"
#include "formats/write/hoop_check.h"
#include "model/design.h"

namespace {

constexpr std::int32_t kPcsMaxStitches = 14000;
constexpr std::size_t kPcsTailSize = 13;
// Design units (0.1 mm) to PCS units (1/6 mm).
constexpr double kPcsUnitsPerDesignUnit = 0.6;
constexpr int kPcsVersion = 20;

void appendColorRecord(HMKByteWriter& file, std::uint8_t colorNumber) {
    file.byte(colorNumber);
    file.repeat(0x00, 7);
    file.byte(kPcsColorRecord);
}

std::uint32_t encodeCoordinate(double position) {
    return encodePcsCoordinate(static_cast<std::int64_t>(std::round(position)));
}

std::uint8_t colorComponent(double fraction) {
    return static_cast<std::uint8_t>(fraction * 255);
}

}  // namespace

bool HMKDesign::exportPcsDesignToURL(const std::filesystem::path& url, HMKError* error) {
    if (threads_.size() > kPcsMaxColors) {
        return fail(error, 180, "Unable to export PCS file (too many colors).");
    }
    if (numberOfStitches() > kPcsMaxStitches) {
        return fail(error, 181, "Unable to export PCS file (too many stitches).");
    }
    HMKByteWriter file(70 + kPcsRecordSize * (stitches_.size() + threads_.size()) + kPcsTailSize);
    file.byte(kPcsMagic);
    std::optional<HMKHoop> hoop =
        checkHoopForWriting(*this, kPfaffVendor,
                            {"Operation aborted: Design exceeds largest hoop size.",
                             "Unable to export file (unsupported hoop)."},
                            error);
    if (!hoop) {
        return false;
    }
    file.bytes(
        {static_cast<std::uint8_t>(hoop->code()), static_cast<std::uint8_t>(kPcsMaxColors), 0x00});

    for (const HMKThread& thread : threads_) {
        file.bytes({colorComponent(thread.color.red()), colorComponent(thread.color.green()),
                    colorComponent(thread.color.blue()), 0x00});
    }
    file.repeat(0x00, 4 * (kPcsMaxColors - threads_.size()));
    // The count is of the stitch records the file holds, one per design stitch: colour
    // changes are stitches of the design but not of numberOfStitches, and a count short by
    // them would drop the design's last records on reading.
    file.le16(static_cast<std::int32_t>(stitches_.size()));
    std::uint8_t colorNumber = 0;
    appendColorRecord(file, colorNumber);

    // Positions are measured from the hoop's corner: the design origin is the hoop centre.
    const double halfWidth = hoopWidth() * 10 * 0.5;
    const double halfHeight = hoopHeight() * 10 * 0.5;
    float x = 0;
    float y = 0;
    for (const HMKStitch& stitch : stitches_) {
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

    if (!writeFileAtomically(url, file.data(), error)) {
        return false;
    }
    if (!useThreadFile_) {
        // Detached from any manufacturer palette: the file holds bare RGB colours.
        for (HMKThread& thread : threads_) {
            thread.changeToColor(thread.color, kNoPalette);
        }
    }
    designType_ = "PCS";
    designVersion_ = kPcsVersion;
    return true;
}
