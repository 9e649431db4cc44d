// Rules that several writers share: the finished file with its threads, the carried rounding
// of relative moves, colour bytes, the conversion of threads into a vendor's palette and code
// table, the placeholder threads of formats without colours, and the one-byte label texts.
// Used by the writers in formats/write/.
#pragma once

#include <cmath>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "formats/write/byte_writer.h"
#include "formats/write/writers.h"
#include "model/design.h"
#include "model/thread.h"

// --- The finished file ----------------------------------------------------------------------
// The file's bytes and, for a design that takes the threads the file holds after the write
// (one whose threads no side file keeps), how its threads become those.
inline HMKEncodedDesign encodedFile(HMKByteWriter& file, const HMKDesign& design,
                                    std::function<void(std::vector<HMKThread>&)> asWritten) {
    HMKEncodedDesign encoded{file.take(), {}};
    if (!design.useThreadFile()) {
        encoded.threadsAsWritten = std::move(asWritten);
    }
    return encoded;
}

// After a write the design takes these threads, in place of its own.
inline std::function<void(std::vector<HMKThread>&)> replacedBy(std::vector<HMKThread> threads) {
    return [threads = std::move(threads)](std::vector<HMKThread>& own) mutable {
        own = std::move(threads);
    };
}

// --- Relative moves ----------------------------------------------------------------------
// Relative formats store whole units: each move is floored after adding what earlier moves
// lost, and the loss is carried on, so the needle never drifts from the design.
class HMKCarriedRounding {
public:
    std::int32_t next(double delta) {
        double whole = std::floor(delta + carry_);
        carry_ += delta - whole;
        return static_cast<std::int32_t>(whole);
    }
    // A part of the move that the record could not hold is made up by the following moves.
    void carryOver(double units) { carry_ += units; }
    double carry() const { return carry_; }

private:
    double carry_ = 0;
};

// --- Colours -----------------------------------------------------------------------------
// A colour component as a byte (component x 255, truncated), clamped to 0..255 whatever the
// component holds.
inline std::uint8_t colorByte(double component) {
    const double scaled = component * 255;
    return scaled >= 255 ? 255 : scaled > 0 ? static_cast<std::uint8_t>(scaled) : 0;
}

// --- Threads -----------------------------------------------------------------------------
// Threads as a vendor's file carries them: each converted to the vendor's palette (a copy;
// the caller decides whether the design takes it) and the code found for its key.
struct HMKVendorThreads {
    std::vector<HMKThread> converted;
    std::vector<std::int32_t> codes;
};

// Converts every thread not already of palette into its nearest colour there and takes the
// lowest code whose key is the converted thread's key, or fallbackCode when none matches.
HMKVendorThreads convertThreadsToVendor(const std::vector<HMKThread>& threads,
                                        const std::string& palette,
                                        const std::map<std::int32_t, std::string>& codeTable,
                                        std::int32_t fallbackCode);

// Replaces every thread by the one a colourless format stands for: keys "1" to "20",
// repeating, of "Undefined".
void replaceByPlaceholders(std::vector<HMKThread>& threads);

// --- Time of writing ---------------------------------------------------------------------
// The calendar time a header's date records. By default it is now in the user's time zone,
// or, when SOURCE_DATE_EPOCH holds seconds since 1970, that moment in UTC, so that the same
// design always converts to the same bytes. Tests set a fixed clock; an empty one restores the
// default.
using HMKWriterClock = std::function<std::tm()>;
void setWriterClock(HMKWriterClock clock);
std::tm timeOfWriting();

// --- Label texts -------------------------------------------------------------------------
// The design name without its last extension ("Rose.dst" -> "Rose").
std::string nameWithoutExtension(const std::string& designName);
// UTF-8 text as one byte per character: ASCII keeps characters below 0x80, ISO Latin-1 those
// below 0x100; every other character becomes '?'.
std::string toAscii(std::string_view utf8);
std::string toLatin1(std::string_view utf8);
// Text padded on the right with spaces and cut to exactly width characters.
std::string padOrCut(std::string text, std::size_t width);
