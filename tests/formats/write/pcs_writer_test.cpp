#include "support/test_support.h"

namespace {

Bytes writePcs(HMKDesign& design) {
    return writtenBy(&HMKDesign::exportPcsDesignToURL, design);
}

}  // namespace

TEST(PcsWriter, WritesHeaderColoursAndAbsoluteRecordsOfASmallDesign) {
    HMKDesign design = makeDesign(
        {stitch(0, 0), jump(-399, 10), change(5, 0)},
        {makeThread("a", "", HMKColor(1, 0.5, 0)), makeThread("b", "", HMKColor(0, 0, 1))});
    const Bytes expected =
        DesignBytes({0x32, 0x02, 0x10, 0x00,  // hoop S, code 2
                     0xFF, 0x7F, 0x00, 0x00, 0x00, 0x00, 0xFF, 0x00})
            .padTo(68)
            .bytes({0x03, 0x00})  // stitch records; colour records are not counted
            .bytes({0, 0, 0, 0, 0, 0, 0, 0, 3})
            // In the 80 mm hoop the origin is at 400 units, that is 240 PCS units.
            .bytes({0, 0xF0, 0, 0, 0, 0xF0, 0, 0, 0x00})
            .bytes({0, 0x01, 0, 0, 0, 0xF6, 0, 0, 0x04})  // round(0.6), round(246)
            .bytes({1, 0, 0, 0, 0, 0, 0, 0, 3})
            .bytes({0, 0x04, 0, 0, 0, 0xF6, 0, 0, 0x00})  // round(3.6)
            .zeros(13);
    EXPECT_EQ(writePcs(design), expected);
    // Threads leave their palette unless the side file carries them.
    EXPECT_EQ(design.threads()[0], HMKThread(HMKColor(1, 0.5, 0), "Individual color (255, 128, 0)",
                                             "", "", "Threadcolors"));
    EXPECT_EQ(hoopNameOf(design), "S");
    EXPECT_EQ(design.designType(), "PCS");
    EXPECT_EQ(design.designVersion(), 20);
    HMKDesign carried = makeDesign({stitch(1, 1)}, {makeThread("405", "Brother")});
    carried.setUseThreadFile(true);
    writePcs(carried);
    EXPECT_EQ(carried.threads()[0], makeThread("405", "Brother"));
}

TEST(PcsWriter, CentresOnTheHoopAndStoresNegativesOneBelowTheirTwosComplement) {
    // A 100 mm wide hoop does not exist among Pfaff's; a custom one of that vendor is kept.
    HMKDesign design = makeDesign({stitch(0, 0)});
    design.setDesignHoop(HMKHoop("Custom", "Pfaff", 7, 100, 60, false, false, true));
    const Bytes file = writePcs(design);
    EXPECT_EQ(file[1], 7);
    EXPECT_EQ(slice(file, 79, 9), (Bytes{0, 0x2C, 0x01, 0, 0, 0xB4, 0, 0, 0}));  // 300, 180
    // Bounds that understate the travel let a position fall left of the hoop.
    HMKDesign left = makeDesign({jump(-402, 0)});
    left.setBounds(-10, -10, 10, 10);
    EXPECT_EQ(slice(writePcs(left), 80, 3), (Bytes{0xFE, 0xFF, 0xFF}));  // round(-1.2) = -1
}
