#include <gtest/gtest.h>

#include "model/design.h"
#include "model/error.h"
#include "model/user_defaults.h"

namespace {

HMKThread thread(const std::string& palette, const std::string& name = "T") {
    return HMKThread(HMKColor(), name, "1", palette, palette + " display");
}

}  // namespace

TEST(Design, FreshDesignKeepsTheStitchCountArithmetic) {
    HMKDesign design;
    EXPECT_EQ(design.numberOfStitches(), 1);
    design.threads().push_back(thread("A"));
    design.threads().push_back(thread("A"));
    EXPECT_EQ(design.numberOfStitches(), -1);
    EXPECT_EQ(design.displayRange(), (HMKRange{0, 0}));
}

TEST(Design, CountsStitchesJumpsAndThreads) {
    HMKDesign design;
    for (int i = 0; i < 3; ++i)
        design.threads().push_back(thread("A"));
    for (int i = 0; i < 100; ++i) {
        bool change = i == 30 || i == 60;
        bool jump = (i % 20 == 5) || i == 60;  // 5 plain jumps, plus one colour change flagged jump
        design.stitches().emplace_back(1.0f, 0.0f, jump, change);
    }
    EXPECT_EQ(design.numberOfStitches(), 98);
    EXPECT_EQ(design.numberOfJumps(), 5);
    EXPECT_EQ(design.numberOfThreads(), 3u);
}

TEST(Design, BoundsFirstAndLastStitch) {
    HMKDesign design;
    design.stitches() = {HMKStitch(10, 0, true, false), HMKStitch(0, 5, true, false),
                         HMKStitch(-30, 2, false, false), HMKStitch(5, -20, true, false)};
    design.recomputeBounds();
    EXPECT_EQ(design.firstStitch(), (HMKPoint{10, 5}));
    EXPECT_EQ(design.lastStitch(), (HMKPoint{-15, -13}));
    EXPECT_EQ(design.xMin(), -20);
    EXPECT_EQ(design.xMax(), 10);
    EXPECT_EQ(design.yMin(), -13);
    EXPECT_EQ(design.yMax(), 7);
    EXPECT_EQ(design.designWidth(), 30);
    EXPECT_EQ(design.designHeight(), 20);
    EXPECT_EQ(design.centerOfDesign(), (HMKPoint{-5, -3}));

    HMKDesign allJumps;
    allJumps.stitches() = {HMKStitch(1, 2, true, false), HMKStitch(3, 4, true, false)};
    EXPECT_EQ(allJumps.firstStitch(), (HMKPoint{4, 6}));

    HMKDesign empty;
    empty.recomputeBounds();
    EXPECT_EQ(empty.xMin(), kEmptyBoundsMin);
    EXPECT_EQ(empty.xMax(), kEmptyBoundsMax);
    EXPECT_EQ(empty.firstStitch(), (HMKPoint{0, 0}));
}

TEST(Design, CopyIsDeep) {
    HMKDesign design;
    design.stitches().emplace_back(1, 2, false, false);
    design.threads().push_back(thread("A"));
    design.setDesignName("rose.dst");
    design.setDisplayRange({0, 1});
    HMKDesign copy = design;
    copy.stitches()[0].deltaX = 9;
    copy.threads()[0].name = "changed";
    EXPECT_EQ(design.stitches()[0].deltaX, 1);
    EXPECT_EQ(design.threads()[0].name, "T");
    EXPECT_EQ(copy.designName(), "rose.dst");
    EXPECT_EQ(copy.displayRange(), (HMKRange{0, 1}));
}

TEST(Design, PaletteVisibilityAndWritability) {
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

    struct Case {
        const char* type;
        int version;
        bool writable;
    };
    for (auto [type, version, writable] :
         {Case{"PES", 60, false}, Case{"PES", 10, true}, Case{"DST", 123, true},
          Case{"VP3", 10, false}, Case{"JEF", 1, true}, Case{"PCS", 20, true},
          Case{"SEW", 10, false}, Case{"jef", 10, false}}) {
        design.setDesignType(type);
        design.setDesignVersion(version);
        EXPECT_EQ(design.isWritable(), writable) << type << " " << version;
    }
}

TEST(Design, DescriptionWithAndWithoutHoop) {
    HMKUserDefaults::standard().setInteger(0, "MeasurementUnit");
    HMKDesign design;
    design.setDesignName("rose.jef");
    design.setDesignType("JEF");
    design.setDesignVersion(10);
    design.threads() = {HMKThread(HMKColor(1, 0, 0), "Red", "225", "Janome", "Janome"),
                        HMKThread(HMKColor(1, 0, 0), "Other", "1", "Undefined", ""),
                        HMKThread(HMKColor(0, 0, 1), "Mine", "", "", "")};
    design.stitches() = {HMKStitch(-250, -125, false, false), HMKStitch(501, 251, false, true),
                         HMKStitch(0, 0, true, true)};
    design.recomputeBounds();
    EXPECT_EQ(design.description(),
              "rose.jef (JEF Version 1.0)\nsize: 50.1 mm x 25.1 mm\n1 stitches including 0 "
              "jumps\n3 color changes with 2 different colors\n1. Red, Janome\n2. Other\n3. Mine");
    ASSERT_TRUE(design.setHoopFromVendor("Janome", 4));
    EXPECT_TRUE(design.description().starts_with(
        "rose.jef (JEF Version 1.0)\nsize: 50.1 mm x 25.1 mm, hoop Janome SQ (200.0 mm x "
        "200.0 mm)\n1 stitches"));
}

TEST(Error, MadeOnlyWhenAPlaceIsGiven) {
    EXPECT_FALSE(fail(nullptr, 111, "text"));
    HMKError error;
    EXPECT_FALSE(fail(&error, 111, "Unable to import DST file (invalid function codes)."));
    EXPECT_EQ(error.code, 111);
    EXPECT_TRUE(error.domain.ends_with(".ErrorDomain"));
    EXPECT_EQ(error.recoverySuggestion, "Unable to import DST file (invalid function codes).");
}
