// Brother PES version 1 and PEC: the PES design and stitch-segment blocks with absolute
// coordinates and the PEC section (label, colour list, graphics header, relative stitch
// stream), followed by the thumbnails of pec_thumbnails.h.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "formats/pec_records.h"
#include "formats/write/byte_writer.h"
#include "formats/write/pec_thumbnails.h"
#include "formats/write/writer_support.h"
#include "formats/write/writers.h"
#include "model/design.h"
#include "model/stitch_walk.h"

namespace {

// --- PES ---------------------------------------------------------------------------------
constexpr std::string_view kPesMagic = "#PES0001";
constexpr std::size_t kPesPecOffsetField = 8;
// Offset 11 is the fourth byte of the PEC offset, which is always 0.
constexpr std::array<std::uint8_t, 13> kPesHeaderTail{0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00,
                                                      0xFF, 0xFF, 0x00, 0x00, 0x07, 0x00};
constexpr std::string_view kPesDesignBlock = "CEmbOne";
constexpr std::string_view kPesSegmentBlock = "CSewSeg";
constexpr std::array<std::uint8_t, 16> kPesDesignBlockTail{
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x07, 0x00};
constexpr float kPesCoordinateOrigin = 1000;
// Deliberate: the block separator's first two bytes are 03 08 in this order.
constexpr std::array<std::uint8_t, 2> kPesBlockSeparator{0x03, 0x08};
constexpr std::int32_t kPesStitchBlock = 0;
constexpr std::int32_t kPesJumpBlock = 1;
constexpr std::int32_t kPesMaxWidth = 1300;
constexpr std::int32_t kPesMaxHeight = 1800;
constexpr float kPesHalfFieldWidth = 650;
constexpr float kPesHalfFieldHeight = 900;
constexpr std::size_t kPesMaxThreads = 64;
constexpr std::int32_t kPesMaxStitches = 30000;

// --- PEC ---------------------------------------------------------------------------------
constexpr std::string_view kPecMagic = "#PEC0001";
constexpr std::array<std::uint8_t, 4> kPecLabelMarker{0xFF, 0x00, 0x06, 0x26};
constexpr std::array<std::uint8_t, 3> kPecGraphicsMarker{0x31, 0xFF, 0xF0};
constexpr std::array<std::uint8_t, 4> kPecGraphicsSize{0xE0, 0x01, 0xB0, 0x01};
constexpr std::int32_t kPecUnknownThreadCode = 16;
const std::string kBrotherPalette = "Brother";

std::int32_t roundedHalfAwayFromZero(double value) {
    return static_cast<std::int32_t>(std::round(value));
}

void appendPecLong(HMKByteWriter& out, std::int32_t value) {
    const auto bytes = encodePecLong(value);
    out.bytes({bytes[0], bytes[1]});
}

void appendPecStitches(HMKByteWriter& out, const std::vector<HMKStitch>& stitches) {
    HMKCarriedRounding roundX;
    HMKCarriedRounding roundY;
    std::int32_t colorChanges = 1;
    for (const HMKStitch& stitch : stitches) {
        if (stitch.isColorChange) {
            // The third byte alternates 2, 1, 2, ...; the colour change's own move is not written.
            out.bytes({kPecCommand, kPecColorChange,
                       static_cast<std::uint8_t>(colorChanges % 2 == 1 ? 2 : 1)});
            ++colorChanges;
            continue;
        }
        std::int32_t x = roundX.next(stitch.deltaX);
        std::int32_t y = roundY.next(-static_cast<double>(stitch.deltaY));  // PEC y grows down
        if (stitch.isJumpStitch) {
            appendPecLong(out, x);
            appendPecLong(out, y);
        } else {
            // Stitches are kept within -64 to 63 by optimizeJumpsFor("PES"); not range-checked.
            out.bytes({encodePecShort(x), encodePecShort(y)});
        }
    }
    out.byte(kPecEndOfStitches);
}

void appendPecSection(HMKByteWriter& out, const HMKDesign& design,
                      const std::vector<std::int32_t>& codes) {
    const std::size_t start = out.size();
    out.text(kPecSectionTag);
    out.text(padOrCut(toLatin1(nameWithoutExtension(design.designName())), kPecLabelNameWidth));
    out.byte(0x0D);
    out.repeat(' ', 12);
    out.bytes({kPecLabelMarker[0], kPecLabelMarker[1], kPecLabelMarker[2], kPecLabelMarker[3]});
    out.repeat(' ', 12);
    out.byte(static_cast<std::uint8_t>(codes.size() - 1));
    // The colour list must end before the graphics header; PES allows at most 64 threads.
    std::size_t listed = std::min(codes.size(), kPecHeaderSize - kPecColorListOffset);
    for (std::size_t i = 0; i < listed; ++i) {
        out.byte(static_cast<std::uint8_t>(codes[i]));
    }
    out.repeat(' ', start + kPecHeaderSize - out.size());

    out.bytes({0x00, 0x00});
    const std::size_t lengthField = out.size();
    out.le24(0);  // filled in after the stitches
    out.bytes({kPecGraphicsMarker[0], kPecGraphicsMarker[1], kPecGraphicsMarker[2]});
    out.le16(design.designWidth());
    out.le16(design.designHeight());
    out.bytes({kPecGraphicsSize[0], kPecGraphicsSize[1], kPecGraphicsSize[2], kPecGraphicsSize[3]});
    appendPecLong(out, design.designWidth() / 2);
    appendPecLong(out, design.designHeight() / 2);
    appendPecStitches(out, design.stitches());
    out.patchLe24(lengthField, static_cast<std::uint32_t>(out.size() - start - kPecHeaderSize));
}

void appendPesStitchBlocks(HMKByteWriter& out, const std::vector<HMKStitch>& stitches,
                           const std::vector<std::int32_t>& codes) {
    std::size_t thread = 0;
    std::size_t countField = 0;
    std::int32_t count = 0;
    auto code = [&] { return codes.empty() ? 0 : codes[std::min(thread, codes.size() - 1)]; };
    auto openBlock = [&](std::int32_t type) {
        out.bytes({kPesBlockSeparator[0], kPesBlockSeparator[1]});
        out.le16(type);
        out.le16(code());
        countField = out.size();
        out.le16(0);
        count = 0;
    };
    auto closeBlock = [&] { out.patchLe16(countField, count); };
    auto point = [&](const HMKPosition<double>& position) {
        out.le16(roundedHalfAwayFromZero(position.x));
        out.le16(roundedHalfAwayFromZero(-position.y));  // PES y grows down
        ++count;
    };

    // The first block has no separator: its type follows the block name directly.
    out.le16(kPesStitchBlock);
    out.le16(code());
    countField = out.size();
    out.le16(0);
    bool leadingJumps = true;
    walkStitches<double>(stitches,
                         [&](std::size_t, const HMKStitch& stitch, const HMKPosition<double>& from,
                             const HMKPosition<double>& to) {
                             // Leading jumps only move the start; they produce no point.
                             if (leadingJumps && stitch.isJumpStitch) {
                                 return;
                             }
                             leadingJumps = false;
                             if (stitch.isColorChange) {
                                 closeBlock();
                                 ++thread;
                                 openBlock(kPesJumpBlock);
                                 point(from);
                                 point(to);
                             }
                             if (stitch.isColorChange || stitch.isJumpStitch) {
                                 // A block opened by a jump or colour change starts with the same
                                 // point twice.
                                 closeBlock();
                                 openBlock(kPesStitchBlock);
                                 point(to);
                             }
                             point(to);
                         });
    closeBlock();
}

void appendPesColorTable(HMKByteWriter& out, const std::vector<std::int32_t>& codes) {
    out.byte(static_cast<std::uint8_t>(codes.size()));
    out.bytes({0x00, 0x00, 0x00});
    for (std::size_t i = 0; i < codes.size(); ++i) {
        bool last = i + 1 == codes.size();
        out.bytes({static_cast<std::uint8_t>(codes[i]), 0x00,
                   static_cast<std::uint8_t>(last ? 0 : 3 * (i + 1)), 0x00});
    }
    out.bytes({0x00, 0x00});
}

void appendPesDesignBlock(HMKByteWriter& out, const HMKDesign& design) {
    out.text(kPesDesignBlock);
    // Deliberate: all four extents are derived from xMin and yMin, never xMax or yMax.
    for (int pair = 0; pair < 2; ++pair) {
        out.le16(static_cast<std::int32_t>(design.xMin() + kPesCoordinateOrigin));
        out.le16(static_cast<std::int32_t>(design.yMin() + kPesCoordinateOrigin));
        out.le16(static_cast<std::int32_t>(kPesCoordinateOrigin - design.xMin()));
        out.le16(static_cast<std::int32_t>(kPesCoordinateOrigin - design.yMin()));
    }
    for (float value : {1.0f, 0.0f, 0.0f, 1.0f, kPesCoordinateOrigin, kPesCoordinateOrigin}) {
        out.leFloat(value);
    }
    out.le16(1);
    out.le16(static_cast<std::int32_t>(design.xMin()));
    out.le16(static_cast<std::int32_t>(-design.yMin()));
    out.le16(design.designWidth());
    out.le16(design.designHeight());
    for (std::uint8_t byte : kPesDesignBlockTail) {
        out.byte(byte);
    }
}

// Swaps the design's threads with others for as long as the scope lasts.
class ThreadsSwap {
public:
    ThreadsSwap(std::vector<HMKThread>& threads, std::vector<HMKThread>& replacement, bool active)
        : threads_(threads), replacement_(replacement), active_(active) {
        if (active_)
            threads_.swap(replacement_);
    }
    ~ThreadsSwap() {
        if (active_)
            threads_.swap(replacement_);
    }
    ThreadsSwap(const ThreadsSwap&) = delete;
    ThreadsSwap& operator=(const ThreadsSwap&) = delete;

private:
    std::vector<HMKThread>& threads_;
    std::vector<HMKThread>& replacement_;
    bool active_;
};

HMKVendorThreads brotherThreads(const std::vector<HMKThread>& threads) {
    return convertThreadsToVendor(threads, kBrotherPalette, HMKDesign::brotherColorCodes(),
                                  kPecUnknownThreadCode);
}

// The thumbnails in the colours the design will hold after the write.
void appendThumbnails(HMKByteWriter& out, HMKDesign& design, std::vector<HMKThread>& converted,
                      bool withThreadThumbnails) {
    ThreadsSwap shown(design.threads(), converted, !design.useThreadFile());
    for (std::uint8_t byte : pecThumbnails(design, withThreadThumbnails)) {
        out.byte(byte);
    }
}

}  // namespace

