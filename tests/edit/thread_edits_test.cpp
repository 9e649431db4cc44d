#include "edit/edit_test_support.h"

namespace {

// Three threads: (10,0) (10,0) | (0,10) (0,10) | (-10,0).
std::vector<HMKStitch> threeThreads() {
    return {stitch(10, 0), stitch(10, 0), change(),      stitch(0, 10),
            stitch(0, 10), change(),      stitch(-10, 0)};
}

// The sewn points of each thread (ends of normal stitches with length), by thread index.
std::vector<std::vector<std::pair<double, double>>> sewnPointsByThread(const HMKDesign& design) {
    std::vector<std::vector<std::pair<double, double>>> threads(1);
    walkStitches(design.stitches(), [&](std::size_t, const HMKStitch& s, auto, auto end) {
        if (s.isColorChange) {
            threads.emplace_back();
        }
        if (!s.isJumpStitch && !s.isNullStitch()) {
            threads.back().emplace_back(end.x, end.y);
        }
    });
    return threads;
}

TEST(ThreadEdits, DeletingAThreadSewsItsStitchesInThePreviousThread) {
    HMKDesign design = makeDesign(threeThreads());
    EXPECT_TRUE(design.deleteThreadAtIndex(2));
    EXPECT_EQ(threadNames(design), (std::vector<std::string>{"Thread 0", "Thread 1"}));
    // The former colour change stays as a null stitch, so every position is kept.
    EXPECT_TRUE(
        sameStitches(design.stitches(), {stitch(10, 0), stitch(10, 0), change(), stitch(0, 10),
                                         stitch(0, 10), stitch(0, 0), stitch(-10, 0)}));
}

TEST(ThreadEdits, DeletingThreadZeroRemovesOnlyItsRecord) {
    HMKDesign design = makeDesign(threeThreads());
    design.deleteThreadAtIndex(0);
    EXPECT_EQ(threadNames(design), (std::vector<std::string>{"Thread 1", "Thread 2"}));
    EXPECT_TRUE(sameStitches(design.stitches(), threeThreads()));
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
    const auto originalPoints = sewnPointsByThread(original);
    for (std::int32_t from = 0; from < 3; ++from) {
        for (std::int32_t to = 0; to < 3; ++to) {
            if (from == to) {
                continue;
            }
            HMKDesign design = original;
            EXPECT_TRUE(design.moveThreadFromIndex(from, to));
            std::vector<int> order = {0, 1, 2};
            order.erase(order.begin() + from);
            order.insert(order.begin() + to, from);
            std::vector<std::string> expectedNames;
            for (int thread : order) {
                expectedNames.push_back("Thread " + std::to_string(thread));
            }
            EXPECT_EQ(threadNames(design), expectedNames) << from << " to " << to;
            auto points = sewnPointsByThread(design);
            ASSERT_EQ(points.size(), 3u) << from << " to " << to;
            for (std::size_t i = 0; i < 3; ++i) {
                auto& expected = originalPoints[static_cast<std::size_t>(order[i])];
                ASSERT_EQ(points[i].size(), expected.size()) << from << " to " << to;
                for (std::size_t p = 0; p < expected.size(); ++p) {
                    EXPECT_NEAR(points[i][p].first, expected[p].first, 1e-3);
                    EXPECT_NEAR(points[i][p].second, expected[p].second, 1e-3);
                }
            }
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
