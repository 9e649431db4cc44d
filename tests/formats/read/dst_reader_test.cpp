#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "formats/read/readers.h"

namespace {

struct DstRead {
    HMKDesign design;
    HMKError error;
    bool ok = false;
};

DstRead readDst(const Bytes& bytes) {
    DstRead read;
    read.ok = importDstDesignFromData(read.design, bytes, &read.error);
    return read;
}

struct BitCase {
    std::uint8_t b0, b1, b2;
    float dx, dy;
};

}  // namespace

TEST(DstReader, EveryMovementBitAddsItsWeight) {
    const BitCase cases[] = {
        {0x01, 0, 0x03, 1, 0},          {0x02, 0, 0x03, -1, 0}, {0x04, 0, 0x03, 9, 0},
        {0x08, 0, 0x03, -9, 0},         {0x10, 0, 0x03, 0, -9}, {0x20, 0, 0x03, 0, 9},
        {0x40, 0, 0x03, 0, -1},         {0x80, 0, 0x03, 0, 1},  {0, 0x01, 0x03, 3, 0},
        {0, 0x02, 0x03, -3, 0},         {0, 0x04, 0x03, 27, 0}, {0, 0x08, 0x03, -27, 0},
        {0, 0x10, 0x03, 0, -27},        {0, 0x20, 0x03, 0, 27}, {0, 0x40, 0x03, 0, -3},
        {0, 0x80, 0x03, 0, 3},          {0, 0, 0x07, 81, 0},    {0, 0, 0x0B, -81, 0},
        {0, 0, 0x13, 0, -81},           {0, 0, 0x23, 0, 81},    {0xA5, 0xA5, 0x27, 121, 121},
        {0x5A, 0x5A, 0x1B, -121, -121},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << +c.b0 << " " << +c.b1 << " " << +c.b2);
        const auto read = readDst(dstFile({{c.b0, c.b1, c.b2}}));
        ASSERT_TRUE(read.ok);
        ASSERT_EQ(read.design.stitches().size(), 1u);
        EXPECT_EQ(read.design.stitches()[0], HMKStitch(c.dx, c.dy, false, false));
    }
}

TEST(DstReader, ThirdByteDecidesTheRecordKind) {
    struct KindCase {
        std::uint8_t b2;
        bool ok;
        std::size_t stitches;
        bool jump, change;
    };
    const KindCase cases[] = {
        {0x03, true, 1, false, false},  {0x83, true, 1, true, false},
        {0xC3, true, 1, false, true},   {0xF3, true, 0, false, false},
        {0x43, false, 0, false, false}, {0x00, false, 0, false, false},
        {0x01, false, 0, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << +c.b2);
        Bytes bytes = dstHeader();
        appendBytes(bytes, {0x00, 0x00, c.b2, 0x00, 0x00, 0xF3});
        const auto read = readDst(bytes);
        EXPECT_EQ(read.ok, c.ok);
        ASSERT_EQ(read.design.stitches().size(), c.stitches);
        if (!c.ok) {
            EXPECT_EQ(read.error.code, 111);
            EXPECT_EQ(read.error.recoverySuggestion,
                      "Unable to import DST file (invalid function codes).");
        }
        if (c.stitches == 1) {
            EXPECT_EQ(read.design.stitches()[0], HMKStitch(0, 0, c.jump, c.change));
        }
    }
}

TEST(DstReader, AllBitsSetIsAColourChangeWithoutMovement) {
    const auto read = readDst(dstFile({{0xFF, 0xFF, 0xFF}}));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.stitches().size(), 1u);
    EXPECT_EQ(read.design.stitches()[0], HMKStitch(0, 0, false, true));
    EXPECT_EQ(read.design.threads().size(), 2u);
}

TEST(DstReader, ColourChangeAddsANumberedPlaceholderThreadAndKeepsItsMove) {
    const auto read = readDst(dstFile({{0x00, 0x00, 0xC3}, {0x01, 0x00, 0xC3}}));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 3u);
    EXPECT_EQ(read.design.threads()[0].key, "1");
    EXPECT_EQ(read.design.threads()[1].key, "2");
    EXPECT_EQ(read.design.threads()[2].key, "3");
    for (const auto& thread : read.design.threads())
        EXPECT_EQ(thread.palette, "Undefined");
    EXPECT_EQ(read.design.stitches()[1], HMKStitch(1, 0, false, true));
}

TEST(DstReader, ThreadKeysCycleThroughTwenty) {
    Bytes bytes = dstHeader();
    for (int i = 0; i < 21; ++i)
        appendBytes(bytes, {0x00, 0x00, 0xC3});
    appendBytes(bytes, {0x00, 0x00, 0xF3});
    const auto read = readDst(bytes);
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 22u);
    for (std::size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(read.design.threads()[i].key, std::to_string(i + 1));
    }
    EXPECT_EQ(read.design.threads()[20].key, "1");
    EXPECT_EQ(read.design.threads()[21].key, "2");
}

TEST(DstReader, FilesShorterThan516BytesHaveNoHeader) {
    Bytes bytes = dstHeader();
    appendBytes(bytes, {0x00, 0x00, 0xF3});
    ASSERT_EQ(bytes.size(), 515u);
    auto read = readDst(bytes);
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 123);
    EXPECT_EQ(read.error.recoverySuggestion, "Unable to import DST file (missing header).");
    EXPECT_TRUE(read.design.threads().empty());

    read = readDst({});
    EXPECT_EQ(read.error.code, 123);
}