std::vector<std::uint8_t> HMKDesign::exportPecSegmentToData() {
    HMKVendorThreads brother = brotherThreads(threads_);
    if (!useThreadFile_) {
        threads_ = brother.converted;
    }
    HMKByteWriter out(kPecHeaderSize + 32 + 4 * stitches_.size());
    appendPecSection(out, *this, brother.codes);
    return out.take();
}

std::optional<HMKEncodedDesign> encodePecDesign(HMKDesign& design, HMKError*) {
    HMKVendorThreads brother = brotherThreads(design.threads());
    HMKByteWriter file(kPecMagic.size() + kPecHeaderSize + 32 + 4 * design.stitches().size() +
                       kPecThumbnailBytes);
    file.text(kPecMagic);
    appendPecSection(file, design, brother.codes);
    appendThumbnails(file, design, brother.converted, false);
    return encodedFile(file, design, replacedBy(std::move(brother.converted)));
}

std::optional<HMKEncodedDesign> encodePesDesign(HMKDesign& design, HMKError* error) {
    if (design.designHeight() > kPesMaxHeight || design.designWidth() > kPesMaxWidth) {
        return refuse(error, 200, "The design is larger than supported by PES v1.0.");
    }
    if (design.xMin() < -kPesHalfFieldWidth || design.xMax() > kPesHalfFieldWidth ||
        design.yMin() < -kPesHalfFieldHeight || design.yMax() > kPesHalfFieldHeight) {
        return refuse(error, 201, "The design needs to be centered.");
    }
    if (design.threads().size() > kPesMaxThreads) {
        return refuse(error, 202, "Too many colors");
    }
    if (design.numberOfStitches() > kPesMaxStitches) {
        return refuse(error, 203, "Too many stitches");
    }

    HMKVendorThreads brother = brotherThreads(design.threads());
    HMKByteWriter file(256 + 10 * design.stitches().size() + kPecHeaderSize +
                       kPecThumbnailBytes * (design.threads().size() + 1));
    file.text(kPesMagic);
    file.le24(0);  // the PEC offset, filled in once the PES part is complete
    for (std::uint8_t byte : kPesHeaderTail) {
        file.byte(byte);
    }
    appendPesDesignBlock(file, design);
    file.text(kPesSegmentBlock);
    appendPesStitchBlocks(file, design.stitches(), brother.codes);
    appendPesColorTable(file, brother.codes);
    file.patchLe24(kPesPecOffsetField, static_cast<std::uint32_t>(file.size()));
    appendPecSection(file, design, brother.codes);
    appendThumbnails(file, design, brother.converted, true);
    return encodedFile(file, design, replacedBy(std::move(brother.converted)));
}
