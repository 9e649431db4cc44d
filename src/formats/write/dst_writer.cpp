// Tajima DST: a 512-byte text header, one 3-byte balanced-ternary record per stitch and a
// 4-byte trailer. No hoop check; the bounds must enclose the origin.
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "formats/dst_records.h"
#include "formats/write/byte_writer.h"
#include "formats/write/writer_support.h"
#include "formats/write/writers.h"
#include "model/design.h"

namespace {

constexpr std::size_t kDstLabelWidth = 16;
constexpr std::uint8_t kDstCarriageReturn = 0x0D;
constexpr std::uint8_t kDstPadding = ' ';
constexpr std::size_t kDstAxFieldOffset = 77;
constexpr std::size_t kDstAyFieldOffset = 87;
constexpr std::size_t kDstSumFieldWidth = 6;
constexpr int kDstMaxStitchesAndThreads = 9999999;
constexpr int kDstMaxColorChanges = 1000;
constexpr int kDstMaxExtent = 99999;

// A number right-aligned in a space-padded field.
std::string rightAligned(long long value, int width) {
    char field[32];
    std::snprintf(field, sizeof field, "%*lld", width, value);
    return field;
}

// Sign first, then spaces, then the digits: "-   35".
std::string signedField(long long value) {
    return (value < 0 ? "-" : "+") +
           rightAligned(std::llabs(value), static_cast<int>(kDstSumFieldWidth) - 1);
}

void appendLine(HMKByteWriter& header, std::string_view tag, const std::string& value) {
    header.text(tag);
    header.text(value);
    header.byte(kDstCarriageReturn);
}

bool boundsEncloseOrigin(const HMKDesign& design) {
    return design.xMax() >= 0 && design.xMin() <= 0 && design.yMax() >= 0 && design.yMin() <= 0 &&
           design.xMax() <= kDstMaxExtent && design.xMin() >= -kDstMaxExtent &&
           design.yMax() <= kDstMaxExtent && design.yMin() >= -kDstMaxExtent;
}

}  // namespace

std::optional<HMKEncodedDesign> encodeDstDesign(HMKDesign& design, HMKError* error) {
    const long long stitchCount = design.numberOfStitches();
    const long long threadCount = static_cast<long long>(design.numberOfThreads());
    if (stitchCount + threadCount >= kDstMaxStitchesAndThreads) {
        return refuse(error, 133, "Unable to export DST file (too many stitches).");
    }
    if (threadCount - 1 >= kDstMaxColorChanges) {
        return refuse(error, 134, "Unable to export DST file (too many color changes).");
    }
    if (!boundsEncloseOrigin(design)) {
        return refuse(error, 130, "Unable to export DST file (invalid bounderies).");
    }

    HMKByteWriter file(kDstHeaderSize + kDstRecordSize * design.stitches().size() + 4);
    appendLine(file,
               "LA:", padOrCut(toAscii(nameWithoutExtension(design.designName())), kDstLabelWidth));
    appendLine(file, "ST:", rightAligned(stitchCount + threadCount + 1, 7));
    appendLine(file, "CO:", rightAligned(threadCount - 1, 3));
    // Truncation toward zero, as the header has always held whole units.
    appendLine(file, "+X:", rightAligned(static_cast<long long>(design.xMax()), 5));
    appendLine(file, "-X:", rightAligned(std::llabs(static_cast<long long>(design.xMin())), 5));
    appendLine(file, "+Y:", rightAligned(static_cast<long long>(design.yMax()), 5));
    appendLine(file, "-Y:", rightAligned(std::llabs(static_cast<long long>(design.yMin())), 5));
    appendLine(file, "AX:", std::string(kDstSumFieldWidth, ' '));  // filled in after the records
    appendLine(file, "AY:", std::string(kDstSumFieldWidth, ' '));
    appendLine(file, "MX:", "+    0");
    appendLine(file, "MY:", "+    0");
    appendLine(file, "PD:", "******");
    file.byte(kDstEndOfText);
    file.repeat(kDstPadding, kDstHeaderSize - file.size());

    HMKCarriedRounding roundX;
    HMKCarriedRounding roundY;
    double sumX = 0;
    double sumY = 0;
    for (const HMKStitch& stitch : design.stitches()) {
        std::array<std::uint8_t, kDstRecordSize> record{0, 0, kDstStitchKind};
        if (stitch.isColorChange) {
            record[2] = kDstColorChangeKind;
        } else if (stitch.isJumpStitch) {
            record[2] = kDstJumpKind;
        }
        // The writer never splits a move: what a record cannot hold is carried on.
        roundX.carryOver(encodeDstAxis(roundX.next(stitch.deltaX), false, record));
        roundY.carryOver(encodeDstAxis(roundY.next(stitch.deltaY), true, record));
        sumX += stitch.deltaX;
        sumY += stitch.deltaY;
        file.bytes({record[0], record[1], record[2]});
    }
    file.bytes({0x00, 0x00, kDstEndRecord, kDstEndOfText});

    if (std::fabs(sumX) > kDstMaxExtent || std::fabs(sumY) > kDstMaxExtent) {
        return refuse(error, 132, "Unable to export DST file (AX/AY values too large).");
    }
    file.patchText(kDstAxFieldOffset, signedField(static_cast<long long>(sumX)));
    file.patchText(kDstAyFieldOffset, signedField(static_cast<long long>(sumY)));

    // A DST file holds no colours: the design in memory shows what it does hold.
    return encodedFile(file, design, replaceByPlaceholders);
}
