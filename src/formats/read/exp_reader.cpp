// EXP reader: a headerless stream of 2-byte moves (signed dx, dy in 0.1 mm) with 4-byte
// escape records for colour changes and jumps; the layout the EXP writer produces.
#include <cstdint>
#include <vector>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/read/escape_stream.h"
#include "formats/read/readers.h"

namespace {

constexpr std::int32_t kExpVersion = 10;

}  // namespace

bool importExpDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    design.setDesignType("EXP");
    design.setDesignVersion(kExpVersion);
    HMKByteReader reader(data);
    const std::size_t length = reader.size();
    if (length % 2 != 0) {
        return fail(error, 100, "Unable to read EXP: file contains uneven number of bytes.");
    }
    design.resetBounds();
    HMKPlaceholderThreads placeholders;
    placeholders.appendTo(design);

    auto& stitches = design.stitches();
    stitches.reserve(stitches.size() + length / kMoveRecordSize);
    HMKStitchAppender appender(design);
    readEscapeStream(
        reader, 0, appender,
        [&](std::uint8_t code, std::int8_t dx, std::int8_t dy) -> std::optional<HMKEscapeRecord> {
            if (code == kExpEscapedZeroStitch) {
                return HMKEscapeRecord{HMKStitch(0, 0, false, false)};
            }
            if (isExpColorChangeCode(code)) {
                placeholders.appendTo(design);
                return HMKEscapeRecord{HMKStitch(0, 0, false, true)};
            }
            return HMKEscapeRecord{HMKStitch(dx, dy, true, false)};
        });
    return true;
}

bool HMKDesign::importExpDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty: it then holds no stitches, which the caller rejects.
    return importExpDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
