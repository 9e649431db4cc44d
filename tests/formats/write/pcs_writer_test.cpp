#include <gtest/gtest.h>

#include "write_test_support.h"

namespace {

class PcsWriter : public WriterTest {
protected:
    Bytes write(HMKDesign& design) {
        HMKError error;
        EXPECT_TRUE(design.exportPcsDesignToURL(file("out.pcs"), &error)) << error.message();
        return read(file("out.pcs"));
    }
};

HMKHoop pfaffHoop(const std::string& name) {
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        if (hoop.vendor() == "Pfaff" && hoop.name() == name)
            return hoop;
    }
    throw std::logic_error("no such hoop");
}

TEST_F(PcsWriter, WritesHeaderColoursAndAbsoluteRecordsOfASmallDesign) {
    HMKDesign design = makeDesign(
        {plain(0, 0), jump(-399, 10), change(5, 0)},
        {makeThread("a", "", HMKColor(1, 0.5, 0)), makeThread("b", "", HMKColor(0, 0, 1))});
    Bytes expected = bytesOf({0x32, 0x02, 0x10, 0x00,  // hoop S, code 2
                              0xFF, 0x7F, 0x00, 0x00, 0x00, 0x00, 0xFF, 0x00});
    expected.resize(68, 0);
    append(expected, bytesOf({0x03, 0x00}));  // stitch records, colour records not counted
    append(expected, bytesOf({0, 0, 0, 0, 0, 0, 0, 0, 3}));
    // In the 80 mm hoop the origin is at 400 units, that is 240 PCS units.
    append(expected, bytesOf({0, 0xF0, 0, 0, 0, 0xF0, 0, 0, 0x00}));
    append(expected, bytesOf({0, 0x01, 0, 0, 0, 0xF6, 0, 0, 0x04}));  // round(0.6), round(246)
    append(expected, bytesOf({1, 0, 0, 0, 0, 0, 0, 0, 3}));
    append(expected, bytesOf({0, 0x04, 0, 0, 0, 0xF6, 0, 0, 0x00}));  // round(3.6)
    expected.resize(expected.size() + 13, 0);
    EXPECT_EQ(write(design), expected);
}

TEST_F(PcsWriter, CentresOnTheHoop) {
    // A 100 mm wide hoop does not exist among Pfaff's; a custom one of that vendor is kept.
    HMKDesign design = makeDesign({plain(0, 0)}, {makeThread("a", "")});
    design.setDesignHoop(HMKHoop("Custom", "Pfaff", 7, 100, 60, false, false, true));
    Bytes file = write(design);
    EXPECT_EQ(file[1], 7);
    EXPECT_EQ(slice(file, 79, 9), bytesOf({0, 0x2C, 0x01, 0, 0, 0xB4, 0, 0, 0}));  // 300, 180
}

TEST_F(PcsWriter, StoresNegativeCoordinatesOneBelowTheirTwosComplement) {
    // Bounds that understate the travel let a position fall left of the hoop.
    HMKDesign design = makeDesign({jump(-402, 0)}, {makeThread("a", "")});
    design.setBounds(-10, -10, 10, 10);
    EXPECT_EQ(slice(write(design), 80, 3), bytesOf({0xFE, 0xFF, 0xFF}));  // round(-1.2) = -1
}

TEST_F(PcsWriter, AcceptsSixteenThreadsAndFourteenThousandStitches) {
    std::vector<HMKStitch> stitches;
    for (int i = 0; i < 14015; ++i) {
        stitches.push_back(i > 0 && i <= 15 ? change(0, 0) : plain(i % 2 ? 1 : -1, 0));
    }
    HMKDesign design = makeDesign(stitches, std::vector<HMKThread>(16, makeThread("a", "")));
    ASSERT_EQ(design.numberOfStitches(), 14000);
    Bytes file = write(design);
    EXPECT_EQ(file[69] * 256 + file[68], 14015);  // stitch records, colour records not counted
}

TEST_F(PcsWriter, RefusesSeventeenThreadsThenMoreThanFourteenThousandStitchesBeforeTheHoop) {
    HMKDesign design = makeDesign(std::vector<HMKStitch>(16, change(0, 0)),
                                  std::vector<HMKThread>(17, makeThread("a", "")));
    design.setBounds(-5000, -5000, 5000, 5000);  // fits no hoop
    HMKError error;
    EXPECT_FALSE(design.exportPcsDesignToURL(file("x.pcs"), &error));
    expectRefusal(error, 180, "Unable to export PCS file (too many colors).");
    EXPECT_FALSE(design.designHoop());
    design.setStitches(std::vector<HMKStitch>(14001, plain(0, 0)));
    design.threads().resize(1);
    EXPECT_FALSE(design.exportPcsDesignToURL(file("x.pcs"), &error));
    expectRefusal(error, 181, "Unable to export PCS file (too many stitches).");
    EXPECT_FALSE(std::filesystem::exists(file("x.pcs")));
}

TEST_F(PcsWriter, DetachesThreadsFromTheirPaletteUnlessTheSideFileCarriesThem) {
    HMKDesign design = makeDesign({plain(1, 1)}, {makeThread("405", "Brother", HMKColor(0, 1, 0))});
    write(design);
    EXPECT_EQ(design.threads()[0].palette, "");
    EXPECT_EQ(design.threads()[0].key, "");
    EXPECT_EQ(design.threads()[0].color, HMKColor(0, 1, 0));
    EXPECT_EQ(design.designHoop(), pfaffHoop("S"));
    EXPECT_EQ(design.designType(), "PCS");
    EXPECT_EQ(design.designVersion(), 20);

    HMKDesign carried = makeDesign({plain(1, 1)}, {makeThread("405", "Brother")});
    carried.setUseThreadFile(true);
    write(carried);
    EXPECT_EQ(carried.threads()[0], makeThread("405", "Brother"));
}

}  // namespace
