// Janome JEF and JPX: a little-endian header with the stitch-data offset, version, colour
// count, hoop code, colour codes and tensions, then one stitch encoding shared by both. The
// formats differ only in where the header fields lie and in how colour blocks are checked.
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "formats/byte_reader.h"
#include "formats/file_io.h"
#include "formats/janome_records.h"
#include "formats/read/escape_stream.h"
#include "formats/read/readers.h"
#include "model/design.h"

namespace {

// --- JEF header ------------------------------------------------------------------------------
// Files of 51 bytes or fewer carry no meta data.
constexpr std::size_t kJefMinimumFileSize = 52;
// Deliberate: the length check asks for 120 + 4n bytes, which covers the colour codes but not
// the whole tension table; tensions missing beyond it fail with the same error.
constexpr std::int64_t kJefColorTableCheckBase = 120;
constexpr std::int64_t kJefColorTableCheckPerColor = 4;

// --- JPX header ------------------------------------------------------------------------------
// Files of 119 bytes or fewer carry no meta data.
constexpr std::size_t kJpxMinimumFileSize = 120;
constexpr std::int64_t kJpxColorTableCheckBase = 60;
constexpr std::int64_t kJpxColorTableCheckPerColor = 8;

constexpr const char* kJanomeVendor = "Janome";
constexpr const char* kJanomePalette = "Janome";
constexpr const char* kJanomeFallbackKey = "220";
constexpr std::int32_t kJefPlusVersionFactor = 10;

// The colour of placeholder threads for blocks the header did not describe.
const HMKColor kUndescribedBlockColor(0.5, 0.6, 0.6);

struct JanomeLayout {
    std::size_t colorCountOffset;
    std::size_t hoopCodeOffset;
    std::size_t colorTableOffset;
    std::int64_t colorTableCheckBase;
    std::int64_t colorTableCheckPerColor;
    int noColorCodesCode;
    std::string_view noColorCodesText;
    int invalidOffsetCode;
    std::string_view invalidOffsetText;
};

constexpr JanomeLayout kJefLayout = {
    kJefColorCountOffset,
    kJefHoopCodeOffset,
    kJefColorTableOffset,
    kJefColorTableCheckBase,
    kJefColorTableCheckPerColor,
    21,
    "Unable to import JEF file (no color codes).",
    23,
    "Unable to import JEF file (invalid offset).",
};

constexpr JanomeLayout kJpxLayout = {
    kJpxColorCountOffset,
    kJpxHoopCodeOffset,
    kJpxColorTableOffset,
    kJpxColorTableCheckBase,
    kJpxColorTableCheckPerColor,
    211,
    "Unable to import JPX file (no color codes).",
    212,
    "Unable to import JPX file (invalid offset).",
};

// The "Janome" thread of a colour code; codes missing from the table become "220". Making a
// thread loads its palette, so each code is looked up once per file.
class JanomeThreads {
public:
    const HMKThread& threadForCode(std::int32_t code) {
        auto known = threads_.find(code);
        if (known != threads_.end()) {
            return known->second;
        }
        const auto key = codes_.find(code);
        HMKThread thread =
            HMKThread::fromPaletteKey(key == codes_.end() ? "" : key->second, kJanomePalette);
        if (thread.paletteName.empty()) {
            thread = HMKThread::fromPaletteKey(kJanomeFallbackKey, kJanomePalette);
        }
        return threads_.emplace(code, std::move(thread)).first->second;
    }

private:
    std::map<std::int32_t, std::string> codes_ = HMKDesign::janomeColorCodes();
    std::map<std::int32_t, HMKThread> threads_;
};

// Reads the header after the minimum-length check: hoop, colour table and tensions. Fills
// *stitchOffset with where the stitch data begins.
bool readJanomeHeader(HMKDesign& design, const HMKByteReader& reader, const JanomeLayout& layout,
                      std::size_t* stitchOffset, HMKError* error) {
    const std::int32_t colorCount = reader.s32le(layout.colorCountOffset).value_or(0);
    design.setHoopFromVendor(kJanomeVendor, reader.s32le(layout.hoopCodeOffset).value_or(-1));

    const std::int64_t colorTableEnd =
        layout.colorTableCheckBase + layout.colorTableCheckPerColor * std::int64_t{colorCount};
    if (static_cast<std::int64_t>(reader.size()) < colorTableEnd) {
        return fail(error, layout.noColorCodesCode, layout.noColorCodesText);
    }
    const std::int32_t offset = reader.s32le(kJanomeStitchOffsetField).value_or(-1);
    if (offset < 0 || static_cast<std::int64_t>(reader.size()) < std::int64_t{offset} + 4) {
        return fail(error, layout.invalidOffsetCode, layout.invalidOffsetText);
    }
    *stitchOffset = static_cast<std::size_t>(offset);

    // The length check bounds the colour count by the file size; a negative count lists none.
    const std::size_t count = colorCount > 0 ? static_cast<std::size_t>(colorCount) : 0;
    JanomeThreads janomeThreads;
    auto& threads = design.threads();
    const std::size_t firstThread = threads.size();
    for (std::size_t block = 0; block < count; ++block) {
        const auto code = reader.s32le(layout.colorTableOffset + kJanomeValueSize * block);
        if (!code) {
            return fail(error, layout.noColorCodesCode, layout.noColorCodesText);
        }
        threads.push_back(janomeThreads.threadForCode(*code));
    }
    const std::size_t tensionTable = layout.colorTableOffset + kJanomeValueSize * count;
    for (std::size_t block = 0; block < count; ++block) {
        const auto tension = reader.s32le(tensionTable + kJanomeValueSize * block);
        if (!tension) {
            return fail(error, layout.noColorCodesCode, layout.noColorCodesText);
        }
        threads[firstThread + block].tension = *tension;
    }
    return true;
}

// Decodes the stitch data from offset and returns the number of colour changes.
std::size_t readJanomeStitches(HMKDesign& design, const HMKByteReader& reader, std::size_t offset) {
    design.resetBounds();
    auto& stitches = design.stitches();
    const std::size_t size = reader.size();
    if (offset < size) {
        stitches.reserve(stitches.size() + (size - offset) / kMoveRecordSize);
    }
    HMKStitchAppender appender(design);
    std::size_t colorChanges = 0;
    readEscapeStream(
        reader, offset, appender,
        [&](std::uint8_t code, std::int8_t dx, std::int8_t dy) -> std::optional<HMKEscapeRecord> {
            switch (code) {
                case kJanomeEnd:
                    return std::nullopt;
                case kJanomeColorChange:
                    ++colorChanges;
                    return HMKEscapeRecord{HMKStitch(dx, dy, false, true)};
                case kJanomeJump:
                case kJanomeMove:
                    return HMKEscapeRecord{HMKStitch(dx, dy, true, false)};
                default:
                    // Deliberate: unknown control codes become zero-length
                    // stitches.
                    return HMKEscapeRecord{HMKStitch(0, 0, false, false), kMoveRecordSize};
            }
        });
    return colorChanges;
}

// Blocks the header did not describe get copies of the last thread in a placeholder colour;
// false when the header listed more colours than the stitches use, or there is nothing to copy.
bool reconcileJefThreads(HMKDesign& design, std::size_t colorChanges) {
    auto& threads = design.threads();
    const std::size_t needed = colorChanges + 1;
    if (threads.size() < needed) {
        if (threads.empty()) {
            return false;
        }
        // Every copy is made the same way from the same thread in the same palette (copies
        // keep the shared palette), so one recoloured copy serves for all of them.
        HMKThread placeholder = threads.back();
        placeholder.changeToColor(kUndescribedBlockColor, design.designPalette());
        threads.resize(needed, placeholder);
    }
    return threads.size() == needed;
}

// JPX headers do not always list one colour per block, and such files are read all the same.
// Left as they are, their threads would not match the blocks and no writer could save the
// design, so they are brought into step: blocks the header did not describe get placeholders
// as in JEF, and colours no block reaches are dropped. A header without colours keeps none.
void reconcileJpxThreads(HMKDesign& design, std::size_t colorChanges) {
    auto& threads = design.threads();
    if (!reconcileJefThreads(design, colorChanges) && threads.size() > colorChanges + 1) {
        threads.erase(threads.begin() + static_cast<std::ptrdiff_t>(colorChanges + 1),
                      threads.end());
    }
}

}  // namespace

