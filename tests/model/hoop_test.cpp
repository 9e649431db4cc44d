// The hoop rules; the catalog itself is pinned by tests/golden/hoops.json.
#include <gtest/gtest.h>

#include "model/user_defaults.h"
#include "support/test_support.h"

namespace {

// A design whose bounds are exactly the given box.
HMKDesign designWithBounds(float xMin, float yMin, float xMax, float yMax) {
    HMKDesign design;
    design.setBounds(xMin, yMin, xMax, yMax);
    return design;
}

}  // namespace

TEST(Hoops, SelectingFromAFileCodeKeepsTheHoopOnAMiss) {
    HMKDesign design;
    EXPECT_TRUE(design.setHoopFromVendor("Janome", 4));
    EXPECT_FALSE(design.setHoopFromVendor("Pfaff", 4));
    EXPECT_EQ(hoopNameOf(design), "SQ");
    EXPECT_TRUE(design.setHoopFromVendor("Pfaff", 2));
    EXPECT_EQ(std::tuple(hoopNameOf(design), design.hoopVendor()), std::tuple("S", "Pfaff"));
    EXPECT_FALSE(design.setHoopFromVendor("Janome", -1));
    EXPECT_EQ(std::tuple(design.designHoop().has_value(), design.hoopCode(), design.hoopName(),
                         design.hoopWidth(), design.hoopIsRound()),
              std::tuple(false, -1, "", 0, false));
    EXPECT_EQ(HMKDesign::allHoopsFromVendor("Janome")->size(), 32u);
    EXPECT_FALSE(HMKDesign::allHoopsFromVendor("Brother").has_value());
}

TEST(Hoops, AutomaticChoiceFollowsCatalogOrderAndSkipsUnwritable) {
    // 90 x 35 mm gets "A", not the smaller "FA10/~a" further down the catalog; only "MA" (not
    // writable) would take 200 x 280, so GR (230 x 300) is chosen.
    const std::tuple<Bounds, const char*, const char*> cases[] = {
        {{-450, -175, 450, 175}, "Janome", "A"},      {{-10, -10, 10, 10}, "Janome", "C/FA/M3"},
        {{-1000, -1400, 1000, 1400}, "Janome", "GR"}, {{-2000, -2000, 2000, 2000}, "Janome", ""},
        {{-500, -500, 500, 500}, "Pfaff", "L"},
    };
    for (const auto& [b, vendor, name] : cases) {
        const auto hoop = designWithBounds(b[0], b[1], b[2], b[3]).findHoopFromVendor(vendor);
        EXPECT_EQ(hoop ? hoop->name() : "", name);
    }
}

TEST(Hoops, FitIsInclusiveButTheEdgeIsOutside) {
    const HMKHoop a = HMKDesign::allHoopsFromVendor("Janome")->at(1);
    ASSERT_EQ(a.name(), "A");
    EXPECT_TRUE(designWithBounds(-550, -550, 550, 550).designFitsInHoop(a));
    EXPECT_FALSE(designWithBounds(-550, -550, 551, 550).designFitsInHoop(a));
    EXPECT_TRUE(designWithBounds(-550, -100, 549, 100).stitchesOutsideOfHoop(a));
    EXPECT_FALSE(designWithBounds(-549, -549, 549, 549).stitchesOutsideOfHoop(a));
    EXPECT_TRUE(designWithBounds(-100, -100, 100, 550).stitchesOutsideOfHoop(a));
    // S1 is 37 mm wide: halved before scaling, so the half width is 180, not 185.
    const HMKHoop s1 = HMKDesign::allHoopsFromVendor("Janome")->at(19);
    ASSERT_EQ(s1.name(), "S1");
    EXPECT_TRUE(designWithBounds(-10, -10, 182, 10).stitchesOutsideOfHoop(s1));
    EXPECT_FALSE(designWithBounds(-10, -10, 179, 10).stitchesOutsideOfHoop(s1));
}

TEST(Hoops, EqualityIgnoresCodeAndTextsUseTheUnit) {
    const HMKHoop a("SQ", "Janome", 4, 200, 200, false, false, true);
    EXPECT_EQ(a, HMKHoop("SQ", "Janome", 99, 200, 200, true, true, false));
    EXPECT_NE(a, HMKHoop("SQ", "Pfaff", 4, 200, 200, false, false, true));
    HMKUserDefaults::standard().setInteger(0, "MeasurementUnit");
    EXPECT_EQ(a.description(), "Janome SQ (200.0 mm x 200.0 mm)");
    EXPECT_EQ(HMKHoop("T1", "Janome", 8, 34, 34, false, true, false).sizeString(), "⌀ 34.0 mm");
    EXPECT_EQ(HMKHoop("", "", 0, 131, 100, false, false, false).description(),
              "131.0 mm x 100.0 mm");
}
