#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

constexpr std::size_t kStitchDataOffset = 7544;

// A SEW file with the given colour codes and stitch records.
DesignBytes sewFile(const std::vector<std::uint32_t>& codes,
                    const std::vector<std::uint8_t>& records) {
    DesignBytes bytes;
    bytes.u16le(static_cast<std::uint32_t>(codes.size()));
    for (auto code : codes)
        bytes.u16le(code);
    return bytes.padTo(kStitchDataOffset).bytes(records);
}

ReadOutcome readSew(const DesignBytes& bytes) {
    return readDesign(&HMKDesign::importSewDesignFromURL, bytes, "sew");
}

}  // namespace

TEST(SewReader, FileEndingAtTheStitchDataFailsWith90) {
    auto outcome = readSew(DesignBytes().u16le(1).u16le(1).padTo(kStitchDataOffset));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.code, 90);
    EXPECT_EQ(outcome.error.message(),
              "Unable to read SEW: file size too small to hold any stitches.");
    EXPECT_EQ(outcome.design.designType(), "SEW");
}

TEST(SewReader, ColourCountOutsideOneToTwelveFailsWith91) {
    for (std::uint32_t count : {0u, 13u, 0xFFFFu}) {
        DesignBytes bytes;
        bytes.u16le(count).padTo(kStitchDataOffset).bytes({0x01, 0x01});
        auto outcome = readSew(bytes);
        EXPECT_FALSE(outcome.succeeded) << count;
        EXPECT_EQ(outcome.error.code, 91) << count;
        EXPECT_EQ(outcome.error.message(), "Unable to read SEW: Number of colors invalid.");
        EXPECT_TRUE(outcome.design.threads().empty());
    }
}

TEST(SewReader, TwelveColoursAreAccepted) {
    auto outcome = readSew(sewFile(std::vector<std::uint32_t>(12, 1), {0x01, 0x01}));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.threads().size(), 12u);
}

TEST(SewReader, ThreadsTakeTheirKeysFromTheJanomeCodes) {
    auto outcome = readSew(sewFile({1, 2, 12}, {0x01, 0x01}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 10);
    ASSERT_EQ(outcome.design.threads().size(), 3u);
    EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("002", "Janome"));
    EXPECT_EQ(outcome.design.threads()[1], HMKThread::fromPaletteKey("001", "Janome"));
    EXPECT_EQ(outcome.design.threads()[2], HMKThread::fromPaletteKey("207", "Janome"));
}

TEST(SewReader, ExtendedColourCodeRaisesTheVersionTo20) {
    auto outcome = readSew(sewFile({1, 13}, {0x01, 0x01}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designVersion(), 20);
    EXPECT_EQ(outcome.design.threads()[1].key, "003");
}

TEST(SewReader, UnknownColourCodeGivesAThreadWithoutKey) {
    auto outcome = readSew(sewFile({500}, {0x01, 0x01}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.threads().size(), 1u);
    EXPECT_EQ(outcome.design.threads()[0], HMKThread::fromPaletteKey("", "Janome"));
}

TEST(SewReader, DecodesEveryRecordKind) {
    auto outcome = readSew(sewFile({1, 2}, {
                                               0x05, 0xFB,              // stitch (5, -5)
                                               0x80, 0x01, 0x07, 0x07,  // colour change
                                               0x80, 0x02, 0x0A, 0xF6,  // jump (10, -10)
                                               0x80, 0x04, 0x05, 0x05,  // (0, 0), then (5, 5)
                                           }));
    ASSERT_TRUE(outcome.succeeded);
    std::vector<HMKStitch> expected = {HMKStitch(5, -5, false, false), HMKStitch(0, 0, false, true),
                                       HMKStitch(10, -10, true, false),
                                       HMKStitch(0, 0, false, false),
                                       HMKStitch(5, 5, false, false)};
    EXPECT_EQ(outcome.design.stitches(), expected);
    // Colour changes take the next thread of the table; they add none.
    EXPECT_EQ(outcome.design.threads().size(), 2u);
}

TEST(SewReader, EndRecordStopsReading) {
    auto outcome = readSew(sewFile({1}, {0x01, 0x01, 0x80, 0x10, 0x02, 0x02, 0x03, 0x03}));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(SewReader, EscapeRecordInTheLastThreeBytesEndsReading) {
    // 0x80 0x04 would be a complete 2-byte record, but every escape needs four bytes left.
    auto outcome = readSew(sewFile({1}, {0x01, 0x01, 0x80, 0x04}));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(SewReader, LastOddByteIsIgnored) {
    auto outcome = readSew(sewFile({1}, {0x01, 0x01, 0x05}));
    EXPECT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
}

TEST(SewReader, EveryRecordWidensTheBounds) {
    auto outcome = readSew(sewFile({1}, {0x0A, 0x00, 0x80, 0x02, 0xE2, 0x05, 0x05, 0xF6}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.xMin(), -20);
    EXPECT_EQ(outcome.design.xMax(), 10);
    EXPECT_EQ(outcome.design.yMin(), -5);
    EXPECT_EQ(outcome.design.yMax(), 5);
}