TEST(DstReader, A516ByteFileDecodesItsSingleRecord) {
    Bytes bytes = dstHeader();
    appendBytes(bytes, {0x01, 0x00, 0x03, 0x1A});
    const auto read = readDst(bytes);
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.stitches().size(), 1u);
    EXPECT_EQ(read.design.stitches()[0], HMKStitch(1, 0, false, false));
}

TEST(DstReader, LastThreeBytesAreNeverDecoded) {
    Bytes bytes = dstHeader();
    appendBytes(bytes, {0x01, 0x00, 0x03, 0x02, 0x00, 0x03});
    const auto read = readDst(bytes);
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.stitches().size(), 1u);
    EXPECT_EQ(read.design.stitches()[0], HMKStitch(1, 0, false, false));
}

TEST(DstReader, MissingHeaderTagFailsWithTheTagsCode) {
    const std::pair<std::string_view, int> tags[] = {
        {"LA:", 110}, {"ST:", 112}, {"CO:", 113}, {"+X:", 114}, {"-X:", 115},
        {"+Y:", 116}, {"-Y:", 117}, {"AX:", 118}, {"AY:", 119},
    };
    for (const auto& [tag, code] : tags) {
        SCOPED_TRACE(tag);
        std::string header(kDstAllTags);
        header.replace(header.find(tag), tag.size(), "   ");
        Bytes bytes = dstHeader(header);
        appendBytes(bytes, {0x00, 0x00, 0xF3, 0x1A});
        const auto read = readDst(bytes);
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, code);
        EXPECT_EQ(read.error.recoverySuggestion,
                  "Unable to import DST file (missing " + std::string(tag) + " tag in header).");
    }
}

TEST(DstReader, FirstMissingTagWins) {
    Bytes bytes = dstHeader("nothing here");
    appendBytes(bytes, {0x00, 0x00, 0xF3, 0x1A});
    EXPECT_EQ(readDst(bytes).error.code, 110);
}

TEST(DstReader, HeaderSearchCoversOnly511Characters) {
    std::string header(kDstAllTags);
    header.replace(header.find("LA:"), 3, "   ");
    Bytes bytes = dstHeader(header);
    bytes[509] = 'L';
    bytes[510] = 'A';
    bytes[511] = ':';
    appendBytes(bytes, {0x00, 0x00, 0xF3, 0x1A});
    EXPECT_EQ(readDst(bytes).error.code, 110);

    bytes[508] = 'L';
    bytes[509] = 'A';
    bytes[510] = ':';
    EXPECT_TRUE(readDst(bytes).ok);
}

TEST(DstReader, SetsTypeVersionAndOnePlaceholderThread) {
    const auto read = readDst(dstFile({}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designType(), "DST");
    EXPECT_EQ(read.design.designVersion(), 10);
    ASSERT_EQ(read.design.threads().size(), 1u);
    EXPECT_EQ(read.design.threads()[0], HMKThread::fromPaletteKey("1", "Undefined"));
    EXPECT_TRUE(read.design.stitches().empty());
}

TEST(DstReader, StitchesBeforeAnInvalidRecordStay) {
    const auto read = readDst(
        dstFile({{0x01, 0x00, 0x03}, {0x00, 0x00, 0xC3}, {0, 0, 0x00}, {0x01, 0x00, 0x03}}));
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 111);
    EXPECT_EQ(read.design.stitches().size(), 2u);
    EXPECT_EQ(read.design.threads().size(), 2u);
}

TEST(DstReader, ReadingStopsAtTheEndRecord) {
    const auto read = readDst(dstFile({{0x01, 0x00, 0x03}, {0x00, 0x00, 0xF3}, {0, 0, 0x00}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches().size(), 1u);
}

TEST(DstReader, EveryRecordWidensTheBoundsButTheOriginDoesNot) {
    // +9 x as a jump, +1 y as a colour change, -27 x as a stitch.
    const auto read =
        readDst(dstFile({{0x04, 0x00, 0x83}, {0x80, 0x00, 0xC3}, {0x00, 0x08, 0x03}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.xMin(), -18);
    EXPECT_EQ(read.design.xMax(), 9);
    EXPECT_EQ(read.design.yMin(), 0);
    EXPECT_EQ(read.design.yMax(), 1);

    const auto single = readDst(dstFile({{0x01, 0x00, 0x03}}));
    EXPECT_EQ(single.design.xMin(), 1);
    EXPECT_EQ(single.design.xMax(), 1);
}

TEST(DstReader, WithoutAnyRecordTheBoundsStayEmpty) {
    const auto read = readDst(dstFile({}));
    EXPECT_EQ(read.design.xMin(), kEmptyBoundsMin);
    EXPECT_EQ(read.design.yMax(), kEmptyBoundsMax);
}

TEST(DstReader, UnreadableFileHasNoHeader) {
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDstDesignFromURL("/nonexistent/folder/rose.dst", &error));
    EXPECT_EQ(error.code, 123);
    EXPECT_EQ(design.designType(), "DST");
}

TEST(DstReader, FailsWithoutBuildingAnErrorWhenNoneWasAskedFor) {
    HMKDesign design;
    EXPECT_FALSE(importDstDesignFromData(design, Bytes(10, 0)));
}
