#include <gtest/gtest.h>

#include "model/design.h"
#include "model/user_defaults.h"

namespace {

// A design whose bounds are exactly the given box.
HMKDesign designWithBounds(float xMin, float yMin, float xMax, float yMax) {
    HMKDesign design;
    design.setBounds(xMin, yMin, xMax, yMax);
    return design;
}

}  // namespace

TEST(Hoops, CatalogOrderAndVendors) {
    auto hoops = HMKDesign::hoops();
    ASSERT_EQ(hoops.size(), 34u);
    EXPECT_EQ(hoops.front().name(), "C/FA/M3");
    EXPECT_EQ(hoops[7].name(), "MA");
    EXPECT_TRUE(hoops[7].isMultiHoop());
    EXPECT_EQ(hoops[31].name(), "ASQ22");
    EXPECT_EQ(hoops.back().name(), "L");
    EXPECT_EQ(HMKDesign::allHoopsFromVendor("Janome")->size(), 32u);
    EXPECT_EQ(HMKDesign::allHoopsFromVendor("Pfaff")->size(), 2u);
    EXPECT_FALSE(HMKDesign::allHoopsFromVendor("Brother").has_value());
}

TEST(Hoops, SelectingFromAFileCode) {
    HMKDesign design;
    EXPECT_TRUE(design.setHoopFromVendor("Janome", 4));
    EXPECT_EQ(design.designHoop()->name(), "SQ");
    EXPECT_FALSE(design.setHoopFromVendor("Pfaff", 4));
    EXPECT_EQ(design.designHoop()->name(), "SQ");
    EXPECT_TRUE(design.setHoopFromVendor("Pfaff", 2));
    EXPECT_EQ(design.designHoop()->name(), "S");
    EXPECT_EQ(design.hoopVendor(), "Pfaff");
    EXPECT_FALSE(design.setHoopFromVendor("Janome", -1));
    EXPECT_FALSE(design.designHoop().has_value());
    EXPECT_EQ(design.hoopCode(), -1);
    EXPECT_EQ(design.hoopName(), "");
    EXPECT_EQ(design.hoopWidth(), 0);
    EXPECT_FALSE(design.hoopIsRound());
}

TEST(Hoops, AutomaticChoiceFollowsCatalogOrderAndSkipsUnwritable) {
    // 90 x 35 mm gets "A", not the smaller "FA10/~a" further down the catalog.
    EXPECT_EQ(designWithBounds(-450, -175, 450, 175).findHoopFromVendor("Janome")->name(), "A");
    EXPECT_EQ(designWithBounds(-10, -10, 10, 10).findHoopFromVendor("Janome")->name(), "C/FA/M3");
    // Only "MA" (not writable) would take 200 x 280; GR (230 x 300) is chosen.
    EXPECT_EQ(designWithBounds(-1000, -1400, 1000, 1400).findHoopFromVendor("Janome")->name(),
              "GR");
    EXPECT_FALSE(designWithBounds(-2000, -2000, 2000, 2000).findHoopFromVendor("Janome"));
    EXPECT_EQ(designWithBounds(-500, -500, 500, 500).findHoopFromVendor("Pfaff")->name(), "L");
}

TEST(Hoops, FitIsInclusiveButTheEdgeIsOutside) {
    HMKHoop a = HMKDesign::allHoopsFromVendor("Janome")->at(1);
    ASSERT_EQ(a.name(), "A");
    EXPECT_TRUE(designWithBounds(-550, -550, 550, 550).designFitsInHoop(a));
    EXPECT_FALSE(designWithBounds(-550, -550, 551, 550).designFitsInHoop(a));
    EXPECT_TRUE(designWithBounds(-550, -100, 549, 100).stitchesOutsideOfHoop(a));
    EXPECT_FALSE(designWithBounds(-549, -549, 549, 549).stitchesOutsideOfHoop(a));
    EXPECT_TRUE(designWithBounds(-100, -100, 100, 550).stitchesOutsideOfHoop(a));
    // S1 is 37 mm wide: halved before scaling, so the half width is 180, not 185.
    HMKHoop s1 = HMKDesign::allHoopsFromVendor("Janome")->at(19);
    ASSERT_EQ(s1.name(), "S1");
    EXPECT_TRUE(designWithBounds(-10, -10, 182, 10).stitchesOutsideOfHoop(s1));
    EXPECT_FALSE(designWithBounds(-10, -10, 179, 10).stitchesOutsideOfHoop(s1));
}

TEST(Hoops, EqualityIgnoresCodeAndTextsUseTheUnit) {
    HMKHoop a("SQ", "Janome", 4, 200, 200, false, false, true);
    HMKHoop b("SQ", "Janome", 99, 200, 200, true, true, false);
    EXPECT_EQ(a, b);
    EXPECT_NE(a, HMKHoop("SQ", "Pfaff", 4, 200, 200, false, false, true));
    HMKUserDefaults::standard().setInteger(0, "MeasurementUnit");
    EXPECT_EQ(a.description(), "Janome SQ (200.0 mm x 200.0 mm)");
    HMKHoop round("T1", "Janome", 8, 34, 34, false, true, false);
    EXPECT_EQ(round.sizeString(), "⌀ 34.0 mm");
    HMKHoop custom("", "", 0, 131, 100, false, false, false);
    EXPECT_EQ(custom.description(), "131.0 mm x 100.0 mm");
}