bool importJefDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             std::string_view extension, HMKError* error) {
    const HMKByteReader reader(bytes);
    if (reader.size() < kJefMinimumFileSize) {
        return fail(error, 20, "Unable to import JEF file (no meta data).");
    }
    const std::int32_t version = reader.s8(kJanomeVersionOffset).value_or(0);
    if (extension == "jef") {
        design.setDesignType("JEF");
        design.setDesignVersion(version);
    } else if (extension == "jef+") {
        design.setDesignType("JEF+");
        design.setDesignVersion(kJefPlusVersionFactor * version);
    } else {
        design.setDesignType("?");
        design.setDesignVersion(0);
    }
    std::size_t stitchOffset = 0;
    if (!readJanomeHeader(design, reader, kJefLayout, &stitchOffset, error)) {
        return false;
    }
    const std::size_t colorChanges = readJanomeStitches(design, reader, stitchOffset);
    if (!reconcileJefThreads(design, colorChanges)) {
        return fail(error, 24, "Unable to import JEF file (color changes).");
    }
    return true;
}

bool importJpxDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error) {
    design.setDesignType("JPX");
    const HMKByteReader reader(bytes);
    if (reader.size() < kJpxMinimumFileSize) {
        return fail(error, 210, "Unable to import JPX file (no meta data).");
    }
    design.setDesignVersion(kJefPlusVersionFactor * reader.s8(kJanomeVersionOffset).value_or(0));
    std::size_t stitchOffset = 0;
    if (!readJanomeHeader(design, reader, kJpxLayout, &stitchOffset, error)) {
        return false;
    }
    // Unlike JEF, a mismatch between colour blocks and threads is no reason to refuse the file.
    reconcileJpxThreads(design, readJanomeStitches(design, reader, stitchOffset));
    return true;
}

bool HMKDesign::importJefDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    return importJefDesignFromData(*this, bytesOrNone(readWholeFile(url)), lowercaseExtension(url),
                                   error);
}

bool HMKDesign::importJpxDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    return importJpxDesignFromData(*this, bytesOrNone(readWholeFile(url)), error);
}
