#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

ReadOutcome readExp(const DesignBytes& bytes) {
    return readDesign(&HMKDesign::importExpDesignFromURL, bytes, "exp");
}

struct ExpRecordCase {
    std::string name;
    std::vector<std::uint8_t> record;
    HMKStitch expected;
    std::size_t threads;

    friend void PrintTo(const ExpRecordCase& value, std::ostream* out) { *out << value.name; }
};

class ExpRecordKinds : public testing::TestWithParam<ExpRecordCase> {};

}  // namespace

TEST(ExpReader, OddLengthFailsWith100) {
    auto outcome = readExp(DesignBytes().bytes({0x01, 0x02, 0x03}));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(outcome.error.code, 100);
    EXPECT_EQ(outcome.error.message(), "Unable to read EXP: file contains uneven number of bytes.");
    EXPECT_EQ(outcome.design.designType(), "EXP");
}

TEST(ExpReader, EmptyFileGivesOnePlaceholderThreadAndNoStitches) {
    auto outcome = readExp(DesignBytes());
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designType(), "EXP");
    EXPECT_EQ(outcome.design.designVersion(), 10);
    EXPECT_TRUE(outcome.design.stitches().empty());
    ASSERT_EQ(outcome.design.threads().size(), 1u);
    EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("1", "Undefined"));
    EXPECT_EQ(outcome.design.xMin(), kEmptyBoundsMin);
    EXPECT_EQ(outcome.design.yMax(), kEmptyBoundsMax);
}

TEST(ExpReader, UnreadableFileReadsAsEmpty) {
    HMKDesign design;
    EXPECT_TRUE(design.importExpDesignFromURL("/nonexistent-folder/missing.exp"));
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_EQ(design.threads().size(), 1u);
}

TEST_P(ExpRecordKinds, DecodesTheRecord) {
    auto outcome = readExp(DesignBytes().bytes(GetParam().record));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.stitches().size(), 1u);
    EXPECT_EQ(outcome.design.stitches()[0], GetParam().expected);
    EXPECT_EQ(outcome.design.threads().size(), GetParam().threads);
}

INSTANTIATE_TEST_SUITE_P(
    ExpReader, ExpRecordKinds,
    testing::Values(
        ExpRecordCase{"PlainStitchIsSigned", {0x05, 0xFB}, HMKStitch(5, -5, false, false), 1},
        ExpRecordCase{
            "PlainStitchMayEndIn0x80", {0x7F, 0x80}, HMKStitch(127, -128, false, false), 1},
        ExpRecordCase{
            "EscapedZeroStitch", {0x80, 0x80, 0x11, 0x22}, HMKStitch(0, 0, false, false), 1},
        ExpRecordCase{
            "OddCodeChangesColour", {0x80, 0x01, 0x00, 0x00}, HMKStitch(0, 0, false, true), 2},
        ExpRecordCase{"ColourChangeIgnoresItsLastBytes",
                      {0x80, 0x7F, 0x09, 0x09},
                      HMKStitch(0, 0, false, true),
                      2},
        ExpRecordCase{
            "NegativeOddCodeIsJump", {0x80, 0x81, 0x05, 0x05}, HMKStitch(5, 5, true, false), 1},
        ExpRecordCase{
            "EvenCodeIsJump", {0x80, 0x02, 0x0A, 0xF6}, HMKStitch(10, -10, true, false), 1},
        ExpRecordCase{"ZeroCodeIsJump", {0x80, 0x00, 0x03, 0x04}, HMKStitch(3, 4, true, false), 1}),
    [](const auto& info) { return info.param.name; });

TEST(ExpReader, ColourChangeAddsThreadKeyedByThreadCount) {
    auto outcome = readExp(DesignBytes().bytes({0x80, 0x01, 0x00, 0x00}));
    ASSERT_EQ(outcome.design.threads().size(), 2u);
    EXPECT_EQ(outcome.design.threads()[1], HMKThread::fromPaletteKey("2", "Undefined"));
}

TEST(ExpReader, TwentyFirstColourChangeStartsTheKeysAgain) {
    DesignBytes bytes;
    for (int i = 0; i < 21; ++i)
        bytes.bytes({0x80, 0x03, 0x00, 0x00});
    auto outcome = readExp(bytes);
    ASSERT_EQ(outcome.design.threads().size(), 22u);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(outcome.design.threads()[i].key, std::to_string(i % 20 + 1)) << i;
        EXPECT_EQ(outcome.design.threads()[i].palette, "Undefined");
    }
}

TEST(ExpReader, CutShortEscapeRecordEndsReadingWithSuccess) {
    auto outcome = readExp(DesignBytes().bytes({0x01, 0x02, 0x80, 0x02}));
    EXPECT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.stitches().size(), 1u);
    EXPECT_EQ(outcome.design.stitches()[0], HMKStitch(1, 2, false, false));
}

TEST(ExpReader, EveryRecordWidensTheBounds) {
    auto outcome = readExp(DesignBytes()
                               .bytes({0x0A, 0x00})              // (10, 0)
                               .bytes({0x80, 0x02, 0xE2, 0x05})  // jump to (-20, 5)
                               .bytes({0x80, 0x01, 0x00, 0x00})  // colour change in place
                               .bytes({0x05, 0xF6}));            // (-15, -5)
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 4u);
    EXPECT_EQ(outcome.design.xMin(), -20);
    EXPECT_EQ(outcome.design.xMax(), 10);
    EXPECT_EQ(outcome.design.yMin(), -5);
    EXPECT_EQ(outcome.design.yMax(), 5);
}
