// SEW reader: a colour table of Janome colour codes, then from a fixed offset a stream of
// 2-byte moves (signed dx, dy in 0.1 mm) with 0x80 escape records.
#include <cstdint>
#include <vector>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/read/escape_stream.h"
#include "formats/read/readers.h"

namespace {

constexpr std::int32_t kSewVersion = 10;
// Files whose colour table uses the extended Janome codes (above 12).
constexpr std::int32_t kSewExtendedCodesVersion = 20;
constexpr std::uint16_t kSewHighestBasicColorCode = 12;
constexpr std::uint16_t kSewMaxColors = 12;
constexpr std::size_t kSewColorCountOffset = 0;
constexpr std::size_t kSewColorTableOffset = 2;
constexpr std::size_t kSewStitchDataOffset = 7544;
constexpr const char* kSewPalette = "Janome";

}  // namespace

bool importSewDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error) {
    design.setDesignType("SEW");
    design.setDesignVersion(kSewVersion);
    HMKByteReader reader(data);
    const std::size_t length = reader.size();
    if (length <= kSewStitchDataOffset) {
        return fail(error, 90, "Unable to read SEW: file size too small to hold any stitches.");
    }
    const std::uint16_t colorCount = reader.u16le(kSewColorCountOffset).value_or(0);
    if (colorCount < 1 || colorCount > kSewMaxColors) {
        return fail(error, 91, "Unable to read SEW: Number of colors invalid.");
    }
    const auto janomeCodes = HMKDesign::janomeColorCodes();
    for (std::size_t i = 0; i < colorCount; ++i) {
        // The table always lies inside the file: it ends long before the stitch data.
        const std::uint16_t code = reader.u16le(kSewColorTableOffset + 2 * i).value_or(0);
        if (code > kSewHighestBasicColorCode) {
            design.setDesignVersion(kSewExtendedCodesVersion);
        }
        // Unlike JEF there is deliberately no fallback: an unknown code gives an empty key.
        auto found = janomeCodes.find(code);
        std::string key = found != janomeCodes.end() ? found->second : std::string();
        design.threads().push_back(HMKThread::fromPaletteKey(key, kSewPalette));
    }

    design.resetBounds();
    auto& stitches = design.stitches();
    stitches.reserve(stitches.size() + (length - kSewStitchDataOffset) / kMoveRecordSize);
    HMKStitchAppender appender(design);
    readEscapeStream(
        reader, kSewStitchDataOffset, appender,
        [](std::uint8_t code, std::int8_t dx, std::int8_t dy) -> std::optional<HMKEscapeRecord> {
            switch (code) {
                case kJanomeColorChange:
                    return HMKEscapeRecord{HMKStitch(0, 0, false, true)};
                case kJanomeJump:
                    return HMKEscapeRecord{HMKStitch(dx, dy, true, false)};
                case kJanomeEnd:
                    return std::nullopt;
                default:
                    // Any other code is a (0, 0) stitch of 2 bytes; what follows
                    // is read as a new record.
                    return HMKEscapeRecord{HMKStitch(0, 0, false, false), kMoveRecordSize};
            }
        });
    return true;
}

bool HMKDesign::importSewDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    // An unreadable file counts as empty and so fails as too small.
    return importSewDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
