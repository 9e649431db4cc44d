#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

constexpr std::size_t kHeaderSize = 512;

// A KSM file: the unread header, then one record (y magnitude, x magnitude, flag) per entry.
DesignBytes ksmFile(const std::vector<std::vector<std::uint8_t>>& records) {
    DesignBytes bytes;
    bytes.padTo(kHeaderSize);
    for (const auto& record : records)
        bytes.bytes(record);
    return bytes;
}

// Records of (1, 1) with the given flags.
DesignBytes ksmFlags(const std::vector<std::uint8_t>& flags) {
    std::vector<std::vector<std::uint8_t>> records;
    for (auto flag : flags)
        records.push_back({0x01, 0x01, flag});
    return ksmFile(records);
}

ReadOutcome readKsm(const DesignBytes& bytes) {
    return readDesign(&HMKDesign::importKsmDesignFromURL, bytes, "ksm");
}

struct JumpRunCase {
    std::string name;
    std::vector<std::uint8_t> flags;
    std::vector<bool> jumps;
    std::vector<bool> colorChanges;

    friend void PrintTo(const JumpRunCase& value, std::ostream* out) { *out << value.name; }
};

class KsmJumpRuns : public testing::TestWithParam<JumpRunCase> {};

}  // namespace

TEST(KsmReader, FileOf514BytesFailsWith170) {
    auto outcome = readKsm(DesignBytes().zeros(514));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.code, 170);
    EXPECT_EQ(outcome.error.message(), "Unable to read KSM (file too small)");
    EXPECT_EQ(outcome.design.designType(), "KSM");
    EXPECT_TRUE(outcome.design.threads().empty());
}

TEST(KsmReader, FileOf515BytesReadsItsSingleRecord) {
    auto outcome = readKsm(ksmFile({{0x0A, 0x05, 0xE0}}));
    ASSERT_EQ(outcome.design.threads().size(), 1u);
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 10);
    EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("1", "Undefined"));
    // Both sign bits set; being the first record it is a jump.
    ASSERT_EQ(outcome.design.stitches().size(), 1u);
    EXPECT_EQ(outcome.design.stitches()[0], HMKStitch(-5, -10, true, false));
}

TEST(KsmReader, SignBitsNegateEachAxis) {
    auto outcome = readKsm(ksmFile({{0x02, 0x03, 0xC0}, {0x02, 0x03, 0xA0}, {0x02, 0x03, 0x80}}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.stitches().size(), 3u);
    EXPECT_EQ(outcome.design.stitches()[0].deltaX, -3);
    EXPECT_EQ(outcome.design.stitches()[0].deltaY, 2);
    EXPECT_EQ(outcome.design.stitches()[1].deltaX, 3);
    EXPECT_EQ(outcome.design.stitches()[1].deltaY, -2);
    EXPECT_EQ(outcome.design.stitches()[2].deltaX, 3);
    EXPECT_EQ(outcome.design.stitches()[2].deltaY, 2);
}

TEST(KsmReader, IncompleteLastRecordIsNotRead) {
    auto outcome = readKsm(ksmFile({{0x01, 0x01, 0x80}, {0x01, 0x01}}));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(KsmReader, FlagWithoutBit7FailsWith171AndKeepsEarlierStitches) {
    auto outcome = readKsm(ksmFlags({0x98, 0x80, 0x7F, 0x80}));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.code, 171);
    EXPECT_EQ(outcome.error.message(), "Unable to read KSM (invalid stich data)");
    EXPECT_EQ(outcome.design.stitches().size(), 2u);
}

TEST(KsmReader, EndRecordStopsReading) {
    auto outcome = readKsm(ksmFlags({0x98, 0x88, 0x80}));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST_P(KsmJumpRuns, MarksJumpsAndColourChanges) {
    auto outcome = readKsm(ksmFlags(GetParam().flags));
    ASSERT_TRUE(outcome.succeeded);
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), GetParam().flags.size());
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        EXPECT_EQ(stitches[i].isJumpStitch, GetParam().jumps[i]) << i;
        EXPECT_EQ(stitches[i].isColorChange, GetParam().colorChanges[i]) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    KsmReader, KsmJumpRuns,
    testing::Values(JumpRunCase{"FirstRecordsJumpUntilARunEnds",
                                {0x80, 0x80, 0x98, 0x80},
                                {true, true, true, false},
                                {false, false, false, false}},
                    JumpRunCase{
                        "RunEndMatchesUnderMask", {0xB8, 0x80}, {true, false}, {false, false}},
                    JumpRunCase{"Flag89StartsARun",
                                {0x98, 0x80, 0x89, 0x80, 0x98, 0x80},
                                {true, false, true, true, true, false},
                                {false, false, false, false, false, false}},
                    JumpRunCase{"Flags87UnderMaskStartARun",
                                {0x98, 0x97, 0x80, 0x98, 0x80},
                                {true, true, true, true, false},
                                {false, false, false, false, false}},
                    JumpRunCase{"ColourChangeIsAJumpAndStartsARun",
                                {0x98, 0x80, 0x8B, 0x80, 0x98, 0x80},
                                {true, false, true, true, true, false},
                                {false, false, true, false, false, false}},
                    JumpRunCase{"ColourChangeMatchesUnderMask",
                                {0x98, 0xEC, 0x80, 0x98, 0x80},
                                {true, true, true, true, false},
                                {false, true, false, false, false}}),
    [](const auto& info) { return info.param.name; });

TEST(KsmReader, ColourChangesAddThreadsCyclingThroughTwentyKeys) {
    auto outcome = readKsm(ksmFlags(std::vector<std::uint8_t>(21, 0x8B)));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.threads().size(), 22u);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(outcome.design.threads()[i],
                  HMKThread::fromPaletteKey(std::to_string(i % 20 + 1), "Undefined"))
            << i;
    }
}

TEST(KsmReader, EveryRecordWidensTheBounds) {
    auto outcome = readKsm(ksmFile({{0x00, 0x0A, 0x98}, {0x05, 0x1E, 0xC0}, {0x0A, 0x05, 0xA0}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.xMin(), -20);
    EXPECT_EQ(outcome.design.xMax(), 10);
    EXPECT_EQ(outcome.design.yMin(), -5);
    EXPECT_EQ(outcome.design.yMax(), 5);
}
