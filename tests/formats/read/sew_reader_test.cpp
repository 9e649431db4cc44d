#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"

namespace {

constexpr std::size_t kStitchDataOffset = 7544;

// The colour count and codes, then the stitch records from their fixed offset on.
Bytes sewFile(const std::vector<std::uint32_t>& codes, const Bytes& records = {0x01, 0x01}) {
    DesignBytes bytes;
    bytes.u16le(static_cast<std::uint32_t>(codes.size()));
    for (auto code : codes)
        bytes.u16le(code);
    return bytes.padTo(kStitchDataOffset).bytes(records);
}

ReadOutcome readSew(const Bytes& bytes) {
    return readFile(&HMKDesign::importSewDesignFromURL, bytes, "sew");
}

}  // namespace

TEST(SewReader, FileEndingAtTheStitchDataFailsWith90) {
    const auto read = readSew(sewFile({1}, {}));
    expectFailure(read, 90, "Unable to read SEW: file size too small to hold any stitches.");
    EXPECT_EQ(read.design.designType(), "SEW");
}

TEST(SewReader, ColourCountOutsideOneToTwelveFailsWith91) {
    for (std::uint32_t count : {0u, 13u, 0xFFFFu}) {
        SCOPED_TRACE(count);
        const auto read = readSew(DesignBytes().u16le(count).padTo(kStitchDataOffset).zeros(2));
        expectFailure(read, 91, "Unable to read SEW: Number of colors invalid.");
        EXPECT_TRUE(read.design.threads().empty());
    }
    EXPECT_EQ(readSew(sewFile(std::vector<std::uint32_t>(12, 1))).design.threads().size(), 12u);
}

TEST(SewReader, ThreadsTakeTheirKeysFromTheJanomeCodes) {
    const auto read = readSew(sewFile({1, 2, 12}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designVersion(), 10);
    EXPECT_EQ(read.design.threads(), (std::vector{HMKThread::fromPaletteKey("002", "Janome"),
                                                  HMKThread::fromPaletteKey("001", "Janome"),
                                                  HMKThread::fromPaletteKey("207", "Janome")}));
}

TEST(SewReader, ExtendedColourCodeRaisesTheVersionTo20AndUnknownOnesGiveNoKey) {
    const auto read = readSew(sewFile({1, 13, 500}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designVersion(), 20);
    EXPECT_EQ(read.design.threads()[1].key, "003");
    EXPECT_EQ(read.design.threads()[2], HMKThread::fromPaletteKey("", "Janome"));
}

TEST(SewReader, DecodesEveryRecordKind) {
    const auto read = readSew(sewFile({1, 2}, {
                                                  0x05, 0xFB,              // stitch
                                                  0x80, 0x01, 0x07, 0x07,  // colour change
                                                  0x80, 0x02, 0x0A, 0xF6,  // jump
                                                  0x80, 0x04, 0x05, 0x05,  // (0, 0), then (5, 5)
                                              }));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(),
              (Stitches{plain(5, -5), change(0, 0), jump(10, -10), plain(0, 0), plain(5, 5)}));
    // Colour changes take the next thread of the table; they add none.
    EXPECT_EQ(read.design.threads().size(), 2u);
}

TEST(SewReader, ReadingEndsAtTheEndRecordAnEscapeInTheLastThreeBytesOrALoneByte) {
    // 0x80 0x04 would be a complete 2-byte record, but every escape needs four bytes left.
    for (const Bytes& records : {Bytes{0x01, 0x01, 0x80, 0x10, 0x02, 0x02, 0x03, 0x03},
                                 Bytes{0x01, 0x01, 0x80, 0x04}, Bytes{0x01, 0x01, 0x05}}) {
        const auto read = readSew(sewFile({1}, records));
        EXPECT_TRUE(read.ok);
        EXPECT_EQ(read.design.stitches(), Stitches{plain(1, 1)});
    }
}

TEST(SewReader, EveryRecordWidensTheBounds) {
    const auto read = readSew(sewFile({1}, {0x0A, 0x00, 0x80, 0x02, 0xE2, 0x05, 0x05, 0xF6}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(boundsOf(read.design), (Bounds{-20, -5, 10, 5}));
}
