#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "formats/read/readers.h"

namespace {

struct PecRead {
    HMKDesign design;
    HMKError error;
    bool ok = false;
};

PecRead readPes(const Bytes& bytes) {
    PecRead read;
    read.ok = importPesDesignFromData(read.design, bytes, &read.error);
    return read;
}

PecRead readPec(const Bytes& bytes) {
    PecRead read;
    read.ok = importPecDesignFromData(read.design, bytes, &read.error);
    return read;
}

PecRead readSegment(const Bytes& segment) {
    PecRead read;
    // The file readers empty the bounds before they hand the segment on.
    read.design.resetBounds();
    read.ok = read.design.importPecSegmentFromData(segment, &read.error);
    return read;
}

// A segment whose stitch data holds the given records and then the end byte.
Bytes segmentWithStitches(Bytes records) {
    PecSegmentLayout layout;
    layout.stitches = std::move(records);
    layout.stitches.push_back(0xFF);
    return pecSegment(layout);
}

}  // namespace

TEST(PesReader, AcceptsEveryListedVersion) {
    const std::pair<std::string_view, std::int32_t> versions[] = {
        {"0001", 10}, {"0020", 20}, {"0025", 25}, {"0030", 30}, {"0040", 40},
        {"0050", 50}, {"0055", 55}, {"0056", 56}, {"0060", 60}, {"0070", 70},
        {"0071", 71}, {"0080", 80}, {"0090", 90},
    };
    for (const auto& [digits, designVersion] : versions) {
        SCOPED_TRACE(digits);
        const auto read = readPes(pesFile(segmentWithStitches({}), digits));
        ASSERT_TRUE(read.ok) << read.error.message();
        EXPECT_EQ(read.design.designType(), "PES");
        EXPECT_EQ(read.design.designVersion(), designVersion);
    }
}

TEST(PesReader, RejectsUnlistedVersions) {
    for (std::string_view digits : {"0100", "0002", "0010", "0000", "abcd", "0061"}) {
        SCOPED_TRACE(digits);
        const auto read = readPes(pesFile(segmentWithStitches({}), digits));
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, 31);
        EXPECT_EQ(read.error.recoverySuggestion,
                  "Unable to import PES file (unsupported version).");
    }
}

TEST(PesReader, MissingMagicOrShortFileHasNoHeader) {
    Bytes wrongMagic = pesFile(segmentWithStitches({}));
    wrongMagic[3] = 'C';
    const Bytes cases[] = {wrongMagic, Bytes{'#', 'P', 'E', 'S', '0', '0', '1'}, Bytes{}};
    for (const auto& bytes : cases) {
        const auto read = readPes(bytes);
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, 30);
        EXPECT_EQ(read.error.recoverySuggestion, "Unable to import PES file (missing header).");
        EXPECT_EQ(read.design.designType(), "PES");
    }
}

TEST(PesReader, FileWithoutPecSectionFails) {
    Bytes bytes;
    appendText(bytes, "#PES0001 no section here");
    const auto read = readPes(bytes);
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 32);
    EXPECT_EQ(read.error.recoverySuggestion, "Unable to import PES file (PEC part missing).");
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
    ASSERT_EQ(read.design.stitches().size(), 2u);
    EXPECT_EQ(read.design.stitches()[1], HMKStitch(5, 5, false, false));
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
    struct Case {
        Bytes bytes;
        int code;
        std::string_view text;
    };
    Bytes noSection = pecFile(segmentWithStitches({}));
    noSection[8] = 'X';
    const Case cases[] = {
        {pecFile(segmentWithStitches({}), "#PES0001"), 30,
         "Unable to import PES/PEC file (missing header)."},
        {Bytes{'#', 'P', 'E', 'C', '0', '0', '0', '1', 'L', 'A'}, 30,
         "Unable to import PES/PEC file (missing header)."},
        {pecFile(segmentWithStitches({}), "#PEC0002"), 31,
         "Unable to import PES/PEC file (unsupported version)."},
        {noSection, 32, "Unable to import PES file (PEC part missing)."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        const auto read = readPec(c.bytes);
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, c.code);
        EXPECT_EQ(read.error.recoverySuggestion, c.text);
    }
}

TEST(PecSegment, SegmentShorterThan529BytesHasNoAttributes) {
    auto read = readSegment(Bytes(528, 0));
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 190);
    EXPECT_EQ(read.error.recoverySuggestion,
              "Unable to import PEC segment (segment too small for attributes).");

    read = readSegment(Bytes(529, 0));
    EXPECT_NE(read.error.code, 190);
}

TEST(PecSegment, DecodesShortAndLongCoordinates) {
    struct Case {
        Bytes record;
        HMKStitch stitch;
    };
    const Case cases[] = {
        {{0x05, 0x7B}, {5, 5, false, false}},
        {{0x3F, 0x40}, {63, 64, false, false}},
        {{0x91, 0x00, 0x90, 0x10}, {256, -16, true, false}},
        {{0x80, 0x20, 0x05}, {32, -5, false, false}},
        {{0x8F, 0xFF, 0x8F, 0xFF}, {-1, 1, false, false}},
        {{0x80, 0x01, 0x9F, 0xFF}, {1, 1, false, false}},
        {{0x97, 0xFF, 0xA8, 0x00}, {2047, 2048, true, false}},
        {{0xFE, 0x10, 0x05}, {-496, -5, false, false}},
        {{0x05, 0x91, 0x00}, {5, -256, false, false}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stitch.description());
        const auto read = readSegment(segmentWithStitches(c.record));
        ASSERT_TRUE(read.ok) << read.error.message();
        ASSERT_EQ(read.design.stitches().size(), 2u);
        EXPECT_EQ(read.design.stitches()[1], c.stitch);
    }
}

