#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

constexpr std::uint8_t kPcd = 0;
constexpr std::uint8_t kPcq = 1;
constexpr std::uint8_t kPcsSmallHoop = 2;  // Pfaff "S", 80 x 80 mm
constexpr std::uint8_t kPcsLargeHoop = 3;  // Pfaff "L", 120 x 115 mm
constexpr std::uint8_t kStitch = 0;
constexpr std::uint8_t kColor = 3;
constexpr std::uint8_t kJump = 4;
constexpr double kScale = 1.6666666667;

struct PcsRecord {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint8_t flag = kStitch;
    std::uint8_t colorIndex = 0;
};

// A 24-bit coordinate as the format stores it: negatives one below two's complement.
std::uint32_t coordinate(int value) {
    return value < 0 ? static_cast<std::uint32_t>(value + 0xFFFFFF)
                     : static_cast<std::uint32_t>(value);
}

DesignBytes pcsFile(std::uint8_t type, const std::vector<std::array<std::uint8_t, 3>>& palette,
                    std::uint16_t stitchCount, const std::vector<PcsRecord>& records,
                    std::size_t trailingBytes = 2) {
    DesignBytes bytes;
    bytes.bytes({0x32, type}).u16le(static_cast<std::uint32_t>(palette.size()));
    for (const auto& color : palette)
        bytes.bytes({color[0], color[1], color[2], 0});
    bytes.u16le(stitchCount);
    for (const auto& record : records) {
        bytes.bytes({record.colorIndex})
            .u24le(record.x)
            .zeros(1)
            .u24le(record.y)
            .bytes({record.flag});
    }
    return bytes.zeros(trailingBytes);
}

// A PCD file (no palette, no hoop) counting every record as a stitch record.
DesignBytes pcdFile(const std::vector<PcsRecord>& records) {
    return pcsFile(kPcd, {}, static_cast<std::uint16_t>(records.size()), records);
}

ReadOutcome readPcx(const DesignBytes& bytes, std::string_view extension = "pcs") {
    return readDesign(&HMKDesign::importPcxDesignFromURL, bytes, extension);
}

void expectError(const ReadOutcome& outcome, int code, const std::string& message) {
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(outcome.error.code, code);
    EXPECT_EQ(outcome.error.message(), message);
}

const std::string kTooSmall = "Unable to read PCx (file too small)";
const std::string kInvalidPosition = "Unable to read PCx (invalid stitch position)";

struct TypeCase {
    std::uint8_t type;
    std::string designType;
    std::optional<std::string> hoopName;

    friend void PrintTo(const TypeCase& value, std::ostream* out) { *out << value.designType; }
};

class PcxTypeByte : public testing::TestWithParam<TypeCase> {};

}  // namespace

TEST(PcxReader, FewerThanSixBytesFailWith160) {
    expectError(readPcx(DesignBytes().bytes({0x32, 0x02, 0x00, 0x00, 0x00})), 160, kTooSmall);
}

TEST(PcxReader, MissingMagicFailsWith161) {
    expectError(readPcx(DesignBytes().bytes({0x33, 0x02, 0x00, 0x00, 0x00, 0x00})), 161,
                "Unable to read PCx (missing magic)");
}

TEST_P(PcxTypeByte, SetsTypeVersionAndHoop) {
    auto outcome = readPcx(pcsFile(GetParam().type, {}, 1, {{}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designType(), GetParam().designType);
    EXPECT_EQ(outcome.design.designVersion(), 20);
    ASSERT_EQ(outcome.design.designHoop().has_value(), GetParam().hoopName.has_value());
    if (GetParam().hoopName) {
        EXPECT_EQ(outcome.design.designHoop()->name(), *GetParam().hoopName);
        EXPECT_EQ(outcome.design.hoopVendor(), "Pfaff");
        EXPECT_EQ(outcome.design.hoopCode(), GetParam().type);
    }
}

INSTANTIATE_TEST_SUITE_P(PcxReader, PcxTypeByte,
                         testing::Values(TypeCase{kPcd, "PCD", std::nullopt},
                                         TypeCase{kPcq, "PCQ", std::nullopt},
                                         TypeCase{kPcsSmallHoop, "PCS", "S"},
                                         TypeCase{kPcsLargeHoop, "PCS", "L"}),
                         [](const auto& info) { return "Type" + std::to_string(info.param.type); });

TEST(PcxReader, UnknownTypeFailsWith162) {
    expectError(readPcx(pcsFile(4, {}, 1, {{}})), 162, "Unable to read PCx (invalid type)");
}

TEST(PcxReader, PaletteOfMoreThan16ColoursFailsWith163) {
    auto bytes = DesignBytes().bytes({0x32, kPcsLargeHoop}).u16le(17).zeros(4 * 17 + 2 + 9 + 2);
    expectError(readPcx(bytes), 163, "Unable to read PCx (color palette > 16)");
}

TEST(PcxReader, FileShorterThanItsHeaderOrRecordsFailsWith160) {
    // The palette and stitch count run past the end.
    expectError(readPcx(DesignBytes().bytes({0x32, kPcsLargeHoop}).u16le(2).zeros(6)), 160,
                kTooSmall);
    // The size check asks for two bytes more than the counted records.
    expectError(readPcx(pcsFile(kPcd, {}, 2, {{}, {}}, 1)), 160, kTooSmall);
    EXPECT_TRUE(readPcx(pcsFile(kPcd, {}, 2, {{}, {}}, 2)).succeeded);
}

TEST(PcxReader, FirstRecordOnlySetsTheStartingPoint) {
    auto outcome = readPcx(pcdFile({{.x = 60, .y = 30}, {.x = 120, .y = 90}}), "pcd");
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.stitches().size(), 1u);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[0].deltaX, 100);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[0].deltaY, 100);
    EXPECT_FALSE(outcome.design.stitches()[0].isJumpStitch);
}

