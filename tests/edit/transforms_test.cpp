#include <functional>

#include "edit/edit_test_support.h"

namespace {

// Ends of the sewn stitches with the given selection mark, in order.
std::vector<HMKPosition<double>> sewnEnds(const HMKDesign& design, bool selectedOnes) {
    std::vector<HMKPosition<double>> ends;
    walkStitches(design.stitches(), [&](std::size_t, const HMKStitch& s, auto, auto end) {
        if (!s.isJumpStitch && !s.isNullStitch() && s.isSelected == selectedOnes) {
            ends.push_back(end);
        }
    });
    return ends;
}

void expectNear(const std::vector<HMKPosition<double>>& actual,
                const std::vector<HMKPosition<double>>& expected, const char* name) {
    ASSERT_EQ(actual.size(), expected.size()) << name;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i].x, expected[i].x, 1e-3) << name << " point " << i;
        EXPECT_NEAR(actual[i].y, expected[i].y, 1e-3) << name << " point " << i;
    }
}

// Two selected runs amid unselected stitches; the selection spans (10, 0) to (45, 15), so its
// centre is (27.5, 7.5).
HMKDesign designWithTwoSelectedRuns() {
    HMKDesign design =
        makeDesign({stitch(10, 0), selected(stitch(10, 0)), selected(stitch(0, 10)), stitch(10, 0),
                    jump(5, 5), selected(stitch(10, -5)), stitch(-3, 4), change(), stitch(7, 7)},
                   "VP3");
    design.setSelectionActive(true);
    return design;
}

struct TransformCase {
    const char* name;
    std::function<void(HMKDesign&)> apply;
    std::function<HMKPosition<double>(HMKPosition<double>)> mapsTo;
};

TEST(Transforms, SelectedStitchesMoveAndUnselectedOnesStayInPlace) {
    const TransformCase cases[] = {
        {"move",
         [](HMKDesign& d) {
             d.moveSelectionByVector({13.5, -7});
         },
         [](auto p) {
             return decltype(p){p.x + 13.5, p.y - 7};
         }},
        {"flip V", [](HMKDesign& d) { d.flipSelection("V"); },
         [](auto p) {
             return decltype(p){55 - p.x, p.y};
         }},
        {"flip H", [](HMKDesign& d) { d.flipSelection("H"); },
         [](auto p) {
             return decltype(p){p.x, 15 - p.y};
         }},
        {"rotate 90", [](HMKDesign& d) { d.rotateSelectionByDegrees(90); },
         [](auto p) {
             return decltype(p){27.5 - (p.y - 7.5), 7.5 + (p.x - 27.5)};
         }},
        {"resize 1.5", [](HMKDesign& d) { d.resizeSelectionByPercent(1.5f); },
         [](auto p) {
             return decltype(p){27.5 + (p.x - 27.5) * 1.5, 7.5 + (p.y - 7.5) * 1.5};
         }},
    };
    const HMKDesign original = designWithTwoSelectedRuns();
    std::vector<HMKPosition<double>> expectedSelected;
    for (const auto& c : cases) {
        HMKDesign design = original;
        c.apply(design);
        expectNear(sewnEnds(design, false), sewnEnds(original, false), c.name);
        expectedSelected.clear();
        for (auto p : sewnEnds(original, true)) {
            expectedSelected.push_back(c.mapsTo(p));
        }
        expectNear(sewnEnds(design, true), expectedSelected, c.name);
        EXPECT_EQ(design.threads().size(), 2u) << c.name;
    }
}

TEST(Transforms, RunsAreFramedByJumpsWithLandingStitches) {
    // The opening jump at index 0 is measured from the origin; the landing stitches share the
    // selection mark of the stitch they precede.
    HMKDesign design =
        makeDesign({selected(stitch(10, 0)), selected(stitch(10, 0)), stitch(10, 0)}, "VP3");
    design.setSelectionActive(true);
    design.moveSelectionByVector({5, 5});
    EXPECT_TRUE(sameStitches(design.stitches(),
                             {jump(5, 5), selected(stitch(0, 0)), selected(stitch(10, 0)),
                              selected(stitch(10, 0)), jump(-5, -5), stitch(0, 0), stitch(10, 0)}));
}

