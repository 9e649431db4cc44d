#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "formats/read/readers.h"

namespace {

struct PecSegmentLayout {
    std::vector<std::uint8_t> colorIndexes = {20};
    std::int16_t width = 0;
    std::int16_t height = 0;
    Bytes start = {0x90, 0x00, 0x90, 0x00};  // two long-form coordinates, x then y
    Bytes stitches = {0xFF};                 // the end byte 0xFF included when wanted
    std::size_t stitchOffset = 525;
    std::size_t thumbnailSize = 4;
};

// A segment as it follows "LA:": label, colour list, graphic header, stitch data, thumbnails.
// The thumbnail offset points right after the stitch data.
Bytes pecSegment(const PecSegmentLayout& layout) {
    Bytes bytes(layout.stitchOffset, 0x20);
    std::copy_n("rose            ", 16, bytes.begin());
    bytes[45] = static_cast<std::uint8_t>(layout.colorIndexes.size() - 1);
    std::copy(layout.colorIndexes.begin(), layout.colorIndexes.end(), bytes.begin() + 46);
    std::fill(bytes.begin() + 509, bytes.end(), 0);
    putLe(bytes, 517, layout.width, 2);
    putLe(bytes, 519, layout.height, 2);
    bytes.insert(bytes.end(), layout.start.begin(), layout.start.end());
    bytes.insert(bytes.end(), layout.stitches.begin(), layout.stitches.end());
    putLe(bytes, 511, static_cast<std::int64_t>(bytes.size() - 509), 3);
    bytes.resize(bytes.size() + layout.thumbnailSize, 0x00);
    return bytes;
}

// A segment whose stitch data holds the given records and then the end byte.
Bytes segmentWithStitches(Bytes records) {
    records.push_back(0xFF);
    return pecSegment({.stitches = records});
}

Bytes pecFile(const Bytes& segment, std::string_view magicAndVersion = "#PEC0001") {
    return DesignBytes().text(magicAndVersion).text("LA:").bytes(segment);
}

// "#PES", the version digits, the PEC offset, headerRest, then the PEC section.
Bytes pesFile(const Bytes& segment, std::string_view versionDigits = "0001",
              const Bytes& headerRest = {0x01, 0x00, 0x00, 0x00}) {
    Bytes bytes = DesignBytes().text("#PES").text(versionDigits).zeros(4).bytes(headerRest);
    putLe(bytes, 8, static_cast<std::int64_t>(bytes.size()));
    return DesignBytes().bytes(bytes).text("LA:").bytes(segment);
}

ReadOutcome readPes(const Bytes& bytes) {
    return readWith(importPesDesignFromData, bytes);
}
ReadOutcome readPec(const Bytes& bytes) {
    return readWith(importPecDesignFromData, bytes);
}
ReadOutcome readSegment(const Bytes& segment) {
    ReadOutcome read;
    read.design.resetBounds();  // as the file readers do before they hand the segment on
    read.ok = read.design.importPecSegmentFromData(segment, &read.error);
    return read;
}

}  // namespace

TEST(PesReader, AcceptsEveryListedVersionAndRejectsTheRest) {
    const std::pair<std::string_view, std::int32_t> versions[] = {
        {"0001", 10}, {"0020", 20}, {"0025", 25}, {"0030", 30},  {"0040", 40},
        {"0050", 50}, {"0055", 55}, {"0056", 56}, {"0060", 60},  {"0070", 70},
        {"0071", 71}, {"0080", 80}, {"0090", 90}, {"0100", 100}, {"0002", 0},
        {"0010", 0},  {"0000", 0},  {"abcd", 0},  {"0061", 0},
    };
    for (const auto& [digits, designVersion] : versions) {
        SCOPED_TRACE(digits);
        const auto read = readPes(pesFile(segmentWithStitches({}), digits));
        EXPECT_EQ(read.ok, designVersion != 0) << read.error.message();
        if (read.ok) {
            EXPECT_EQ(read.design.designType(), "PES");
            EXPECT_EQ(read.design.designVersion(), designVersion);
        } else {
            EXPECT_EQ(read.error.code, 31);
            EXPECT_EQ(read.error.recoverySuggestion,
                      "Unable to import PES file (unsupported version).");
        }
    }
}

