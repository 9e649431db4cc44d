#include "edit/edit_test_support.h"

namespace {

TEST(ThreadEdits, DeletingAThreadSewsItsStitchesInThePreviousThread) {
    // The former colour change stays as a null stitch, so every position is kept.
    const struct {
        std::int32_t index;
        std::vector<std::string> threads;
        std::vector<HMKStitch> expected;
    } cases[] = {
        {2,
         {"Thread 0", "Thread 1"},
         {stitch(10, 0), stitch(10, 0), change(), stitch(0, 10), stitch(0, 10), stitch(0, 0),
          stitch(-10, 0)}},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(threeThreads());
        EXPECT_TRUE(design.deleteThreadAtIndex(c.index)) << c.index;
        EXPECT_EQ(threadNames(design), c.threads) << c.index;
        EXPECT_TRUE(sameStitches(design.stitches(), c.expected)) << c.index;
    }
}

TEST(ThreadEdits, InvalidIndicesChangeNothingAndSucceed) {
    std::vector<HMKStitch> stitches = threeThreads();
    stitches.push_back(jump(5, 0));  // a normalisation would drop it
    const HMKDesign original = makeDesign(stitches);
    struct Case {
        const char* name;
        bool (*edit)(HMKDesign&);
    };
    const Case cases[] = {
        {"delete at the count", [](HMKDesign& d) { return d.deleteThreadAtIndex(3); }},
        {"delete at -1", [](HMKDesign& d) { return d.deleteThreadAtIndex(-1); }},
        // Thread 0 has no thread before it to be merged into.
        {"delete at 0", [](HMKDesign& d) { return d.deleteThreadAtIndex(0); }},
        {"move from the count", [](HMKDesign& d) { return d.moveThreadFromIndex(3, 0); }},
        {"move to -1", [](HMKDesign& d) { return d.moveThreadFromIndex(0, -1); }},
        {"move onto itself", [](HMKDesign& d) { return d.moveThreadFromIndex(1, 1); }},
        {"split without selection", [](HMKDesign& d) { return d.insertThreadBeforeSelection(); }},
    };
    for (const auto& c : cases) {
        HMKDesign design = original;
        EXPECT_TRUE(c.edit(design)) << c.name;
        EXPECT_TRUE(sameDesign(design, original)) << c.name;
    }
}

TEST(ThreadEdits, SplittingStartsANewThreadAfterTheFirstSelectedStitch) {
    // A colour change carries no movement, so the first selected stitch's own move is still
    // sewn in the old colour and the copy of the thread begins after it.
    HMKDesign design =
        makeDesign({stitch(10, 0), selected(stitch(10, 0)), selected(stitch(10, 0)), stitch(1, 0)});
    design.setSelectionActive(true);
    EXPECT_TRUE(design.insertThreadBeforeSelection());
    EXPECT_TRUE(sameStitches(design.stitches(), {stitch(10, 0), selected(stitch(10, 0)), change(),
                                                 selected(stitch(10, 0)), stitch(1, 0)}));
    EXPECT_EQ(threadNames(design), (std::vector<std::string>{"Thread 0", "Thread 0"}));
}

TEST(ThreadEdits, MovingAThreadKeepsEveryStitchWhereItWasSewn) {
    // Normalised designs begin with a jump and carry no movement on colour changes.
    HMKDesign original =
        makeDesign({jump(5, 5), stitch(10, 0), stitch(10, 0), change(), stitch(0, 10), jump(300, 5),
                    stitch(0, 10), change(), stitch(-10, 0), stitch(-200, -7)},
                   "DST");
    original.optimizeJumpsFor("DST");
    const SewnEnds originalEnds = sewnEndsByThread(original);
    for (std::int32_t from = 0; from < 3; ++from) {
        for (std::int32_t to = 0; to < 3; ++to) {
            if (from == to) {
                continue;
            }
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
            HMKDesign design = original;
            EXPECT_TRUE(design.moveThreadFromIndex(from, to));
            std::vector<int> order = {0, 1, 2};
            order.erase(order.begin() + from);
            order.insert(order.begin() + to, from);
            std::vector<std::string> expectedNames;
            SewnEnds expectedEnds;
            for (int thread : order) {
                expectedNames.push_back("Thread " + std::to_string(thread));
                expectedEnds.push_back(originalEnds[static_cast<std::size_t>(thread)]);
            }
            EXPECT_EQ(threadNames(design), expectedNames);
            expectNear(sewnEndsByThread(design), expectedEnds);
        }
    }
}

TEST(ThreadEdits, AppendingToAnEmptyDesignStartsWithTheOffsetJump) {
    HMKDesign design;
    design.setDesignType("DST");
    const HMKDesign other = makeDesign({stitch(1, 0), stitch(0, 1)});
    EXPECT_TRUE(design.appendDesign(other));
    EXPECT_TRUE(sameStitches(design.stitches(), {jump(10, -10), stitch(1, 0), stitch(0, 1)}));
    ASSERT_EQ(design.threads().size(), 1u);
    EXPECT_EQ(design.threads()[0].color, other.threads()[0].color);
    EXPECT_FALSE(design.selectionActive());
}

TEST(ThreadEdits, AppendingAddsAColourChangeAndKeepsThePastedSelection) {
    HMKDesign design = makeDesign({stitch(10, 0), stitch(0, 20)});
    const HMKDesign other = makeDesign({selected(stitch(1, 0)), stitch(0, 1)});
    design.appendDesign(other);
    EXPECT_TRUE(sameStitches(design.stitches(), {stitch(10, 0), stitch(0, 20), jump(0, -30),
                                                 change(), selected(stitch(1, 0)), stitch(0, 1)}));
    EXPECT_EQ(design.threads().size(), 2u);
    EXPECT_TRUE(design.selectionActive());
}

}  // namespace
