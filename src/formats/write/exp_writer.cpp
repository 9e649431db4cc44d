// Melco EXP: a bare stream of 2-byte moves with escape codes; no header, no end marker, no
// colours and no hoop.
#include "formats/escape_records.h"
#include "formats/write/byte_writer.h"
#include "formats/write/writer_support.h"
#include "formats/write/writers.h"
#include "model/design.h"

namespace {

// The longest output per stitch: colour change, jump and move.
constexpr std::size_t kExpMaxBytesPerStitch = 8;

}  // namespace

std::optional<HMKEncodedDesign> encodeExpDesign(HMKDesign& design, HMKError*) {
    HMKByteWriter file(kExpMaxBytesPerStitch * design.stitches().size());
    HMKCarriedRounding roundX;
    HMKCarriedRounding roundY;
    for (const HMKStitch& stitch : design.stitches()) {
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
    // The file carries no colours.
    return encodedFile(file, design, replaceByPlaceholders);
}