TEST(Transforms, RunReachingTheLastStitchGetsNoClosingJump) {
    HMKDesign design = makeDesign({stitch(10, 0), selected(stitch(10, 0))}, "VP3");
    design.setSelectionActive(true);
    design.moveSelectionByVector({0, 3});
    EXPECT_TRUE(sameStitches(design.stitches(), {stitch(10, 0), jump(0, 3), selected(stitch(0, 0)),
                                                 selected(stitch(10, 0))}));
}

TEST(Transforms, NothingSelectedStillNormalisesJumps) {
    HMKDesign design = makeDesign({stitch(10, 0), jump(1, 2), jump(3, 4), stitch(1, 1)}, "VP3");
    design.rotateSelectionByDegrees(45);
    EXPECT_TRUE(sameStitches(design.stitches(), {stitch(10, 0), jump(4, 6), stitch(1, 1)}));
}

TEST(Transforms, RotatingByZeroKeepsPositionsAndLeavesOnlyTheLandingStitches) {
    HMKDesign design = makeDesign(
        {stitch(10, 0), selected(stitch(10, 0)), selected(stitch(0, 10)), stitch(10, 0)}, "DST");
    design.setSelectionActive(true);
    design.rotateSelectionByDegrees(0);
    EXPECT_TRUE(sameStitches(design.stitches(),
                             {stitch(10, 0), selected(stitch(0, 0)), selected(stitch(10, 0)),
                              selected(stitch(0, 10)), stitch(0, 0), stitch(10, 0)}));
}

TEST(Transforms, RotationTurnsFromTheXAxisTowardsTheYAxis) {
    HMKDesign design = makeDesign({selected(stitch(10, 0))}, "VP3");
    design.setSelectionActive(true);
    design.rotateSelectionByDegrees(90);
    // About the centre (5, 0): the stitch now runs from (5, -5) up to (5, 5).
    const auto& s = design.stitches();
    ASSERT_EQ(s.size(), 3u);
    EXPECT_TRUE(s[0].isJumpStitch);
    EXPECT_NEAR(s[0].deltaX, 5, 1e-5);
    EXPECT_NEAR(s[0].deltaY, -5, 1e-5);
    EXPECT_NEAR(s[2].deltaX, 0, 1e-5);
    EXPECT_NEAR(s[2].deltaY, 10, 1e-5);
}

TEST(Transforms, FlipRejectsAnyOrientationButVAndH) {
    for (const char* orientation : {"v", "h", "", "VH", "X"}) {
        HMKDesign design = designWithTwoSelectedRuns();
        const HMKDesign before = design;
        HMKError error;
        EXPECT_FALSE(design.flipSelection(orientation, &error)) << orientation;
        EXPECT_EQ(error.code, 70);
        EXPECT_EQ(error.domain, kHMKDesignErrorDomain);
        EXPECT_EQ(error.message(), "Unable to flip the design (invalid orientation).");
        EXPECT_TRUE(sameDesign(design, before)) << orientation;
        EXPECT_FALSE(design.flipSelection(orientation));
    }
}

TEST(Transforms, CenterDesignPutsTheMiddleOfTheBoundsOnTheOrigin) {
    HMKDesign design = makeDesign({stitch(10, 0), stitch(0, 20)}, "DST");
    EXPECT_TRUE(design.centerDesign());
    EXPECT_EQ(design.centerOfDesign(), (HMKPoint{0, 0}));
    EXPECT_TRUE(sameStitches(design.stitches(),
                             {jump(-5, -10), stitch(0, 0), stitch(10, 0), stitch(0, 20)}));
}

TEST(Transforms, CenterDesignLeavesAnEmptiedDesignAlone) {
    HMKDesign design = makeDesign({selected(stitch(10, 0))});
    design.deleteSelection();
    EXPECT_TRUE(design.centerDesign());
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_EQ(design.xMin(), -100);
    EXPECT_EQ(design.yMax(), 100);
}

}  // namespace
