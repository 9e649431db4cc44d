#include "edit/edit_test_support.h"

namespace {

constexpr float kViewTolerance = 0.7f;

TEST(Selection, RectIsTheBoundsOrEnclosesTheSelectedStitches) {
    // Inactive: the bounds; active: start and end of the selected stitches, and an active but
    // empty selection has negative size.
    HMKDesign design = makeDesign({stitch(10, 5), selected(stitch(5, 5)), stitch(-130, 20)});
    EXPECT_EQ(design.selectionRect(), (HMKRect{-115, 5, 130, 25}));
    design.setSelectionActive(true);
    EXPECT_EQ(design.selectionRect(), (HMKRect{10, 5, 5, 5}));
    design.deselectAll();
    design.setSelectionActive(true);
    EXPECT_EQ(design.selectionRect(), (HMKRect{65536, 65536, -131072, -131072}));
}

TEST(Selection, SelectAllMarksEveryStitchAndIsActiveEvenWhenEmpty) {
    HMKDesign empty;
    empty.selectAll();
    EXPECT_TRUE(empty.selectionActive());

    HMKDesign design = makeDesign({stitch(1, 0), jump(2, 0)});
    design.selectAll();
    EXPECT_EQ(selectionFlags(design), (std::vector<bool>{true, true}));
    design.deselectAll();
    EXPECT_EQ(selectionFlags(design), (std::vector<bool>{false, false}));
    EXPECT_FALSE(design.selectionActive());
}

TEST(Selection, InvertIsActiveOnlyWhenSomeStitchBecameSelected) {
    HMKDesign design = makeDesign({selected(stitch(1, 0)), stitch(1, 0)});
    design.invertAll();
    EXPECT_EQ(selectionFlags(design), (std::vector<bool>{false, true}));
    EXPECT_TRUE(design.selectionActive());

    HMKDesign allSelected = makeDesign({selected(stitch(1, 0))});
    allSelected.setSelectionActive(true);
    allSelected.invertAll();
    EXPECT_FALSE(allSelected.selectionActive());
}

TEST(Selection, RectangleSelectsStitchesWithBothEndsInsideAndAddsToTheSelection) {
    // Ends at (10,0), (20,0), (30,0), (40,0); the rectangle's right edge lies on x = 30.
    HMKDesign design =
        makeDesign({stitch(10, 0), stitch(10, 0), stitch(10, 0), selected(stitch(10, 0))});
    design.selectInRect({5, -1, 25, 2}, false);
    EXPECT_EQ(selectionFlags(design), (std::vector<bool>{false, true, false, true}));
    EXPECT_TRUE(design.selectionActive());

    design.selectInRect({-1, -1, 100, 2}, true);
    EXPECT_EQ(selectionFlags(design), (std::vector<bool>(4, false)));
    EXPECT_FALSE(design.selectionActive());
}

struct HitCase {
    const char* name;
    std::vector<HMKStitch> stitches;
    HMKPoint point;
    std::int32_t expected;
};

TEST(Selection, HitTestMeasuresSquaredDistanceToTheStitch) {
    const HitCase cases[] = {
        {"0.8 away is within 0.7 squared", {stitch(10, 0)}, {5, 0.8}, 0},
        {"0.9 away is not", {stitch(10, 0)}, {5, 0.9}, -1},
        {"beyond the end is measured from the start", {stitch(100, 0)}, {100.3, 0}, -1},
        {"before the start is measured from the end", {stitch(100, 0)}, {-0.3, 0}, -1},
        {"beyond the end hits the next stitch", {stitch(100, 0), stitch(0, 100)}, {100.3, 0}, 1},
        {"a null stitch is never hit", {stitch(0, 0)}, {0, 0}, -1},
        {"a point on a colour change hits the stitch before",
         {stitch(10, 0), change()},
         {10, 0},
         0},
        {"the later of two overlapping stitches wins", {stitch(10, 0), stitch(-10, 0)}, {5, 0}, 1},
        {"an empty design has no stitch", {}, {0, 0}, -1},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(c.stitches);
        EXPECT_EQ(design.indexOfStitchAt(c.point, kViewTolerance), c.expected) << c.name;
    }
}

TEST(Selection, IsSelectedAtReportsTheFlagOfTheHitStitch) {
    HMKDesign design = makeDesign({selected(stitch(10, 0)), stitch(0, 10)});
    EXPECT_TRUE(design.isSelectedAt({5, 0}, kViewTolerance));
    EXPECT_FALSE(design.isSelectedAt({10, 5}, kViewTolerance));
    EXPECT_FALSE(design.isSelectedAt({50, 50}, kViewTolerance));
}

TEST(Selection, SelectStitchAtRescansTheWholeSelection) {
    HMKDesign design = makeDesign({stitch(10, 0), selected(stitch(0, 10))});
    design.selectStitchAt({50, 50}, kViewTolerance, false);  // a miss still rescans
    EXPECT_TRUE(design.selectionActive());
    design.selectStitchAt({5, 0}, kViewTolerance, false);
    EXPECT_EQ(selectionFlags(design), (std::vector<bool>{true, true}));
    design.selectStitchAt({5, 0}, kViewTolerance, true);
    design.selectStitchAt({10, 5}, kViewTolerance, true);
    EXPECT_FALSE(design.selectionActive());
}

TEST(Selection, BlockIsTheRunBetweenJumpsAndColourChanges) {
    // Stitches 0-1 and 3-4 form blocks; 2 is a jump, 5 a colour change.
    const std::vector<HMKStitch> stitches = {stitch(10, 0), stitch(10, 0), jump(0, 50),
                                             stitch(10, 0), stitch(10, 0), change(),
                                             stitch(0, 10)};
    struct BlockCase {
        const char* name;
        HMKPoint point;
        std::vector<bool> expected;
    };
    const BlockCase cases[] = {
        {"a run reaching the first stitch",
         {15, 0},
         {true, true, false, false, false, false, false}},
        {"a run between a jump and a colour change",
         {25, 50},
         {false, false, false, true, true, false, false}},
        {"clicking a jump selects the run after it",
         {20, 25},
         {false, false, false, true, true, false, false}},
        {"a miss selects nothing", {500, 500}, std::vector<bool>(7, false)},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(stitches);
        design.selectBlockAt(c.point, kViewTolerance, false);
        EXPECT_EQ(selectionFlags(design), c.expected) << c.name;
        EXPECT_EQ(design.selectionActive(), c.expected[0] || c.expected[3]) << c.name;
    }

    HMKDesign design = makeDesign(stitches);
    design.selectAll();
    design.selectBlockAt({15, 0}, kViewTolerance, true);
    EXPECT_EQ(selectionFlags(design),
              (std::vector<bool>{false, false, true, true, true, true, true}));
}

TEST(Selection, ThreadAtCountsColourChangesUpToTheHitStitch) {
    HMKDesign design =
        makeDesign({stitch(10, 0), change(), stitch(0, 10), change(5, 5), stitch(10, 0)});
    EXPECT_EQ(design.indexOfThreadAt({5, 0}, kViewTolerance), 0);
    EXPECT_EQ(design.indexOfThreadAt({10, 5}, kViewTolerance), 1);
    EXPECT_EQ(design.indexOfThreadAt({18, 15}, kViewTolerance), 2);
    EXPECT_EQ(design.indexOfThreadAt({-50, 0}, kViewTolerance), -1);
}

}  // namespace
