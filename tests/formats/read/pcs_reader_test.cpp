#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

constexpr std::uint8_t kPcd = 0;
constexpr std::uint8_t kPcq = 1;
constexpr std::uint8_t kPcsSmallHoop = 2;  // Pfaff "S", 80 x 80 mm
constexpr std::uint8_t kPcsLargeHoop = 3;  // Pfaff "L", 120 x 115 mm
constexpr std::uint8_t kColor = 3;
constexpr std::uint8_t kJump = 4;
constexpr double kScale = 1.6666666667;

struct PcsRecord {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint8_t flag = 0;
    std::uint8_t colorIndex = 0;
};
using Records = std::vector<PcsRecord>;
using Palette = std::vector<std::array<std::uint8_t, 3>>;

// A 24-bit coordinate as the format stores it: negatives one below two's complement.
std::uint32_t coordinate(int value) {
    return static_cast<std::uint32_t>(value < 0 ? value + 0xFFFFFF : value);
}

DesignBytes pcsFile(std::uint8_t type, const Palette& palette, std::uint16_t stitchCount,
                    const Records& records, std::size_t trailingBytes = 2) {
    DesignBytes bytes;
    bytes.bytes({0x32, type}).u16le(static_cast<std::uint32_t>(palette.size()));
    for (const auto& color : palette)
        bytes.bytes({color[0], color[1], color[2], 0});
    bytes.u16le(stitchCount);
    for (const auto& record : records) {
        bytes.bytes({record.colorIndex}).u24le(record.x).zeros(1).u24le(record.y);
        bytes.bytes({record.flag});
    }
    return bytes.zeros(trailingBytes);
}

// A PCD file (no palette, no hoop) counting every record as a stitch record.
DesignBytes pcdFile(const Records& records) {
    return pcsFile(kPcd, {}, static_cast<std::uint16_t>(records.size()), records);
}

ReadOutcome readPcx(const DesignBytes& bytes) {
    return readDesign(&HMKDesign::importPcxDesignFromURL, bytes, "pcs");
}

struct ErrorCase {
    std::string name;
    DesignBytes file;
    int code;
    std::string message;
    std::size_t stitchesKept = 0;
    friend void PrintTo(const ErrorCase& value, std::ostream* out) { *out << value.name; }
};

class PcxErrors : public testing::TestWithParam<ErrorCase> {};

struct TypeCase {
    std::uint8_t type;
    std::string designType;
    std::string hoopName;
    friend void PrintTo(const TypeCase& value, std::ostream* out) { *out << value.designType; }
};

class PcxTypeByte : public testing::TestWithParam<TypeCase> {};

struct JumpCase {
    std::string name;
    DesignBytes file;
    std::vector<bool> jumps;
    friend void PrintTo(const JumpCase& value, std::ostream* out) { *out << value.name; }
};

class PcxJumps : public testing::TestWithParam<JumpCase> {};

const std::string kTooSmall = "Unable to read PCx (file too small)";
const std::string kInvalidPosition = "Unable to read PCx (invalid stitch position)";

}  // namespace

TEST_P(PcxErrors, FailsWithItsCodeKeepingEarlierStitches) {
    auto outcome = readPcx(GetParam().file);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(outcome.error.code, GetParam().code);
    EXPECT_EQ(outcome.error.message(), GetParam().message);
    EXPECT_EQ(outcome.design.stitches().size(), GetParam().stitchesKept);
}

INSTANTIATE_TEST_SUITE_P(
    PcxReader, PcxErrors,
    testing::Values(
        ErrorCase{"FewerThanSixBytes", DesignBytes().bytes({0x32, 2, 0, 0, 0}), 160, kTooSmall},
        ErrorCase{"PaletteRunsPastTheEnd", DesignBytes().bytes({0x32, 3, 2, 0}).zeros(6), 160,
                  kTooSmall},
        // The size check asks for two bytes more than the counted records need.
        ErrorCase{"RecordsShortOfTwoExtraBytes", pcsFile(kPcd, {}, 2, {{}, {}}, 1), 160, kTooSmall},
        ErrorCase{"MissingMagic", DesignBytes().bytes({0x33, 2, 0, 0, 0, 0}), 161,
                  "Unable to read PCx (missing magic)"},
        ErrorCase{"TypeFour", pcsFile(4, {}, 1, {{}}), 162, "Unable to read PCx (invalid type)"},
        ErrorCase{"SeventeenColours", DesignBytes().bytes({0x32, 3, 17, 0}).zeros(4 * 17 + 13), 163,
                  "Unable to read PCx (color palette > 16)"},
        ErrorCase{"ColourIndexOutsideThePalette",
                  pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                          {{.flag = kColor}, {.x = 360}, {.flag = kColor, .colorIndex = 1}, {}}),
                  164, "Unable to read PCS (invalid color index)", 1},
        // 721 x 1.6666666667 = 1201.7 exceeds 1200; y is limited to 1150.
        ErrorCase{"XBeyond1200", pcdFile({{}, {.x = 6}, {.x = 721}}), 165, kInvalidPosition, 1},
        ErrorCase{"YBeyond1150", pcdFile({{}, {.y = 691}}), 165, kInvalidPosition}),
    [](const auto& info) { return info.param.name; });

