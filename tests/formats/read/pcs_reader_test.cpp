#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"

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

Bytes pcsFile(std::uint8_t type, const Palette& palette, std::uint16_t stitchCount,
              const Records& records, std::size_t trailingBytes = 2) {
    DesignBytes bytes;
    bytes.bytes({0x32, type}).u16le(static_cast<std::uint32_t>(palette.size()));
    for (const auto& color : palette)
        bytes.bytes({color[0], color[1], color[2], 0});
    bytes.u16le(stitchCount);
    for (const auto& record : records)
        bytes.bytes({record.colorIndex})
            .u24le(record.x)
            .zeros(1)
            .u24le(record.y)
            .bytes({record.flag});
    return bytes.zeros(trailingBytes);
}

// A PCD file (no palette, no hoop) counting every record as a stitch record.
Bytes pcdFile(const Records& records) {
    return pcsFile(kPcd, {}, static_cast<std::uint16_t>(records.size()), records);
}

ReadOutcome readPcx(const Bytes& bytes) {
    return readFile(&HMKDesign::importPcxDesignFromURL, bytes, "pcs");
}

float scaled(double units) {
    return static_cast<float>(units * kScale);
}

}  // namespace

TEST(PcxReader, FailsWithItsCodeKeepingEarlierStitches) {
    const std::string tooSmall = "Unable to read PCx (file too small)";
    const std::string invalidPosition = "Unable to read PCx (invalid stitch position)";
    const std::tuple<std::string_view, Bytes, int, std::string, std::size_t> cases[] = {
        {"fewer than six bytes", {0x32, 2, 0, 0, 0}, 160, tooSmall, 0},
        {"palette runs past the end", DesignBytes().bytes({0x32, 3, 2, 0}).zeros(6), 160, tooSmall,
         0},
        // The size check asks for two bytes more than the counted records need.
        {"records short of two extra bytes", pcsFile(kPcd, {}, 2, {{}, {}}, 1), 160, tooSmall, 0},
        {"missing magic", {0x33, 2, 0, 0, 0, 0}, 161, "Unable to read PCx (missing magic)", 0},
        {"type four", pcsFile(4, {}, 1, {{}}), 162, "Unable to read PCx (invalid type)", 0},
        {"seventeen colours", DesignBytes().bytes({0x32, 3, 17, 0}).zeros(4 * 17 + 13), 163,
         "Unable to read PCx (color palette > 16)", 0},
        {"colour index outside the palette",
         pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                 {{.flag = kColor}, {.x = 360}, {.flag = kColor, .colorIndex = 1}, {}}),
         164, "Unable to read PCS (invalid color index)", 1},
        // 721 x 1.6666666667 = 1201.7 exceeds 1200; y is limited to 1150.
        {"x beyond 1200", pcdFile({{}, {.x = 6}, {.x = 721}}), 165, invalidPosition, 1},
        {"y beyond 1150", pcdFile({{}, {.y = 691}}), 165, invalidPosition, 0},
    };
    for (const auto& [name, bytes, code, message, stitchesKept] : cases) {
        SCOPED_TRACE(name);
        const auto read = readPcx(bytes);
        expectFailure(read, code, message);
        EXPECT_EQ(read.design.stitches().size(), stitchesKept);
    }
}

TEST(PcxReader, TypeByteSetsTypeVersionAndHoop) {
    const std::tuple<std::uint8_t, std::string, std::string> cases[] = {
        {kPcd, "PCD", ""},
        {kPcq, "PCQ", ""},
        {kPcsSmallHoop, "PCS", "S"},
        {kPcsLargeHoop, "PCS", "L"}};
    for (const auto& [type, designType, hoopName] : cases) {
        SCOPED_TRACE(+type);
        const auto read = readPcx(pcsFile(type, {}, 1, {{}}));
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(read.design.designType(), designType);
        EXPECT_EQ(read.design.designVersion(), 20);
        const auto& hoop = read.design.designHoop();
        EXPECT_EQ(hoop ? hoop->name() : "", hoopName);
        EXPECT_EQ(read.design.hoopVendor(), hoopName.empty() ? "" : "Pfaff");
        EXPECT_EQ(read.design.hoopCode(), hoopName.empty() ? -1 : type);
        // No colour records: the single placeholder thread.
        EXPECT_EQ(read.design.threads(), std::vector{HMKThread::fromPaletteKey("1", "Undefined")});
    }
}

