#include <algorithm>
#include <functional>

#include "edit/edit_test_support.h"

namespace {

using Edit = std::function<void(HMKDesign&)>;

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

TEST(Transforms, SelectedStitchesMoveAndUnselectedOnesStayInPlace) {
    using Point = HMKPosition<double>;
    const struct {
        const char* name;
        Edit apply;
        std::function<Point(Point)> mapsTo;
    } cases[] = {
        {"move",
         [](auto& d) {
             d.moveSelectionByVector({13.5, -7});
         },
         [](Point p) {
             return Point{p.x + 13.5, p.y - 7};
         }},
        {"flip V", [](auto& d) { d.flipSelection("V"); },
         [](Point p) {
             return Point{55 - p.x, p.y};
         }},
        {"flip H", [](auto& d) { d.flipSelection("H"); },
         [](Point p) {
             return Point{p.x, 15 - p.y};
         }},
        {"rotate 90", [](auto& d) { d.rotateSelectionByDegrees(90); },
         [](Point p) {
             return Point{27.5 - (p.y - 7.5), 7.5 + (p.x - 27.5)};
         }},
        {"resize 1.5", [](auto& d) { d.resizeSelectionByPercent(1.5f); },
         [](Point p) {
             return Point{27.5 + (p.x - 27.5) * 1.5, 7.5 + (p.y - 7.5) * 1.5};
         }},
    };
    const HMKDesign original = designWithTwoSelectedRuns();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        HMKDesign design = original;
        c.apply(design);
        expectNear(sewnEndsByThread(design, false), sewnEndsByThread(original, false));
        SewnEnds expected = sewnEndsByThread(original, true);
        for (auto& thread : expected) {
            for (auto& p : thread) {
                p = c.mapsTo(p);
            }
        }
        expectNear(sewnEndsByThread(design, true), expected);
        EXPECT_EQ(design.threads().size(), 2u);
    }
}

TEST(Transforms, RunsAreFramedByJumpsWithLandingStitches) {
    const struct {
        const char* name;
        std::vector<HMKStitch> stitches;
        const char* type;
        Edit apply;
        std::vector<HMKStitch> expected;
    } cases[] = {
        // The landing stitches share the selection mark of the stitch they precede.
        {"the opening jump at index 0 is measured from the origin",
         {selected(stitch(10, 0)), selected(stitch(10, 0)), stitch(10, 0)},
         "VP3",
         [](auto& d) {
             d.moveSelectionByVector({5, 5});
         },
         {jump(5, 5), selected(stitch(0, 0)), selected(stitch(10, 0)), selected(stitch(10, 0)),
          jump(-5, -5), stitch(0, 0), stitch(10, 0)}},
        {"a run reaching the last stitch gets no closing jump",
         {stitch(10, 0), selected(stitch(10, 0))},
         "VP3",
         [](auto& d) {
             d.moveSelectionByVector({0, 3});
         },
         {stitch(10, 0), jump(0, 3), selected(stitch(0, 0)), selected(stitch(10, 0))}},
        {"nothing selected still normalises jumps",
         {stitch(10, 0), jump(1, 2), jump(3, 4), stitch(1, 1)},
         "VP3",
         [](auto& d) { d.rotateSelectionByDegrees(45); },
         {stitch(10, 0), jump(4, 6), stitch(1, 1)}},
        {"rotating by zero leaves only the landing stitches",
         {stitch(10, 0), selected(stitch(10, 0)), selected(stitch(0, 10)), stitch(10, 0)},
         "DST",
         [](auto& d) { d.rotateSelectionByDegrees(0); },
         {stitch(10, 0), selected(stitch(0, 0)), selected(stitch(10, 0)), selected(stitch(0, 10)),
          stitch(0, 0), stitch(10, 0)}},
        {"centring puts the middle of the bounds on the origin",
         {stitch(10, 0), stitch(0, 20)},
         "DST",
         [](auto& d) {
             EXPECT_TRUE(d.centerDesign());
             EXPECT_EQ(d.centerOfDesign(), (HMKPoint{0, 0}));
         },
         {jump(-5, -10), stitch(0, 0), stitch(10, 0), stitch(0, 20)}},
    };
    for (const auto& c : cases) {
        HMKDesign design = makeDesign(c.stitches, c.type);
        design.setSelectionActive(std::ranges::any_of(c.stitches, &HMKStitch::isSelected));
        c.apply(design);
        EXPECT_TRUE(sameStitches(design.stitches(), c.expected)) << c.name;
    }
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

TEST(Transforms, CenterDesignLeavesAnEmptiedDesignAlone) {
    HMKDesign design = makeDesign({selected(stitch(10, 0))});
    design.deleteSelection();
    EXPECT_TRUE(design.centerDesign());
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_EQ(design.xMin(), -100);
    EXPECT_EQ(design.yMax(), 100);
}

}  // namespace