TEST_P(PcxTypeByte, SetsTypeVersionAndHoop) {
    auto outcome = readPcx(pcsFile(GetParam().type, {}, 1, {{}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designType(), GetParam().designType);
    EXPECT_EQ(outcome.design.designVersion(), 20);
    const auto& hoop = outcome.design.designHoop();
    EXPECT_EQ(hoop ? hoop->name() : "", GetParam().hoopName);
    EXPECT_EQ(outcome.design.hoopVendor(), GetParam().hoopName.empty() ? "" : "Pfaff");
    EXPECT_EQ(outcome.design.hoopCode(), GetParam().hoopName.empty() ? -1 : GetParam().type);
    // No colour records: the single placeholder thread.
    ASSERT_EQ(outcome.design.threads().size(), 1u);
    EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("1", "Undefined"));
}

INSTANTIATE_TEST_SUITE_P(PcxReader, PcxTypeByte,
                         testing::Values(TypeCase{kPcd, "PCD", ""}, TypeCase{kPcq, "PCQ", ""},
                                         TypeCase{kPcsSmallHoop, "PCS", "S"},
                                         TypeCase{kPcsLargeHoop, "PCS", "L"}),
                         [](const auto& info) { return "Type" + std::to_string(info.param.type); });

TEST(PcxReader, TurnsAbsolutePositionsIntoScaledMovesAfterTheFirstRecord) {
    auto outcome = readPcx(pcdFile({{.x = 60, .y = 30},
                                    {.x = 0xFFFFFF, .y = 0x800000},  // 0 and -8388607
                                    {.x = coordinate(-2000), .y = 689},
                                    {.x = 719, .y = 689}}));
    ASSERT_TRUE(outcome.succeeded);
    std::vector<HMKStitch> expected = {
        HMKStitch(static_cast<float>(-60 * kScale),
                  static_cast<float>(-8388607 * kScale - 30 * kScale), true, false),
        HMKStitch(static_cast<float>(-2000 * kScale),
                  static_cast<float>(689 * kScale + 8388607 * kScale), true, false),
        HMKStitch(static_cast<float>(719 * kScale + 2000 * kScale), 0, true, false)};
    EXPECT_EQ(outcome.design.stitches(), expected);
    EXPECT_FLOAT_EQ(outcome.design.xMin(), static_cast<float>(-60 * kScale - 2000 * kScale));
    EXPECT_FLOAT_EQ(outcome.design.yMin(), static_cast<float>(-8388607 * kScale - 30 * kScale));
}

TEST(PcxReader, PcsCentresPositionsInTheHoopAndKeepsTheBounds) {
    // Hoop "S" is 80 mm: 400 units come off both axes, and the needle starts at the centre,
    // where the first colour record (at raw 0, 0) leaves it.
    auto outcome = readPcx(pcsFile(kPcsSmallHoop, {{0, 0, 0}}, 2,
                                   {{.flag = kColor}, {.x = 300, .y = 210}, {.x = 360, .y = 210}}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.stitches().size(), 2u);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[0].deltaX, 100);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[0].deltaY, -50);
    EXPECT_FLOAT_EQ(outcome.design.xMin(), 100);
    EXPECT_FLOAT_EQ(outcome.design.xMax(), 200);
}