TEST(PcxReader, TurnsAbsolutePositionsIntoScaledMovesAfterTheFirstRecord) {
    const auto read = readPcx(pcdFile({{.x = 60, .y = 30},
                                       {.x = 0xFFFFFF, .y = 0x800000},  // 0 and -8388607
                                       {.x = coordinate(-2000), .y = 689},
                                       {.x = 719, .y = 689}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(),
              (Stitches{jump(scaled(-60), static_cast<float>(-8388607 * kScale - 30 * kScale)),
                        jump(scaled(-2000), static_cast<float>(689 * kScale + 8388607 * kScale)),
                        jump(static_cast<float>(719 * kScale + 2000 * kScale), 0)}));
    EXPECT_FLOAT_EQ(read.design.xMin(), static_cast<float>(-60 * kScale - 2000 * kScale));
    EXPECT_FLOAT_EQ(read.design.yMin(), static_cast<float>(-8388607 * kScale - 30 * kScale));
}

TEST(PcxReader, PcsCentresPositionsInTheHoopAndKeepsTheBounds) {
    // Hoop "S" is 80 mm: 400 units come off both axes, and the needle starts at the centre,
    // where the first colour record (at raw 0, 0) leaves it.
    const auto read =
        readPcx(pcsFile(kPcsSmallHoop, {{0, 0, 0}}, 2,
                        {{.flag = kColor}, {.x = 300, .y = 210}, {.x = 360, .y = 210}}));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.stitches().size(), 2u);
    EXPECT_FLOAT_EQ(read.design.stitches()[0].deltaX, 100);
    EXPECT_FLOAT_EQ(read.design.stitches()[0].deltaY, -50);
    EXPECT_FLOAT_EQ(read.design.xMin(), 100);
    EXPECT_FLOAT_EQ(read.design.xMax(), 200);
}

TEST(PcxReader, MarksJumps) {
    const std::tuple<std::string_view, Bytes, std::string> cases[] = {
        // 150 raw units are 250 in 0.1 mm, 60 are 100, -73 are -121.7.
        {"moves beyond 12 mm",
         pcdFile({{}, {.x = 150}, {.x = 210}, {.x = 210, .y = coordinate(-73)}}), "JSJ"},
        {"a repeated position marks the move before",
         pcdFile({{}, {.x = 60}, {.x = 60}, {.x = 66}}), "JSS"},
        {"flag 4 in PCS", pcsFile(kPcsLargeHoop, {}, 2, {{}, {.x = 6, .flag = kJump}}), "J"},
        {"flag 4 in PCD is a stitch", pcsFile(kPcd, {}, 2, {{}, {.x = 6, .flag = kJump}}), "S"},
    };
    for (const auto& [name, bytes, kinds] : cases) {
        SCOPED_TRACE(name);
        const auto read = readPcx(bytes);
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(kindsOf(read.design.stitches()), kinds);
    }
}

TEST(PcxReader, ColourRecordsAddPaletteThreadsAndColourChanges) {
    const auto read = readPcx(pcsFile(kPcsLargeHoop, {{255, 128, 0}, {0, 0, 255}}, 3,
                                      {{.flag = kColor},
                                       {.x = 360, .y = 405},
                                       {.flag = kColor, .colorIndex = 1},
                                       {.x = 420, .y = 405},
                                       {.y = 30, .flag = kColor},  // either coordinate 0: no move
                                       {.x = 426, .y = 405}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designVersion(), 20);
    const auto& threads = read.design.threads();
    ASSERT_EQ(threads.size(), 3u);
    EXPECT_EQ(threads[0], HMKThread(HMKColor(1.0, 128 / 255.0, 0.0),
                                    "Individual color (255, 128, 0)", "", "", "Threadcolors"));
    EXPECT_EQ(threads[1].name, "Individual color (0, 0, 255)");
    EXPECT_EQ(threads[2].name, "Individual color (255, 128, 0)");
    const auto& stitches = read.design.stitches();
    ASSERT_EQ(stitches.size(), 5u);
    EXPECT_EQ(stitches[1], change(0, 0));
    EXPECT_EQ(stitches[3], change(0, 0));
    EXPECT_FALSE(stitches[2].isColorChange);
    EXPECT_FLOAT_EQ(stitches[2].deltaX, 100);
}

TEST(PcxReader, ColourRecordAwayFromTheOriginMovesAndRaisesTheVersionTo21) {
    const auto read = readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                                      {{.flag = kColor},
                                       {.x = 360, .y = 345},
                                       {.x = 366, .y = 351, .flag = kColor},
                                       {.x = 366, .y = 351}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designVersion(), 21);
    ASSERT_EQ(read.design.stitches().size(), 3u);
    EXPECT_TRUE(read.design.stitches()[1].isColorChange);
    EXPECT_FLOAT_EQ(read.design.stitches()[1].deltaX, 10);
    EXPECT_FLOAT_EQ(read.design.stitches()[1].deltaY, 10);
}

TEST(PcxReader, PcdAndPcqReadFlagThreeAsStitchAndStretchTheBoundsToTheOriginHorizontally) {
    for (std::uint8_t type : {kPcd, kPcq}) {
        const auto read = readPcx(pcsFile(type, {}, 2, {{}, {.x = 60, .flag = kColor}}));
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(read.design.stitches(), Stitches{plain(scaled(60), 0)});
        EXPECT_EQ(read.design.threads().size(), 1u);
        EXPECT_EQ(read.design.xMin(), 0);
        EXPECT_FLOAT_EQ(read.design.xMax(), scaled(60));
        EXPECT_EQ(read.design.yMin(), 0);
    }
}

TEST(PcxReader, ReadsTheCountedStitchRecordsWhileTheFileLasts) {
    // Colour records are not counted, so the record after the two counted ones is never read
    // (it would fail the position check).
    EXPECT_EQ(readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2,
                              {{.flag = kColor}, {.x = 360}, {.x = 366}, {.x = 9999}}))
                  .design.stitches()
                  .size(),
              2u);
    const auto none = readPcx(pcsFile(kPcsLargeHoop, {}, 0, {{.flag = kColor}}));
    EXPECT_TRUE(none.ok);
    EXPECT_TRUE(none.design.stitches().empty());
    // Colour records take room the counted records were promised, so the file ends first.
    const auto runsOut =
        readPcx(pcsFile(kPcsLargeHoop, {{1, 2, 3}}, 2, {{.flag = kColor}, {.x = 6}}));
    EXPECT_TRUE(runsOut.ok);
    EXPECT_EQ(runsOut.design.stitches().size(), 1u);
}
