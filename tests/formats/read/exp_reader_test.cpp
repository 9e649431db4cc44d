#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"

namespace {

ReadOutcome readExp(const Bytes& bytes) {
    return readFile(&HMKDesign::importExpDesignFromURL, bytes, "exp");
}

}  // namespace

TEST(ExpReader, OddLengthFailsWith100) {
    const auto read = readExp({0x01, 0x02, 0x03});
    expectFailure(read, 100, "Unable to read EXP: file contains uneven number of bytes.");
    EXPECT_EQ(read.design.designType(), "EXP");
}

TEST(ExpReader, EmptyOrUnreadableFileGivesOnePlaceholderThreadAndNoStitches) {
    const auto read = readExp({});
    EXPECT_TRUE(read.ok);
    EXPECT_EQ(read.design.designType(), "EXP");
    EXPECT_EQ(read.design.designVersion(), 10);
    EXPECT_TRUE(read.design.stitches().empty());
    EXPECT_EQ(read.design.threads(), std::vector{HMKThread::fromPaletteKey("1", "Undefined")});
    EXPECT_EQ(boundsOf(read.design),
              (Bounds{kEmptyBoundsMin, kEmptyBoundsMin, kEmptyBoundsMax, kEmptyBoundsMax}));

    HMKDesign design;
    EXPECT_TRUE(design.importExpDesignFromURL("/nonexistent-folder/missing.exp"));
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_EQ(design.threads().size(), 1u);
}

TEST(ExpReader, DecodesEveryRecordKind) {
    const std::tuple<std::string_view, Bytes, HMKStitch> cases[] = {
        {"plain stitch is signed", {0x05, 0xFB}, plain(5, -5)},
        {"plain stitch may end in 0x80", {0x7F, 0x80}, plain(127, -128)},
        {"escaped zero stitch", {0x80, 0x80, 0x11, 0x22}, plain(0, 0)},
        {"odd code changes colour", {0x80, 0x01, 0x00, 0x00}, change(0, 0)},
        {"colour change ignores its last bytes", {0x80, 0x7F, 0x09, 0x09}, change(0, 0)},
        {"negative odd code is a jump", {0x80, 0x81, 0x05, 0x05}, jump(5, 5)},
        {"even code is a jump", {0x80, 0x02, 0x0A, 0xF6}, jump(10, -10)},
        {"zero code is a jump", {0x80, 0x00, 0x03, 0x04}, jump(3, 4)},
    };
    for (const auto& [name, record, stitch] : cases) {
        SCOPED_TRACE(name);
        const auto read = readExp(record);
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(read.design.stitches(), Stitches{stitch});
        EXPECT_EQ(read.design.threads().size(), stitch.isColorChange ? 2u : 1u);
    }
}

TEST(ExpReader, ColourChangesAddThreadsKeyedOneToTwenty) {
    Bytes bytes;
    for (int i = 0; i < 21; ++i)
        appendBytes(bytes, {0x80, 0x03, 0x00, 0x00});
    const auto read = readExp(bytes);
    ASSERT_EQ(read.design.threads().size(), 22u);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(read.design.threads()[i],
                  HMKThread::fromPaletteKey(std::to_string(i % 20 + 1), "Undefined"));
    }
}

TEST(ExpReader, CutShortEscapeRecordEndsReadingWithSuccess) {
    const auto read = readExp({0x01, 0x02, 0x80, 0x02});
    EXPECT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(), Stitches{plain(1, 2)});
}

TEST(ExpReader, EveryRecordWidensTheBounds) {
    // (10, 0), a jump to (-20, 5), a colour change in place, (-15, -5).
    const auto read = readExp({0x0A, 0x00, 0x80, 0x02, 0xE2, 0x05, 0x80, 0x01, 0, 0, 0x05, 0xF6});
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches().size(), 4u);
    EXPECT_EQ(boundsOf(read.design), (Bounds{-20, -5, 10, 5}));
}
