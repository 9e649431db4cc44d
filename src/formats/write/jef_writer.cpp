// Janome JEF: a 116-byte header with date, hoop code and extents, a code and a tension per
// thread, then 2-byte moves with escape records. Runs the Janome hoop check.
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "formats/escape_records.h"
#include "formats/janome_records.h"
#include "formats/write/byte_writer.h"
#include "formats/write/hoop_check.h"
#include "formats/write/writer_support.h"
#include "formats/write/writers.h"
#include "model/design.h"

namespace {

// The header ends where the colour table begins.
constexpr std::size_t kJefHeaderSize = kJefColorTableOffset;
// Read back as the file's version.
constexpr std::int32_t kJefHeaderConstant = 10;
// The most bytes one stitch can take: colour change, zero move, jump and move.
constexpr std::size_t kJefMaxBytesPerStitch = 8;
constexpr std::int32_t kJefUnknownThreadCode = 23;

// "yyyyMMddHHmmss", kept at its 14 characters whatever year a clock gives.
std::string dateTimeText(const std::tm& calendar) {
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &calendar);
    return padOrCut(std::string(text, length), 14);
}

std::int32_t absoluteTruncated(float value) {
    return std::abs(static_cast<std::int32_t>(value));
}

}  // namespace

std::optional<HMKEncodedDesign> encodeJefDesign(HMKDesign& design, HMKError* error) {
    const std::vector<HMKThread>& threads = design.threads();
    const auto threadCount = static_cast<std::int32_t>(threads.size());
    HMKByteWriter file(kJefHeaderSize + 8 * threads.size() +
                       kJefMaxBytesPerStitch * design.stitches().size() + 2);
    file.le32(static_cast<std::int32_t>(kJefHeaderSize) + 8 * threadCount);
    file.le32(kJefHeaderConstant);
    file.text(dateTimeText(timeOfWriting()));
    file.bytes({0x00, 0x00});
    file.le32(threadCount);
    file.le32(0);  // record count, filled in after the stitches

    std::optional<HMKHoop> hoop = checkHoopForWriting(
        design, kJanomeVendor,
        {"Design exceeds the current hoop size.", "Unable to export JEF file (unsupported hoop)."},
        error);
    if (!hoop) {
        return std::nullopt;
    }
    file.le32(hoop->code());
    file.le32(absoluteTruncated(design.xMin()));
    file.le32(absoluteTruncated(design.yMin()));
    file.le32(absoluteTruncated(design.xMax()));
    file.le32(absoluteTruncated(design.yMax()));
    file.repeat(0x00, 4 * kJefReservedIntegers);

    HMKVendorThreads janome = convertThreadsToVendor(
        threads, std::string(kJanomeVendor), HMKDesign::janomeColorCodes(), kJefUnknownThreadCode);
    for (std::int32_t code : janome.codes) {
        file.le32(code);
    }
    for (const HMKThread& thread : threads) {
        file.le32(thread.tension);
    }

    std::int32_t records = 0;
    HMKCarriedRounding roundX;
    HMKCarriedRounding roundY;
    for (const HMKStitch& stitch : design.stitches()) {
        if (stitch.isColorChange) {
            file.bytes({kEscapeByte, kJanomeColorChange});
            ++records;
            if (stitch.isJumpStitch) {
                file.bytes({0x00, 0x00});  // the colour change with a zero move; the jump follows
                ++records;
            }
        }
        if (stitch.isJumpStitch) {
            file.bytes({kEscapeByte, kJanomeJump});
            ++records;
        }
        // Moves are kept within a signed byte by optimizeJumpsFor("JEF"); larger ones are
        // written modulo 256, never split or clamped. y is stored as held.
        file.bytes({static_cast<std::uint8_t>(roundX.next(stitch.deltaX)),
                    static_cast<std::uint8_t>(roundY.next(stitch.deltaY))});
        ++records;
    }
    file.bytes({kEscapeByte, kJanomeEnd});
    file.patchLe32(kJefRecordCountOffset, records + 1);

    // The design shows the colours the file carries.
    return encodedFile(file, design, replacedBy(std::move(janome.converted)));
}
