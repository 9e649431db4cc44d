#include <gtest/gtest.h>

#include "model/user_defaults.h"
#include "support/test_support.h"

TEST(Design, CountsBoundsAndPositions) {
    // 100 records, 2 colour changes (one flagged as a jump too), 5 plain jumps.
    Stitches stitches;
    for (int i = 0; i < 100; ++i)
        stitches.emplace_back(1.0f, 0.0f, i % 20 == 5 || i == 60, i == 30 || i == 60);
    const HMKDesign counted = makeDesign(stitches);
    EXPECT_EQ(counted.numberOfStitches(), 98);
    EXPECT_EQ(counted.numberOfJumps(), 5);
    EXPECT_EQ(counted.numberOfThreads(), 3u);
    HMKDesign fresh;  // records + 1 - threads, even when negative
    EXPECT_EQ(fresh.numberOfStitches(), 1);
    fresh.threads() = {makeThread("1"), makeThread("1")};
    EXPECT_EQ(fresh.numberOfStitches(), -1);

    const HMKDesign design = makeDesign({jump(10, 0), jump(0, 5), stitch(-30, 2), jump(5, -20)});
    EXPECT_EQ(boundsOf(design), (Bounds{-20, -13, 10, 7}));
    EXPECT_EQ(design.firstStitch(), (HMKPoint{10, 5}));
    EXPECT_EQ(design.lastStitch(), (HMKPoint{-15, -13}));
    EXPECT_EQ(design.designWidth(), 30);
    EXPECT_EQ(design.designHeight(), 20);
    EXPECT_EQ(design.centerOfDesign(), (HMKPoint{-5, -3}));
    EXPECT_EQ(makeDesign({jump(1, 2), jump(3, 4)}).firstStitch(), (HMKPoint{4, 6}));
    const HMKDesign empty = makeDesign({});
    EXPECT_EQ(boundsOf(empty), kEmptyBounds);
    EXPECT_EQ(empty.firstStitch(), (HMKPoint{0, 0}));
}

TEST(Design, PaletteVisibilityAndWritability) {
    const auto thread = [](const std::string& palette) {
        return HMKThread(HMKColor(), "T", "1", palette, palette + " display");
    };
    HMKDesign design;
    EXPECT_EQ(design.designPalette(), "");
    EXPECT_EQ(design.designPaletteName(), "Threadcolors");
    EXPECT_TRUE(design.isShownOfAllThreads());
    design.threads() = {thread("Madeira Rayon"), thread("Madeira Rayon")};
    EXPECT_EQ(design.designPalette(), "Madeira Rayon");
    EXPECT_EQ(design.designPaletteName(), "Madeira Rayon display");
    design.threads().push_back(thread("Janome"));
    EXPECT_EQ(design.designPalette(), "");
    EXPECT_EQ(design.designPaletteName(), "Threadcolors");

    design.setIsShown(false, 0);
    EXPECT_FALSE(design.isShownOfAllThreads());
    EXPECT_EQ(design.indexOfShownThread(), 1);
    design.setIsShown(false, 1);
    design.setIsShown(false, 2);
    EXPECT_EQ(design.indexOfShownThread(), kThreadNotFound);

    const std::tuple<const char*, int, bool> cases[] = {
        {"PES", 60, false}, {"PES", 10, true}, {"DST", 123, true}, {"VP3", 10, false},
        {"JEF", 1, true},   {"PCS", 20, true}, {"SEW", 10, false}, {"jef", 10, false}};
    for (const auto& [type, version, writable] : cases) {
        design.setDesignType(type);
        design.setDesignVersion(version);
        EXPECT_EQ(design.isWritable(), writable) << type << " " << version;
    }
}

TEST(Design, DescriptionWithAndWithoutHoop) {
    HMKUserDefaults::standard().setInteger(0, "MeasurementUnit");
    HMKDesign design = makeDesign({stitch(-250, -125), change(501, 251), change(0, 0, true)},
                                  {HMKThread(HMKColor(1, 0, 0), "Red", "225", "Janome", "Janome"),
                                   HMKThread(HMKColor(1, 0, 0), "Other", "1", "Undefined", ""),
                                   HMKThread(HMKColor(0, 0, 1), "Mine", "", "", "")},
                                  "JEF");
    design.setDesignName("rose.jef");
    design.setDesignVersion(10);
    EXPECT_EQ(design.description(),
              "rose.jef (JEF Version 1.0)\nsize: 50.1 mm x 25.1 mm\n1 stitches including 0 "
              "jumps\n3 color changes "
              "with 2 different colors\n1. Red, Janome\n2. Other\n3. Mine");
    ASSERT_TRUE(design.setHoopFromVendor("Janome", 4));
    EXPECT_TRUE(
        design.description().starts_with("rose.jef (JEF Version 1.0)\nsize: 50.1 mm x 25.1 mm, "
                                         "hoop Janome SQ (200.0 mm x 200.0 mm)\n1 stitches"));
}
