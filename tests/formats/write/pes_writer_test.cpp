#include <gtest/gtest.h>

#include <map>

#include "formats/write/pec_thumbnails.h"
#include "write_test_support.h"

namespace {

class PesWriter : public WriterTest {};

// Two Brother threads (codes 2 and 7), a leading jump, a jump and a colour change.
HMKDesign tinyDesign(const std::string& name) {
    return makeDesign({jump(-10, 5), plain(3, -4), jump(20, 0), change(0, 0), plain(-5.5f, 2.5f)},
                      {makeThread("405", "Brother"), makeThread("620", "Brother")}, name);
}

Bytes tinyPecSection() {
    Bytes section = bytesOf("LA:Tiny            \r");
    append(section, bytesOf(std::string(12, ' ')));
    append(section, bytesOf({0xFF, 0x00, 0x06, 0x26}));
    append(section, bytesOf(std::string(12, ' ')));
    append(section, bytesOf({0x01, 0x02, 0x07}));  // threads - 1, codes
    section.resize(512, ' ');
    append(section, bytesOf({0x00, 0x00, 0x24, 0x00, 0x00,  // 36 bytes follow the header
                             0x31, 0xFF, 0xF0, 23,   0,    4,    0,    0xE0,
                             0x01, 0xB0, 0x01, 0x90, 0x0B, 0x90, 0x02,  // width / 2, height / 2
                             0x9F, 0xF6, 0x9F, 0xFB,                    // jump (-10, 5): y negated
                             0x03, 0x04,                                // (3, -4)
                             0x90, 0x14, 0x90, 0x00,                    // jump (20, 0)
                             0xFE, 0xB0, 0x02,  // colour change, move not written
                             0x7A, 0x7D,        // floor(-5.5) = -6, floor(-2.5) = -3
                             0xFF}));
    return section;
}

TEST_F(PesWriter, WritesHeaderBlocksColourTablePecSectionAndThumbnails) {
    HMKDesign design = tinyDesign("Tiny.pes");
    Bytes expected = bytesOf("#PES0001");
    append(expected,
           bytesOf({0xB4, 0x00, 0x00,  // PEC section at 180
                    0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x07, 0x00}));
    append(expected, bytesOf("CEmbOne"));
    for (int pair = 0; pair < 2; ++pair) {  // from xMin -10 and yMin 1 only
        append(expected, bytesOf({0xDE, 0x03, 0xE9, 0x03, 0xF2, 0x03, 0xE7, 0x03}));
    }
    append(expected, bytesOf({0, 0,    0x80, 0x3F, 0, 0,    0,    0, 0, 0,    0,    0,    0,
                              0, 0x80, 0x3F, 0,    0, 0x7A, 0x44, 0, 0, 0x7A, 0x44, 0x01, 0x00}));
    append(expected, bytesOf({0xF6, 0xFF, 0xFF, 0xFF, 23, 0, 4, 0}));  // xMin, -yMin, size
    append(expected, bytesOf({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0x07, 0}));
    append(expected, bytesOf("CSewSeg"));
    append(expected,
           bytesOf({
               0x00, 0x00, 0x02, 0x00, 0x01, 0x00, 0xF9, 0xFF, 0xFF, 0xFF,  // (-7, 1)
               0x03, 0x08, 0x00, 0x00, 0x02, 0x00, 0x02, 0x00,              // after the jump
               0x0D, 0x00, 0xFF, 0xFF, 0x0D, 0x00, 0xFF, 0xFF, 0x03, 0x08,
               0x01, 0x00, 0x07, 0x00, 0x02, 0x00,  // colour change
               0x0D, 0x00, 0xFF, 0xFF, 0x0D, 0x00, 0xFF, 0xFF, 0x03, 0x08,
               0x00, 0x00, 0x07, 0x00, 0x03, 0x00, 0x0D, 0x00, 0xFF, 0xFF,
               0x0D, 0x00, 0xFF, 0xFF, 0x08, 0x00, 0xFC, 0xFF,  // round(7.5) = 8, round(-3.5) = -4
           }));
    append(expected, bytesOf({0x02, 0, 0, 0, 0x02, 0, 0x03, 0, 0x07, 0, 0x00, 0, 0, 0}));
    ASSERT_EQ(expected.size(), 180u);
    append(expected, tinyPecSection());
    append(expected, pecThumbnails(design, true));

    HMKError error;
    ASSERT_TRUE(design.exportPesDesignToURL(file("Tiny.pes"), &error)) << error.message();
    EXPECT_EQ(read(file("Tiny.pes")), expected);
    EXPECT_EQ(design.designType(), "PES");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_FALSE(design.designHoop());
}

TEST_F(PesWriter, PecFileHoldsMagicSectionAndOneThumbnail) {
    HMKDesign design = tinyDesign("Tiny.pec");
    design.setDesignHoop(HMKDesign::hoops().front());
    Bytes expected = bytesOf("#PEC0001");
    append(expected, tinyPecSection());
    append(expected, pecThumbnails(design, false));
    ASSERT_TRUE(design.exportPecDesignToURL(file("Tiny.pec")));
    EXPECT_EQ(read(file("Tiny.pec")), expected);
    EXPECT_EQ(design.designType(), "PEC");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_FALSE(design.designHoop());
}

TEST_F(PesWriter, SegmentIsThePecSection) {
    HMKDesign design = tinyDesign("Tiny.pes");
    EXPECT_EQ(design.exportPecSegmentToData(), tinyPecSection());
}

TEST_F(PesWriter, ColourChangesAlternateTwoAndOneJumpsUseTheLongFormAndStitchesTheShortForm) {
    const std::pair<HMKDesign, Bytes> cases[] = {
        {makeDesign({change(0, 0), change(0, 0), change(0, 0)},
                    std::vector<HMKThread>(4, makeThread("405", "Brother"))),
         bytesOf({0xFE, 0xB0, 0x02, 0xFE, 0xB0, 0x01, 0xFE, 0xB0, 0x02, 0xFF})},
        {makeDesign({jump(-3, 0), plain(-3, 0), plain(63, -63), jump(2047, -2048)},
                    {makeThread("405", "Brother")}),
         bytesOf({0x9F, 0xFD, 0x90, 0x00, 0x7D, 0x00, 0x3F, 0x3F, 0x97, 0xFF, 0x98, 0x00, 0xFF})},
    };
    for (auto [design, stitchData] : cases)
        EXPECT_EQ(slice(design.exportPecSegmentToData(), 532, stitchData.size()), stitchData);
}

TEST_F(PesWriter, UnknownBrotherKeysAreWrittenAsSixteen) {
    const std::pair<std::string, int> cases[] = {{"007", 1}, {"x7", 64}, {"620", 7}, {"zzz", 16}};
    for (const auto& [key, code] : cases) {
        HMKDesign design = makeDesign({plain(1, 1)}, {makeThread(key, "Brother")});
        EXPECT_EQ(design.exportPecSegmentToData()[49], code) << key;
    }
}

TEST_F(PesWriter, RefusesDesignsBeyondTheVersionOneLimitsInOrder) {
    const std::map<int, std::string> texts = {
        {200, "The design is larger than supported by PES v1.0."},
        {201, "The design needs to be centered."},
        {202, "Too many colors"},
        {203, "Too many stitches"}};
    const struct {
        float xMin, yMin, xMax, yMax;
        std::size_t threads, stitches;
        int code;  // 0: accepted
    } cases[] = {
        {-650, -900, 650, 900, 64, 1, 0},  {-650, -900, 651, 900, 1, 1, 200},
        {-650, -901, 650, 900, 1, 1, 200}, {-651, -10, 10, 10, 1, 1, 201},
        {-10, -10, 651, 10, 1, 1, 201},    {-10, -901, 10, 10, 1, 1, 201},
        {-10, -10, 10, 901, 1, 1, 201},    {-10, -10, 10, 10, 65, 1, 202},
        {-651, -10, 651, 10, 65, 1, 200},  {0, 0, 0, 0, 1, 30000, 0},
        {0, 0, 0, 0, 1, 30001, 203},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.xMin << " " << c.xMax << " " << c.threads << " " << c.stitches);
        std::vector<HMKStitch> stitches(c.threads - 1, change(0, 0));
        stitches.resize(stitches.size() + c.stitches, plain(0, 0));
        HMKDesign design =
            makeDesign(stitches, std::vector<HMKThread>(c.threads, makeThread("405", "Brother")));
        design.setBounds(c.xMin, c.yMin, c.xMax, c.yMax);
        HMKError error;
        EXPECT_EQ(design.exportPesDesignToURL(file("limit.pes"), &error), c.code == 0);
        if (c.code != 0)
            expectRefusal(error, c.code, texts.at(c.code));
    }
}

