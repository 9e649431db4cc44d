// Melco EXP: a bare stream of 2-byte moves with escape codes; no header, no end marker, no
// colours and no hoop.
#include "formats/escape_records.h"
#include "formats/file_io.h"
#include "formats/write/byte_writer.h"
#include "formats/write/writer_support.h"
#include "model/design.h"

namespace {

// The longest output per stitch: colour change, jump and move.
constexpr std::size_t kExpMaxBytesPerStitch = 8;
constexpr int kExpVersion = 10;

}  // namespace

bool HMKDesign::exportExpDesignToURL(const std::filesystem::path& url, HMKError* error) {
    HMKByteWriter file(kExpMaxBytesPerStitch * stitches_.size());
    HMKCarriedRounding roundX;
    HMKCarriedRounding roundY;
    for (const HMKStitch& stitch : stitches_) {
        if (stitch.isColorChange) {
            file.bytes({kEscapeByte, kExpColorChange, 0x00, 0x00});
        }
        if (stitch.isJumpStitch) {
            file.bytes({kEscapeByte, kExpJump});
        }
        // Moves are kept within a signed byte by optimizeJumpsFor("EXP"); the low 8 bits of
        // the two's complement are written without clamping. y is stored as held.
        file.bytes({static_cast<std::uint8_t>(roundX.next(stitch.deltaX)),
                    static_cast<std::uint8_t>(roundY.next(stitch.deltaY))});
    }
    if (!writeFileAtomically(url, file.data(), error)) {
        return false;
    }
    if (!useThreadFile_) {
        threads_ = undefinedPlaceholderThreads(threads_.size());
    }
    designType_ = "EXP";
    designVersion_ = kExpVersion;
    designHoop_.reset();
    return true;
}