TEST(PcxReader, DecodesNegativesOffsetBy0xFFFFFF) {
    auto outcome = readPcx(
        pcdFile({{}, {.x = 0xFFFFFF, .y = 0x800000}, {.x = coordinate(-2000), .y = 0xFFFFFF}}),
        "pcd");
    ASSERT_TRUE(outcome.succeeded);
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), 2u);
    EXPECT_EQ(stitches[0].deltaX, 0);
    EXPECT_EQ(stitches[0].deltaY, static_cast<float>(-8388607 * kScale));
    EXPECT_EQ(stitches[1].deltaX, static_cast<float>(-2000 * kScale));
    EXPECT_EQ(stitches[1].deltaY, static_cast<float>(8388607 * kScale));
}

TEST(PcxReader, PositionsBeyondTheUpperLimitsFailWith165) {
    expectError(readPcx(pcdFile({{}, {.x = 721}})), 165, kInvalidPosition);
    expectError(readPcx(pcdFile({{}, {.y = 691}})), 165, kInvalidPosition);
    EXPECT_TRUE(readPcx(pcdFile({{}, {.x = 719, .y = 689}})).succeeded);
}

TEST(PcxReader, StitchesDecodedBeforeAnInvalidPositionStay) {
    auto outcome = readPcx(pcdFile({{}, {.x = 6}, {.x = 721}}));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(PcxReader, MovesLongerThan12MmBecomeJumps) {
    auto outcome =
        readPcx(pcdFile({{}, {.x = 150}, {.x = 210}, {.x = 210, .y = coordinate(-73)}}), "pcd");
    ASSERT_TRUE(outcome.succeeded);
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), 3u);
    EXPECT_TRUE(stitches[0].isJumpStitch);   // 250 in x
    EXPECT_FALSE(stitches[1].isJumpStitch);  // 100 in x
    EXPECT_TRUE(stitches[2].isJumpStitch);   // -121.7 in y
}

TEST(PcxReader, PositionsAreCentredInTheHoop) {
    // Hoop "S" is 80 mm wide and high: 400 units are subtracted on both axes, and the needle
    // starts at the hoop centre, where the first colour record leaves it.
    auto outcome =
        readPcx(pcsFile(kPcsSmallHoop, {{0, 0, 0}}, 1, {{.flag = kColor}, {.x = 300, .y = 210}}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.stitches().size(), 1u);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[0].deltaX, 100);
    EXPECT_FLOAT_EQ(outcome.design.stitches()[0].deltaY, -50);
}

TEST(PcxReader, ColourRecordsAddPaletteThreadsAndColourChanges) {
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{255, 128, 0}, {0, 0, 255}}, 2,
                                   {{.flag = kColor},
                                    {.x = 360, .y = 405},
                                    {.flag = kColor, .colorIndex = 1},
                                    {.x = 420, .y = 405}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 20);
    const auto& threads = outcome.design.threads();
    ASSERT_EQ(threads.size(), 2u);
    EXPECT_EQ(threads[0].color, HMKColor(1.0, 128 / 255.0, 0.0));
    EXPECT_EQ(threads[0].name, "Individual color (255, 128, 0)");
    EXPECT_EQ(threads[0].key, "");
    EXPECT_EQ(threads[0].palette, "");
    EXPECT_EQ(threads[0].paletteName, "Threadcolors");
    EXPECT_EQ(threads[1].name, "Individual color (0, 0, 255)");

    // The colour record at (0, 0) stays where the needle is: a (0, 0) colour change.
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), 3u);
    EXPECT_FALSE(stitches[0].isColorChange);
    EXPECT_TRUE(stitches[1].isColorChange);
    EXPECT_TRUE(stitches[1].isNullStitch());
    EXPECT_FALSE(stitches[1].isJumpStitch);
    EXPECT_FLOAT_EQ(stitches[2].deltaX, 100);
    EXPECT_FALSE(stitches[2].isColorChange);
}