TEST_F(PesWriter, WritesOneThumbnailPerThreadAfterTheWholeDesign) {
    HMKDesign design = makeDesign({plain(1, 1), change(0, 0), change(0, 0)},
                                  std::vector<HMKThread>(3, makeThread("405", "Brother")));
    ASSERT_TRUE(design.exportPesDesignToURL(file("t.pes")));
    Bytes file = read(this->file("t.pes"));
    std::size_t pecOffset = file[8] | file[9] << 8 | file[10] << 16;
    std::size_t sectionLength = 512 + (file[pecOffset + 514] | file[pecOffset + 515] << 8);
    EXPECT_EQ(file.size(), pecOffset + sectionLength + 4 * 228);
}

TEST_F(PesWriter, ConvertsThreadsToTheNearestBrotherThread) {
    installTestPalettes();
    HMKThread brother = HMKThread::fromPaletteKey("620", "Brother");
    for (bool useThreadFile : {false, true}) {
        HMKDesign design = makeDesign({plain(1, 1)}, {makeThread("", "", brother.color)});
        design.setUseThreadFile(useThreadFile);
        ASSERT_TRUE(design.exportPecDesignToURL(file("c.pec")));
        EXPECT_EQ(read(file("c.pec"))[8 + 49], 7);
        EXPECT_EQ(design.threads()[0].palette, useThreadFile ? "" : "Brother");
        EXPECT_EQ(design.threads()[0].key, useThreadFile ? "" : "620");
    }
}

}  // namespace
