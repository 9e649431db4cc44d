#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "formats/read/readers.h"

namespace {

ReadOutcome readDst(const Bytes& bytes) {
    return readWith(importDstDesignFromData, bytes);
}

Bytes withTrailer(Bytes bytes, std::initializer_list<std::uint8_t> trailer) {
    appendBytes(bytes, trailer);
    return bytes;
}

}  // namespace

TEST(DstReader, EveryMovementBitAddsItsWeight) {
    struct Case {
        std::uint8_t b0, b1, b2;
        float dx, dy;
    };
    const Case cases[] = {
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
        EXPECT_EQ(read.design.stitches(), Stitches{plain(c.dx, c.dy)});
    }
}

TEST(DstReader, ThirdByteDecidesTheRecordKind) {
    struct Case {
        std::uint8_t b0, b2;
        std::string kinds;  // empty: no stitch; "!": invalid function code
    };
    const Case cases[] = {{0x00, 0x03, "S"}, {0x00, 0x83, "J"}, {0x00, 0xC3, "C"},
                          {0xFF, 0xFF, "C"}, {0x00, 0xF3, ""},  {0x00, 0x43, "!"},
                          {0x00, 0x00, "!"}, {0x00, 0x01, "!"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << +c.b0 << " " << +c.b2);
        const auto read = readDst(withTrailer(dstHeader(), {c.b0, c.b0, c.b2, 0x00, 0x00, 0xF3}));
        EXPECT_EQ(read.ok, c.kinds != "!");
        if (!read.ok) {
            EXPECT_EQ(read.error.code, 111);
            EXPECT_EQ(read.error.recoverySuggestion,
                      "Unable to import DST file (invalid function codes).");
            EXPECT_TRUE(read.design.stitches().empty());
        } else {
            EXPECT_EQ(kindsOf(read.design.stitches()), c.kinds);
            for (const auto& stitch : read.design.stitches())  // all bits set: no movement
                EXPECT_TRUE(stitch.isNullStitch());
        }
    }
}

TEST(DstReader, ColourChangesAddPlaceholderThreadsKeyedOneToTwentyAndKeepTheirMove) {
    Bytes bytes = withTrailer(dstHeader(), {0x01, 0x00, 0xC3});
    for (int i = 0; i < 20; ++i)
        appendBytes(bytes, {0x00, 0x00, 0xC3});
    const auto read = readDst(withTrailer(bytes, {0x00, 0x00, 0xF3}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches()[0], change(1, 0));
    ASSERT_EQ(read.design.threads().size(), 22u);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(read.design.threads()[i],
                  HMKThread::fromPaletteKey(std::to_string(i % 20 + 1), "Undefined"));
    }
}

TEST(DstReader, FilesShorterThan516BytesHaveNoHeader) {
    const Bytes short515 = withTrailer(dstHeader(), {0x00, 0x00, 0xF3});
    for (const Bytes& bytes : {short515, Bytes{}}) {
        const auto read = readDst(bytes);
        expectFailure(read, 123, "Unable to import DST file (missing header).");
        EXPECT_TRUE(read.design.threads().empty());
    }
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDstDesignFromURL("/nonexistent/folder/rose.dst", &error));
    EXPECT_EQ(error.code, 123);
    EXPECT_EQ(design.designType(), "DST");
}

TEST(DstReader, SmallestFileDecodesItsOneRecord) {
    const auto read = readDst(withTrailer(dstHeader(), {0x01, 0x00, 0x03, 0x1A}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(), Stitches{plain(1, 0)});
}

TEST(DstReader, MissingHeaderTagFailsWithTheFirstMissingTagsCode) {
    const std::pair<std::string_view, int> tags[] = {
        {"LA:", 110}, {"ST:", 112}, {"CO:", 113}, {"+X:", 114}, {"-X:", 115},
        {"+Y:", 116}, {"-Y:", 117}, {"AX:", 118}, {"AY:", 119},
    };
    for (const auto& [tag, code] : tags) {
        SCOPED_TRACE(tag);
        std::string header(kDstAllTags);
        header.replace(header.find(tag), tag.size(), "   ");
        const auto read = readDst(withTrailer(dstHeader(header), {0x00, 0x00, 0xF3, 0x1A}));
        expectFailure(
            read, code,
            "Unable to import DST file (missing " + std::string(tag) + " tag in header).");
    }
    EXPECT_EQ(readDst(withTrailer(dstHeader("nothing"), {0, 0, 0xF3, 0x1A})).error.code, 110);
}

TEST(DstReader, HeaderSearchCoversOnly511Characters) {
    std::string header(kDstAllTags);
    header.replace(header.find("LA:"), 3, "   ");
    Bytes bytes = withTrailer(dstHeader(header), {0x00, 0x00, 0xF3, 0x1A});
    std::copy_n("LA:", 3, bytes.begin() + 509);
    EXPECT_EQ(readDst(bytes).error.code, 110);
    std::copy_n("LA:", 3, bytes.begin() + 508);
    EXPECT_TRUE(readDst(bytes).ok);
}

TEST(DstReader, EmptyDesignHasTypeVersionOnePlaceholderThreadAndEmptyBounds) {
    const auto read = readDst(dstFile({}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designType(), "DST");
    EXPECT_EQ(read.design.designVersion(), 10);
    EXPECT_EQ(read.design.threads(), std::vector{HMKThread::fromPaletteKey("1", "Undefined")});
    EXPECT_TRUE(read.design.stitches().empty());
    EXPECT_EQ(boundsOf(read.design),
              (Bounds{kEmptyBoundsMin, kEmptyBoundsMin, kEmptyBoundsMax, kEmptyBoundsMax}));
}

TEST(DstReader, StitchesBeforeAnInvalidRecordStayAndTheEndRecordStopsReading) {
    auto read = readDst(dstFile({{0x01, 0, 0x03}, {0, 0, 0xC3}, {0, 0, 0x00}, {0x01, 0, 0x03}}));
    expectFailure(read, 111, "Unable to import DST file (invalid function codes).");
    EXPECT_EQ(read.design.stitches().size(), 2u);
    EXPECT_EQ(read.design.threads().size(), 2u);

    read = readDst(dstFile({{0x01, 0x00, 0x03}, {0x00, 0x00, 0xF3}, {0, 0, 0x00}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches().size(), 1u);
}

TEST(DstReader, EveryRecordWidensTheBoundsButTheOriginDoesNot) {
    // +9 x as a jump, +1 y as a colour change, -27 x as a stitch.
    const auto read = readDst(dstFile({{0x04, 0, 0x83}, {0x80, 0, 0xC3}, {0, 0x08, 0x03}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(boundsOf(read.design), (Bounds{-18, 0, 9, 1}));
    EXPECT_EQ(boundsOf(readDst(dstFile({{0x01, 0x00, 0x03}})).design), (Bounds{1, 0, 1, 0}));
}

TEST(DstReader, FailsWithoutBuildingAnErrorWhenNoneWasAskedFor) {
    HMKDesign design;
    EXPECT_FALSE(importDstDesignFromData(design, Bytes(10, 0)));
}
