#include <map>

#include "formats/write/pec_thumbnails.h"
#include "support/test_support.h"

namespace {

// Two Brother threads (codes 2 and 7), a leading jump, a jump and a colour change.
HMKDesign tinyDesign() {
    HMKDesign design =
        makeDesign({jump(-10, 5), stitch(3, -4), jump(20, 0), change(), stitch(-5.5f, 2.5f)},
                   {makeThread("405", "Brother"), makeThread("620", "Brother")});
    design.setDesignName("Tiny.pes");
    return design;
}

DesignBytes tinyPecSection() {
    return DesignBytes()
        .text("LA:Tiny            \r")
        .padTo(32, ' ')
        .bytes({0xFF, 0x00, 0x06, 0x26})
        .padTo(48, ' ')
        .bytes({0x01, 0x02, 0x07})  // threads - 1, codes
        .padTo(512, ' ')
        .bytes({0x00, 0x00, 0x24, 0x00, 0x00,  // 36 bytes follow the header
                0x31, 0xFF, 0xF0, 23,   0,    4,    0,    0xE0,
                0x01, 0xB0, 0x01, 0x90, 0x0B, 0x90, 0x02,  // width / 2, height / 2
                0x9F, 0xF6, 0x9F, 0xFB,                    // jump (-10, 5): y negated
                0x03, 0x04,                                // (3, -4)
                0x90, 0x14, 0x90, 0x00,                    // jump (20, 0)
                0xFE, 0xB0, 0x02,                          // colour change, move not written
                0x7A, 0x7D,                                // floor(-5.5) = -6, floor(-2.5) = -3
                0xFF});
}

}  // namespace

TEST(PesWriter, WritesHeaderBlocksColourTablePecSectionAndThumbnails) {
    HMKDesign design = tinyDesign();
    const Bytes expected =
        DesignBytes()
            .text("#PES0001")
            .bytes({0xB4, 0x00, 0x00,  // PEC section at 180
                    0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x07, 0x00})
            .text("CEmbOne")
            .repeat({0xDE, 0x03, 0xE9, 0x03, 0xF2, 0x03, 0xE7, 0x03},
                    2)  // from xMin -10 and yMin 1 only
            .bytes({0, 0,    0x80, 0x3F, 0, 0,    0,    0, 0, 0,    0,    0,    0,
                    0, 0x80, 0x3F, 0,    0, 0x7A, 0x44, 0, 0, 0x7A, 0x44, 0x01, 0x00})
            .bytes({0xF6, 0xFF, 0xFF, 0xFF, 23, 0, 4, 0})  // xMin, -yMin, size
            .bytes({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0x07, 0})
            .text("CSewSeg")
            .bytes({
                0x00, 0x00, 0x02, 0x00, 0x01, 0x00, 0xF9, 0xFF, 0xFF, 0xFF,  // (-7, 1)
                0x03, 0x08, 0x00, 0x00, 0x02, 0x00, 0x02, 0x00,              // after the jump
                0x0D, 0x00, 0xFF, 0xFF, 0x0D, 0x00, 0xFF, 0xFF, 0x03, 0x08,
                0x01, 0x00, 0x07, 0x00, 0x02, 0x00,  // colour change
                0x0D, 0x00, 0xFF, 0xFF, 0x0D, 0x00, 0xFF, 0xFF, 0x03, 0x08,
                0x00, 0x00, 0x07, 0x00, 0x03, 0x00, 0x0D, 0x00, 0xFF, 0xFF,
                0x0D, 0x00, 0xFF, 0xFF, 0x08, 0x00, 0xFC, 0xFF,  // round(7.5) = 8, round(-3.5) = -4
            })
            .bytes({0x02, 0, 0, 0, 0x02, 0, 0x03, 0, 0x07, 0, 0x00, 0, 0, 0})
            .bytes(tinyPecSection())
            .bytes(pecThumbnails(design, true));
    EXPECT_EQ(writtenBy(&HMKDesign::exportPesDesignToURL, design), expected);
    EXPECT_EQ(design.designType(), "PES");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_FALSE(design.designHoop());

    HMKDesign pec = tinyDesign();
    pec.setDesignHoop(HMKDesign::hoops().front());
    EXPECT_EQ(pec.exportPecSegmentToData(), Bytes(tinyPecSection()));
    EXPECT_EQ(writtenBy(&HMKDesign::exportPecDesignToURL, pec),
              Bytes(DesignBytes()
                        .text("#PEC0001")
                        .bytes(tinyPecSection())
                        .bytes(pecThumbnails(pec, false))));
    EXPECT_EQ(pec.designType(), "PEC");
    EXPECT_EQ(pec.designVersion(), 10);
    EXPECT_FALSE(pec.designHoop());
}

TEST(PesWriter, StitchDataAndColourCodes) {
    const std::pair<HMKDesign, Bytes> cases[] = {
        // Colour changes alternate 2 and 1.
        {makeDesign({change(), change(), change()}),
         {0xFE, 0xB0, 0x02, 0xFE, 0xB0, 0x01, 0xFE, 0xB0, 0x02, 0xFF}},
        // Jumps use the long form, stitches the short one.
        {makeDesign({jump(-3, 0), stitch(-3, 0), stitch(63, -63), jump(2047, -2048)}),
         {0x9F, 0xFD, 0x90, 0x00, 0x7D, 0x00, 0x3F, 0x3F, 0x97, 0xFF, 0x98, 0x00, 0xFF}},
    };
    for (auto [design, stitchData] : cases) {
        EXPECT_EQ(slice(design.exportPecSegmentToData(), 532, stitchData.size()), stitchData);
    }
    // Known keys give their code, unknown ones 16; other threads are matched first.
    const std::pair<HMKThread, int> threads[] = {
        {makeThread("007", "Brother"), 1},
        {makeThread("x7", "Brother"), 64},
        {makeThread("620", "Brother"), 7},
        {makeThread("zzz", "Brother"), 16},
        {makeThread("", "", HMKThread::fromPaletteKey("620", "Brother").color), 7}};
    for (const auto& [thread, code] : threads) {
        HMKDesign design = makeDesign({stitch(1, 1)}, {thread});
        EXPECT_EQ(writtenBy(&HMKDesign::exportPecDesignToURL, design)[8 + 49], code) << thread.key;
        EXPECT_EQ(design.threads()[0].palette, "Brother");
    }
}

TEST(PesWriter, PesFilesHoldAThumbnailOfTheDesignAndOnePerThread) {
    HMKDesign design = makeDesign({stitch(1, 1), change(), change()});
    const Bytes file = writtenBy(&HMKDesign::exportPesDesignToURL, design);
    const std::size_t pecOffset = file[8] | file[9] << 8 | file[10] << 16;
    EXPECT_EQ(file.size(), pecOffset + 512 + (file[pecOffset + 514] | file[pecOffset + 515] << 8) +
                               4 * kPecThumbnailBytes);
}