TEST(PesReader, HeaderFailures) {
    Bytes wrongMagic = pesFile(segmentWithStitches({}));
    wrongMagic[3] = 'C';
    const std::string noHeader = "Unable to import PES file (missing header).";
    const std::tuple<Bytes, int, std::string> cases[] = {
        {wrongMagic, 30, noHeader},
        {DesignBytes().text("#PES001"), 30, noHeader},
        {{}, 30, noHeader},
        {DesignBytes().text("#PES0001 no section here"), 32,
         "Unable to import PES file (PEC part missing)."},
    };
    for (const auto& [bytes, code, text] : cases) {
        SCOPED_TRACE(code);
        const auto read = readPes(bytes);
        expectFailure(read, code, text);
        EXPECT_EQ(read.design.designType(), "PES");
    }
}

TEST(PesReader, SecondPecSectionFailsWithAFailureReason) {
    const auto read = readPes(pesFile(segmentWithStitches({}), "0001", {'L', 'A', ':'}));
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 33);
    EXPECT_EQ(read.error.failureReason,
              "Unable to import PES file (PEC multiparts not supported by PES file version).");
    EXPECT_TRUE(read.error.recoverySuggestion.empty());
}

TEST(PesReader, DecodesTheSegmentAfterTheFirstSection) {
    const auto read = readPes(pesFile(segmentWithStitches({0x05, 0x7B})));
    ASSERT_TRUE(read.ok) << read.error.message();
    EXPECT_EQ(read.design.stitches(), (Stitches{jump(0, 0), plain(5, 5)}));
    EXPECT_EQ(read.design.threads().size(), 1u);
}

TEST(PecReader, ReadsTheSegmentAtOffsetEleven) {
    const auto read = readPec(pecFile(segmentWithStitches({0x05, 0x7B})));
    ASSERT_TRUE(read.ok) << read.error.message();
    EXPECT_EQ(read.design.designType(), "PEC");
    EXPECT_EQ(read.design.designVersion(), 10);
    EXPECT_EQ(read.design.stitches().size(), 2u);
}

TEST(PecReader, HeaderFailuresUseThePecTexts) {
    Bytes noSection = pecFile(segmentWithStitches({}));
    noSection[8] = 'X';
    const std::tuple<Bytes, int, std::string_view> cases[] = {
        {pecFile(segmentWithStitches({}), "#PES0001"), 30,
         "Unable to import PES/PEC file (missing header)."},
        {DesignBytes().text("#PEC0001LA"), 30, "Unable to import PES/PEC file (missing header)."},
        {pecFile(segmentWithStitches({}), "#PEC0002"), 31,
         "Unable to import PES/PEC file (unsupported version)."},
        {noSection, 32, "Unable to import PES file (PEC part missing)."},
    };
    for (const auto& [bytes, code, text] : cases) {
        SCOPED_TRACE(code);
        const auto read = readPec(bytes);
        expectFailure(read, code, text);
    }
}

TEST(PecSegment, SegmentShorterThan529BytesHasNoAttributes) {
    const auto read = readSegment(Bytes(528, 0));
    expectFailure(read, 190, "Unable to import PEC segment (segment too small for attributes).");
    EXPECT_NE(readSegment(Bytes(529, 0)).error.code, 190);
}

TEST(PecSegment, DecodesShortAndLongCoordinates) {
    const std::pair<Bytes, HMKStitch> cases[] = {
        {{0x05, 0x7B}, plain(5, 5)},
        {{0x3F, 0x40}, plain(63, 64)},
        {{0x91, 0x00, 0x90, 0x10}, jump(256, -16)},
        {{0x80, 0x20, 0x05}, plain(32, -5)},
        {{0x8F, 0xFF, 0x8F, 0xFF}, plain(-1, 1)},
        {{0x80, 0x01, 0x9F, 0xFF}, plain(1, 1)},
        {{0x97, 0xFF, 0xA8, 0x00}, jump(2047, 2048)},
        {{0xFE, 0x10, 0x05}, plain(-496, -5)},
        {{0x05, 0x91, 0x00}, plain(5, -256)},
    };
    for (const auto& [record, stitch] : cases) {
        SCOPED_TRACE(stitch.description());
        const auto read = readSegment(segmentWithStitches(record));
        ASSERT_TRUE(read.ok) << read.error.message();
        EXPECT_EQ(read.design.stitches(), (Stitches{jump(0, 0), stitch}));
    }
}