TEST_P(PcxJumps, MarksJumps) {
    auto outcome = readPcx(GetParam().file);
    ASSERT_TRUE(outcome.succeeded);
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), GetParam().jumps.size());
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        EXPECT_EQ(stitches[i].isJumpStitch, GetParam().jumps[i]) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    PcxReader, PcxJumps,
    testing::Values(
        // 150 raw units are 250 in 0.1 mm, 60 are 100, -73 are -121.7.
        JumpCase{"MovesBeyond12Mm",
                 pcdFile({{}, {.x = 150}, {.x = 210}, {.x = 210, .y = coordinate(-73)}}),
                 {true, false, true}},
        JumpCase{"RepeatedPositionMarksTheMoveBefore",
                 pcdFile({{}, {.x = 60}, {.x = 60}, {.x = 66}}),
                 {true, false, false}},
        JumpCase{
            "FlagFourInPcs", pcsFile(kPcsLargeHoop, {}, 2, {{}, {.x = 6, .flag = kJump}}), {true}},
        JumpCase{"FlagFourInPcdIsAStitch",
                 pcsFile(kPcd, {}, 2, {{}, {.x = 6, .flag = kJump}}),
                 {false}}),
    [](const auto& info) { return info.param.name; });

TEST(PcxReader, ColourRecordsAddPaletteThreadsAndColourChanges) {
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{255, 128, 0}, {0, 0, 255}}, 3,
                                   {{.flag = kColor},
                                    {.x = 360, .y = 405},
                                    {.flag = kColor, .colorIndex = 1},
                                    {.x = 420, .y = 405},
                                    {.y = 30, .flag = kColor},  // either coordinate 0: no move
                                    {.x = 426, .y = 405}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 20);
    const auto& threads = outcome.design.threads();
    ASSERT_EQ(threads.size(), 3u);
    EXPECT_EQ(threads[0], HMKThread(HMKColor(1.0, 128 / 255.0, 0.0),
                                    "Individual color (255, 128, 0)", "", "", "Threadcolors"));
    EXPECT_EQ(threads[1].name, "Individual color (0, 0, 255)");
    EXPECT_EQ(threads[2].name, "Individual color (255, 128, 0)");

    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), 5u);
    for (std::size_t i : {1u, 3u}) {
        EXPECT_EQ(stitches[i], HMKStitch(0, 0, false, true)) << i;
    }
    EXPECT_FALSE(stitches[2].isColorChange);
    EXPECT_FLOAT_EQ(stitches[2].deltaX, 100);
}

TEST(PcxReader, ColourRecordAwayFromTheOriginMovesAndRaisesTheVersionTo21) {
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                                   {{.flag = kColor},
                                    {.x = 360, .y = 345},
                                    {.x = 366, .y = 351, .flag = kColor},
                                    {.x = 366, .y = 351}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 21);
    ASSERT_EQ(outcome.design.stitches().size(), 3u);
    EXPECT_TRUE(outcome.design.stitches()[1].isColorChange);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[1].deltaX, 10);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[1].deltaY, 10);
}

TEST(PcxReader, PcdAndPcqReadFlagThreeAsStitchAndStretchTheBoundsToTheOrigin) {
    for (std::uint8_t type : {kPcd, kPcq}) {
        auto outcome = readPcx(pcsFile(type, {}, 2, {{}, {.x = 60, .flag = kColor}}));
        ASSERT_TRUE(outcome.succeeded);
        EXPECT_EQ(
            outcome.design.stitches(),
            std::vector<HMKStitch>{HMKStitch(static_cast<float>(60 * kScale), 0, false, false)});
        EXPECT_EQ(outcome.design.threads().size(), 1u);
        // PCD and PCQ stretch the box to the origin, horizontally only.
        EXPECT_EQ(outcome.design.xMin(), 0);
        EXPECT_FLOAT_EQ(outcome.design.xMax(), static_cast<float>(60 * kScale));
        EXPECT_EQ(outcome.design.yMin(), 0);
    }
}

TEST(PcxReader, ReadsTheCountedStitchRecordsWhileTheFileLasts) {
    // Colour records are not counted, so the record after the two counted ones is never read
    // (it would fail the position check).
    auto counted = pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                           {{.flag = kColor}, {.x = 360}, {.x = 366}, {.x = 9999}});
    EXPECT_EQ(readPcx(counted).design.stitches().size(), 2u);
    auto none = readPcx(pcsFile(kPcsLargeHoop, {}, 0, {{.flag = kColor}}));
    EXPECT_TRUE(none.succeeded);
    EXPECT_TRUE(none.design.stitches().empty());
    // Colour records take room the counted records were promised, so the file ends first.
    auto runsOut = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2, {{.flag = kColor}, {.x = 6}}));
    EXPECT_TRUE(runsOut.succeeded);
    EXPECT_EQ(runsOut.design.stitches().size(), 1u);
}