TEST(PecSegment, FirstStitchJumpsFromTheCentreToTheStart) {
    PecSegmentLayout layout;
    layout.width = 101;  // halved with truncation: 50
    layout.height = 50;
    layout.start = {0x90, 0x0A, 0x9F, 0xF6};  // (10, -10)
    layout.stitches = {0x02, 0x00, 0xFF};
    const auto read = readSegment(pecSegment(layout));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.stitches().size(), 2u);
    EXPECT_EQ(read.design.stitches()[0], HMKStitch(-40, 35, true, false));
    EXPECT_EQ(read.design.xMin(), -40);
    EXPECT_EQ(read.design.xMax(), -38);
    EXPECT_EQ(read.design.yMin(), 35);
    EXPECT_EQ(read.design.yMax(), 35);
}

TEST(PecSegment, ColourChangesAddThreads) {
    PecSegmentLayout layout;
    layout.colorIndexes = {200, 201, 202, 203};
    layout.stitches = {0xFE, 0xB0, 0x02, 0xFE, 0xB0, 0x02, 0xFE, 0xB0, 0x02, 0xFF};
    const auto read = readSegment(pecSegment(layout));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.threads().size(), 4u);
    ASSERT_EQ(read.design.stitches().size(), 4u);
    EXPECT_EQ(read.design.stitches()[1], HMKStitch(0, 0, false, true));
}

TEST(PecSegment, IndexMissingFromTheTableBecomesThread005) {
    PecSegmentLayout layout;
    layout.colorIndexes = {0, 200};
    layout.stitches = {0xFE, 0xB0, 0x02, 0xFF};
    const auto read = readSegment(pecSegment(layout));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 2u);
    for (const auto& thread : read.design.threads()) {
        EXPECT_EQ(thread.key, "005");
        EXPECT_EQ(thread.palette, "Brother");
        EXPECT_EQ(thread, HMKThread::fromPaletteKey("005", "Brother"));
    }
}

TEST(PecSegment, ColourIndexesGoThroughTheBrotherReadTable) {
    PecSegmentLayout layout;
    layout.colorIndexes = {1, 92};
    layout.stitches = {0xFE, 0xB0, 0x02, 0xFF};
    const auto read = readSegment(pecSegment(layout));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 2u);
    EXPECT_EQ(read.design.threads()[0].key, "007");
    EXPECT_EQ(read.design.threads()[1].key, "086");
    EXPECT_EQ(read.design.threads()[1].palette, "Brother");
}

TEST(PecSegment, StitchDataOneByteLaterIsFoundOnTheSecondTry) {
    PecSegmentLayout layout;
    layout.stitchOffset = 526;
    layout.stitches = {0x05, 0x7B, 0xFF};
    layout.thumbnailSize = 0;
    Bytes segment = pecSegment(layout);
    segment[525] = 0x90;
    const auto read = readSegment(segment);
    ASSERT_TRUE(read.ok) << read.error.message();
    ASSERT_EQ(read.design.stitches().size(), 2u);
    EXPECT_EQ(read.design.stitches()[0], HMKStitch(0, 0, true, false));
    EXPECT_EQ(read.design.stitches()[1], HMKStitch(5, 5, false, false));
    EXPECT_EQ(read.design.xMax(), 5);
}

TEST(PecSegment, StitchesWithoutEndByteAreNotTerminated) {
    // Replace the end byte: the data now reaches the end offset without 0xFF.
    Bytes segment = segmentWithStitches({0x05, 0x7B});
    segment[525 + 4 + 2] = 0x01;
    const auto failed = readSegment(segment);
    EXPECT_FALSE(failed.ok);
    EXPECT_EQ(failed.error.code, 192);
    EXPECT_EQ(failed.error.recoverySuggestion,
              "Unable to import PEC segment (stitches not terminated).");
    // The stitches of the second try stay.
    EXPECT_FALSE(failed.design.stitches().empty());
    EXPECT_TRUE(failed.design.threads().empty());
}

TEST(PecSegment, EndOffsetBeyondTheSegmentIsMissingTheBitmap) {
    Bytes segment = segmentWithStitches({});
    putLe24(segment, 511, 100000);
    const auto read = readSegment(segment);
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 191);
    EXPECT_EQ(read.error.recoverySuggestion,
              "Unable to import PEC segment (segment too small for bitmap pointer).");
    // Only the second try's start jump stays.
    EXPECT_EQ(read.design.stitches().size(), 1u);
}

TEST(PecSegment, EndOffsetBeforeTheStitchDataIsNotTerminated) {
    Bytes segment = segmentWithStitches({});
    putLe24(segment, 511, 0);
    const auto read = readSegment(segment);
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 192);
}

TEST(PecSegment, RecordCutOffByTheSegmentEndIsNotTerminated) {
    PecSegmentLayout layout;
    layout.stitches = {0x05, 0x91};
    layout.thumbnailSize = 0;
    const auto read = readSegment(pecSegment(layout));
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 192);
}

TEST(PecSegment, StichesReturnsTheNumberOfColourBlocks) {
    PecSegmentLayout layout;
    layout.stitches = {0xFE, 0xB0, 0x00, 0x01, 0x01, 0xFE, 0xB0, 0x00, 0xFF};
    HMKDesign design;
    EXPECT_EQ(design.importPecStichesFromData(pecSegment(layout), 525), 3);
    EXPECT_EQ(design.importPecStichesFromData(pecSegment(layout), 526), 0);
}
