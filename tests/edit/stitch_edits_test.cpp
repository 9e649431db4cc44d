#include "edit/edit_test_support.h"

namespace {

TEST(StitchEdits, InsertJumpAddsALandingStitchOnlyBetweenNormalStitches) {
    struct Case {
        const char* name;
        std::vector<HMKStitch> stitches;
        std::int32_t index;
        std::int32_t returned;
        std::vector<HMKStitch> expected;
    };
    const Case cases[] = {
        {"before a normal first stitch",
         {selected(stitch(1, 0))},
         0,
         2,
         {jump(3, 4), selected(stitch(0, 0)), selected(stitch(1, 0))}},
        {"before a jump", {jump(1, 0)}, 0, 1, {jump(3, 4), jump(1, 0)}},
        {"before a null stitch", {stitch(0, 0)}, 0, 1, {jump(3, 4), stitch(0, 0)}},
        {"after a jump", {jump(1, 0), stitch(1, 0)}, 1, 2, {jump(1, 0), jump(3, 4), stitch(1, 0)}},
        {"at the count", {stitch(1, 0)}, 1, 1, {stitch(1, 0)}},
        {"at a negative index", {stitch(1, 0)}, -1, -1, {stitch(1, 0)}},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(c.stitches);
        EXPECT_EQ(design.insertJump({3, 4}, c.index), c.returned) << c.name;
        EXPECT_TRUE(sameStitches(design.stitches(), c.expected)) << c.name;
    }
}

TEST(StitchEdits, OptimizeMergesRunsOfJumpsAndColourChanges) {
    struct Case {
        const char* name;
        std::vector<HMKStitch> stitches;
        std::vector<HMKStitch> expected;
    };
    const Case cases[] = {
        {"jumps and a change become one jump and a change",
         {stitch(1, 0), jump(1, 2), jump(3, 4), change(), jump(5, 6), stitch(1, 0)},
         {stitch(1, 0), jump(9, 12), change(), stitch(1, 0)}},
        {"a colour change with movement becomes a stitch and a change",
         {stitch(1, 0), change(5, 5), stitch(1, 0)},
         {stitch(1, 0), stitch(5, 5), change(), stitch(1, 0)}},
        {"a jumping colour change becomes a jump and a change",
         {stitch(1, 0), HMKStitch(5, 5, true, true), stitch(1, 0)},
         {stitch(1, 0), jump(5, 5), change(), stitch(1, 0)}},
        {"two adjacent changes stay two changes",
         {stitch(1, 0), change(), change(), stitch(1, 0)},
         {stitch(1, 0), change(), change(), stitch(1, 0)}},
        {"jumps that cancel out disappear",
         {stitch(1, 0), jump(4, 0), jump(-4, 0), stitch(1, 0)},
         {stitch(1, 0), stitch(1, 0)}},
        {"a trailing jump is dropped", {stitch(1, 0), jump(2, 0)}, {stitch(1, 0)}},
        {"two trailing jumps merge and are dropped",
         {stitch(1, 0), jump(2, 0), jump(0, 2)},
         {stitch(1, 0)}},
        {"a merged run keeps its first member's selection mark",
         {selected(stitch(1, 0)), selected(jump(1, 0)), jump(1, 0), selected(stitch(1, 0))},
         {selected(stitch(1, 0)), selected(jump(2, 0)), selected(stitch(1, 0))}},
        {"the marks of the other members are lost",
         {selected(stitch(1, 0)), jump(1, 0), selected(jump(1, 0)), selected(stitch(1, 0))},
         {selected(stitch(1, 0)), jump(2, 0), selected(stitch(1, 0))}},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(c.stitches, "DST");
        design.optimizeJumpsFor("DST");
        EXPECT_TRUE(sameStitches(design.stitches(), c.expected)) << c.name;
        EXPECT_EQ(design.displayRange(), (HMKRange{0, c.expected.size()})) << c.name;
    }
}

TEST(StitchEdits, OptimizeCutsLongMovesOnTheirOwnLineToTheFormatLimits) {
    // (130, 10) cut at x = 126 rises by 10 / 130 * 126 = 9.6923...
    const float kJefRise = (10.0f / 130.0f) * 126.0f;
    EXPECT_NEAR(kJefRise, 9.6923, 1e-4);
    struct Case {
        const char* type;
        std::vector<HMKStitch> stitches;
        std::vector<HMKStitch> expected;
    };
    const Case cases[] = {
        {"DST",
         {jump(300, 150), stitch(1, 1)},
         {jump(120, 60), jump(120, 60), jump(60, 30), stitch(1, 1)}},
        {"DST", {stitch(0, -250)}, {stitch(0, -120), stitch(0, -120), stitch(0, -10)}},
        {"DST", {stitch(120, -120)}, {stitch(120, -120)}},
        {"JEF", {stitch(130, 10)}, {stitch(126, kJefRise), stitch(4, 10 - kJefRise)}},
        {"PES",
         {stitch(100, 0), jump(2000, 0), stitch(1, 0)},
         {stitch(62, 0), stitch(38, 0), jump(2000, 0), stitch(1, 0)}},
        {"PEC", {jump(3000, 0), stitch(1, 0)}, {jump(2046, 0), jump(954, 0), stitch(1, 0)}},
        {"EXP", {stitch(-200, 0)}, {stitch(-126, 0), stitch(-74, 0)}},
        {"PCS", {stitch(2000, 0)}, {stitch(1150, 0), stitch(850, 0)}},
        {"VP3", {stitch(5000, 0)}, {stitch(5000, 0)}},
        {"dst", {stitch(5000, 0)}, {stitch(5000, 0)}},
        // Deliberate: the rest of a stitch that follows a jump is a jump (and gets the
        // jump limit), as the machines' own software does.
        {"PES", {jump(10, 0), stitch(100, 0)}, {jump(10, 0), stitch(62, 0), jump(38, 0)}},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(c.stitches, c.type);
        design.optimizeJumpsFor(c.type);
        EXPECT_TRUE(sameStitches(design.stitches(), c.expected)) << c.type;
    }
}

TEST(StitchEdits, OptimizeRecomputesBoundsFromEveryPosition) {
    HMKDesign design = makeDesign({stitch(10, 0), jump(0, -30), stitch(-25, 5)}, "DST");
    design.setBounds(0, 0, 0, 0);
    design.optimizeJumpsFor("DST");
    EXPECT_EQ(design.xMin(), -15);
    EXPECT_EQ(design.yMin(), -30);
    EXPECT_EQ(design.xMax(), 10);
    EXPECT_EQ(design.yMax(), 0);
}

TEST(StitchEdits, TrimNarrowsTheSelectionToItsFirstAndLastNormalStitches) {
    HMKDesign design = makeDesign({stitch(1, 0), selected(jump(1, 0)), selected(change()),
                                   selected(stitch(1, 0)), selected(jump(1, 0)),
                                   selected(stitch(1, 0)), selected(jump(2, 0)), stitch(1, 0)});
    EXPECT_TRUE(design.trimSelectedJumps());
    EXPECT_EQ(selectionFlags(design),
              (std::vector<bool>{false, false, false, true, true, true, false, false}));
    EXPECT_FALSE(design.trimSelectedJumps());
}

TEST(StitchEdits, DeletingBridgesTheGapWithAJumpAndDropsEmptiedThreads) {
    auto threeWithSelected = [](std::size_t first, std::size_t second) {
        std::vector<HMKStitch> stitches = threeThreads();
        stitches[first].isSelected = stitches[second].isSelected = true;
        return stitches;
    };
    const struct {
        const char* name;
        std::vector<HMKStitch> stitches;
        std::vector<HMKStitch> expected;
        std::vector<std::string> threads;
    } cases[] = {
        {"a run within a thread",
         {stitch(10, 0), selected(stitch(10, 0)), selected(stitch(10, 0)), stitch(10, 0)},
         {stitch(10, 0), jump(20, 0), stitch(0, 0), stitch(10, 0)},
         {"Thread 0"}},
        {"a middle thread loses its record and colour change",
         threeWithSelected(3, 4),
         {stitch(10, 0), stitch(10, 0), jump(0, 20), change(), stitch(-10, 0)},
         {"Thread 0", "Thread 2"}},
        {"the first thread loses its record",
         threeWithSelected(0, 1),
         {jump(20, 0), stitch(0, 10), stitch(0, 10), change(), stitch(-10, 0)},
         {"Thread 1", "Thread 2"}},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(c.stitches);
        design.setSelectionActive(true);
        EXPECT_TRUE(design.deleteSelection()) << c.name;
        EXPECT_TRUE(sameStitches(design.stitches(), c.expected)) << c.name;
        EXPECT_EQ(threadNames(design), c.threads) << c.name;
    }
}

TEST(StitchEdits, DeletingEverythingLeavesNoThreadsAndATwentyMillimetreBox) {
    HMKDesign design = makeDesign(threeThreads());
    design.selectAll();
    design.deleteSelection();
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(design.selectionRect(), (HMKRect{65536, 65536, -131072, -131072}));
    design.setSelectionActive(false);
    EXPECT_EQ(design.selectionRect(), (HMKRect{-100, -100, 200, 200}));
}

TEST(StitchEdits, SwitchingToJumpsMergesAndSwitchingBackSplits) {
    HMKDesign design = makeDesign(
        {stitch(10, 0), selected(stitch(30, 0)), selected(stitch(40, 0)), jump(5, 0), stitch(1, 0)},
        "PES");
    design.switchSelectionToJumps(true);
    // The merged jump is then trimmed from the ends of the selection.
    EXPECT_TRUE(sameStitches(design.stitches(), {stitch(10, 0), jump(75, 0), stitch(1, 0)}));

    HMKDesign back = makeDesign({stitch(10, 0), selected(jump(100, 0)), stitch(1, 0)}, "PES");
    back.switchSelectionToJumps(false);
    EXPECT_TRUE(sameStitches(back.stitches(), {stitch(10, 0), selected(stitch(62, 0)),
                                               selected(stitch(38, 0)), stitch(1, 0)}));
}

TEST(StitchEdits, BastingOutlinesTheDesignInItsOwnFirstThread) {
    // A 100 x 50 design; 5 mm stitches 1 mm away: the outline runs 10 units outside it.
    HMKDesign design = makeDesign({stitch(0, 0), stitch(100, 0), stitch(0, 50)}, "VP3");
    EXPECT_TRUE(design.addBastingWithLength(5, 1));
    EXPECT_TRUE(
        sameStitches(design.stitches(),
                     {jump(-10, 60), stitch(0, 0), stitch(20, 0), stitch(20, 0), stitch(20, 0),
                      stitch(20, 0), stitch(40, 0), stitch(0, -35), stitch(0, -35), stitch(-40, 0),
                      stitch(-40, 0), stitch(-40, 0), stitch(0, 35), stitch(0, 35), jump(10, -60),
                      change(), stitch(0, 0), stitch(100, 0), stitch(0, 50)}));
    ASSERT_EQ(design.threads().size(), 2u);
    EXPECT_EQ(design.threads()[0].color, HMKColor(0, 0, 0));
    EXPECT_EQ(design.threads()[1].name, "Thread 0");
    EXPECT_EQ(design.xMin(), -10);
    EXPECT_EQ(design.xMax(), 110);
    EXPECT_EQ(design.yMin(), -10);
    EXPECT_EQ(design.yMax(), 60);
}

}  // namespace