TEST(PecSegment, FirstStitchJumpsFromTheCentreToTheStart) {
    const auto read = readSegment(pecSegment({.width = 101,  // halved with truncation: 50
                                              .height = 50,
                                              .start = {0x90, 0x3C, 0x90, 0x14},  // (60, 20)
                                              .stitches = {0x02, 0x00, 0xFF}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(), (Stitches{jump(10, 5), plain(2, 0)}));
    EXPECT_EQ(boundsOf(read.design), (Bounds{10, 5, 12, 5}));
}

TEST(PecSegment, ColourChangesAddThreadsThroughTheBrotherReadTable) {
    const std::pair<std::vector<std::uint8_t>, std::vector<std::string>> cases[] = {
        {{200, 201, 202, 203}, {"005", "005", "005", "005"}},
        {{1, 92}, {"007", "086"}},
        {{0, 200}, {"005", "005"}},  // indexes missing from the table become thread 005
    };
    for (const auto& [indexes, keys] : cases) {
        SCOPED_TRACE(keys.back());
        Bytes stitches;
        for (std::size_t i = 1; i < indexes.size(); ++i)
            appendBytes(stitches, {0xFE, 0xB0, 0x02});
        stitches.push_back(0xFF);
        const auto read = readSegment(pecSegment({.colorIndexes = indexes, .stitches = stitches}));
        ASSERT_TRUE(read.ok);
        ASSERT_EQ(read.design.stitches().size(), indexes.size());
        EXPECT_EQ(read.design.stitches()[1], change(0, 0));
        std::vector<HMKThread> threads;
        for (const auto& key : keys)
            threads.push_back(HMKThread::fromPaletteKey(key, "Brother"));
        EXPECT_EQ(read.design.threads(), threads);
    }
}

TEST(PecSegment, StitchDataOneByteLaterIsFoundOnTheSecondTry) {
    Bytes segment =
        pecSegment({.stitches = {0x05, 0x7B, 0xFF}, .stitchOffset = 526, .thumbnailSize = 0});
    segment[525] = 0x90;
    const auto read = readSegment(segment);
    ASSERT_TRUE(read.ok) << read.error.message();
    EXPECT_EQ(read.design.stitches(), (Stitches{jump(0, 0), plain(5, 5)}));
    EXPECT_EQ(read.design.xMax(), 5);
}

TEST(PecSegment, BadStitchDataOrEndOffsetFails) {
    Bytes noEndByte = segmentWithStitches({0x05, 0x7B});
    noEndByte[525 + 4 + 2] = 0x01;  // the data reaches the end offset without 0xFF
    Bytes endBeyondSegment = segmentWithStitches({});
    putLe(endBeyondSegment, 511, 100000, 3);
    Bytes endBeforeStitches = segmentWithStitches({});
    putLe(endBeforeStitches, 511, 0, 3);
    const std::string notTerminated = "Unable to import PEC segment (stitches not terminated).";
    // What stays are the stitches of the second try.
    const std::tuple<std::string_view, Bytes, int, std::string, std::size_t> cases[] = {
        {"no end byte", noEndByte, 192, notTerminated, 2},
        {"end offset beyond the segment", endBeyondSegment, 191,
         "Unable to import PEC segment (segment too small for bitmap pointer).", 1},
        {"end offset before the stitch data", endBeforeStitches, 192, notTerminated, 1},
        {"record cut off by the segment end",
         pecSegment({.stitches = {0x05, 0x91}, .thumbnailSize = 0}), 192, notTerminated, 1},
    };
    for (const auto& [name, segment, code, text, stitchesKept] : cases) {
        SCOPED_TRACE(name);
        const auto read = readSegment(segment);
        expectFailure(read, code, text);
        EXPECT_EQ(read.design.stitches().size(), stitchesKept);
        EXPECT_TRUE(read.design.threads().empty());
    }
}

TEST(PecSegment, StichesReturnsTheNumberOfColourBlocks) {
    const Bytes segment =
        pecSegment({.stitches = {0xFE, 0xB0, 0x00, 0x01, 0x01, 0xFE, 0xB0, 0x00, 0xFF}});
    HMKDesign design;
    EXPECT_EQ(design.importPecStichesFromData(segment, 525), 3);
    EXPECT_EQ(design.importPecStichesFromData(segment, 526), 0);
}