TEST(PcxReader, ColourRecordWithEitherCoordinateZeroDoesNotMove) {
    auto outcome = readPcx(pcsFile(
        kPcsLargeHoop, {{1, 2, 3}}, 2,
        {{.flag = kColor}, {.x = 360, .y = 345}, {.y = 30, .flag = kColor}, {.x = 366, .y = 345}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 20);
    ASSERT_EQ(outcome.design.stitches().size(), 3u);
    EXPECT_TRUE(outcome.design.stitches()[1].isColorChange);
    EXPECT_TRUE(outcome.design.stitches()[1].isNullStitch());
    EXPECT_FLOAT_EQ(outcome.design.stitches()[2].deltaX, 10);
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

TEST(PcxReader, ColourIndexOutsideThePaletteFailsWith164) {
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                                   {{.flag = kColor},
                                    {.x = 360, .y = 345},
                                    {.flag = kColor, .colorIndex = 1},
                                    {.x = 366, .y = 345}}));
    expectError(outcome, 164, "Unable to read PCS (invalid color index)");
    EXPECT_EQ(outcome.design.threads().size(), 1u);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(PcxReader, FlagFourIsAJumpInPcsOnly) {
    auto pcs = readPcx(
        pcsFile(kPcsLargeHoop, {}, 2, {{.x = 360, .y = 345}, {.x = 366, .y = 345, .flag = kJump}}));
    ASSERT_TRUE(pcs.succeeded);
    EXPECT_TRUE(pcs.design.stitches().at(0).isJumpStitch);
    auto pcd = readPcx(
        pcsFile(kPcd, {}, 2, {{.x = 360, .y = 345}, {.x = 366, .y = 345, .flag = kJump}}), "pcd");
    ASSERT_TRUE(pcd.succeeded);
    EXPECT_FALSE(pcd.design.stitches().at(0).isJumpStitch);
}

TEST(PcxReader, FlagThreeIsAnOrdinaryRecordInPcdAndPcq) {
    for (std::uint8_t type : {kPcd, kPcq}) {
        auto outcome = readPcx(pcsFile(type, {}, 2, {{}, {.x = 60, .flag = kColor}}), "pcq");
        ASSERT_TRUE(outcome.succeeded);
        ASSERT_EQ(outcome.design.stitches().size(), 1u);
        EXPECT_FALSE(outcome.design.stitches()[0].isColorChange);
        ASSERT_EQ(outcome.design.threads().size(), 1u);
        EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("1", "Undefined"));
    }
}

TEST(PcxReader, PcsWithoutColourRecordsGetsThePlaceholderThread) {
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2, {{}, {.x = 6}}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.threads().size(), 1u);
    EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("1", "Undefined"));
}

TEST(PcxReader, RepeatedPositionMarksThePreviousStitchAsJump) {
    auto outcome = readPcx(pcdFile({{}, {.x = 60}, {.x = 60}, {.x = 66}}), "pcd");
    ASSERT_TRUE(outcome.succeeded);
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), 3u);
    EXPECT_TRUE(stitches[0].isJumpStitch);
    EXPECT_FALSE(stitches[1].isJumpStitch);
    EXPECT_TRUE(stitches[1].isNullStitch());
    EXPECT_FALSE(stitches[2].isJumpStitch);
}

TEST(PcxReader, ReadingStopsAfterTheCountedStitchRecords) {
    // Colour records are not counted: two stitch records here give two stitches after the
    // colour record, and the record after them is never read.
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                                   {{.flag = kColor}, {.x = 360}, {.x = 366}, {.x = 9999}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 2u);
}

TEST(PcxReader, ZeroCountedStitchesReadNothing) {
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {}, 0, {{.flag = kColor}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_TRUE(outcome.design.stitches().empty());
    EXPECT_EQ(outcome.design.threads().size(), 1u);
}

TEST(PcxReader, RecordsRunningOutEndTheDesign) {
    // Colour records take room the counted records were promised, so the file ends first.
    auto outcome = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2, {{.flag = kColor}, {.x = 6}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(PcxReader, PcdAndPcqStretchTheBoundsToTheOriginHorizontallyOnly) {
    const std::vector<PcsRecord> records = {{.x = 60, .y = 60}, {.x = 120, .y = 120}};
    auto pcd = readPcx(pcsFile(kPcd, {}, 2, records), "pcd");
    ASSERT_TRUE(pcd.succeeded);
    EXPECT_EQ(pcd.design.xMin(), 0);
    EXPECT_FLOAT_EQ(pcd.design.xMax(), 100);
    EXPECT_FLOAT_EQ(pcd.design.yMin(), 100);
    auto pcs = readPcx(pcsFile(kPcsLargeHoop, {}, 2, records));
    ASSERT_TRUE(pcs.succeeded);
    EXPECT_FLOAT_EQ(pcs.design.xMin(), 100);
}
