// The renderer's decisions, read back from a recording context: which stitches are stroked,
// how wide, dashed or not, in which colour, and how the 3D capsules are built.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

#include "edit/edit_test_support.h"
#include "render/recording_context.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using Kind = HMKRecordedPaint::Kind;

const HMKColor kRed(1, 0, 0);
const HMKColor kBlue(0, 0, 1);
const HMKRect kEverywhere{-1000, -1000, 2000, 2000};

// A design as a reader leaves it: one thread per colour block, bounds computed and the
// whole design in the display range.
HMKDesign coloured(std::vector<HMKStitch> stitches, std::vector<HMKColor> colors = {kRed}) {
    HMKDesign design;
    const std::size_t count = stitches.size();
    design.setStitches(std::move(stitches));
    for (const HMKColor& color : colors) {
        design.threads().push_back(HMKThread(color, "Thread", "1", "", ""));
    }
    design.recomputeBounds();
    design.setDisplayRange({0, count});
    return design;
}

struct DrawOptions {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t thread = -1;
    HMKRect rect = kEverywhere;
};

HMKRecordingContext draw(const HMKDesign& design, DrawOptions options = {}) {
    HMKRecordingContext context;
    design.drawDesignInRect(options.rect, context, options.show3D, options.showJumps,
                            options.showStructure, options.thread);
    return context;
}

std::string number(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", value);
    return buffer;
}

// One line per painting call: "stroke 3.5 solid M 0 0 L 10 0", "stroke 1.75 dashed ...",
// "fill R ...", "gradient".
std::vector<std::string> summary(const HMKRecordingContext& context) {
    std::vector<std::string> lines;
    for (const HMKRecordedPaint& paint : context.paints()) {
        lines.push_back(paint.kind == Kind::gradient ? "gradient"
                        : paint.kind == Kind::fill
                            ? "fill " + paint.path
                            : "stroke " + number(paint.lineWidth) +
                                  (paint.dash.empty() ? " solid " : " dashed ") + paint.path);
    }
    return lines;
}

std::vector<HMKRgba> strokeColors(const HMKRecordingContext& context) {
    std::vector<HMKRgba> colors;
    for (const HMKRecordedPaint& paint : context.paintsOfKind(Kind::stroke)) {
        colors.push_back(paint.color);
    }
    return colors;
}

void expectColorsNear(const std::vector<HMKRgba>& actual, const std::vector<HMKRgba>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_NEAR(actual[i].red, expected[i].red, 1e-9);
        EXPECT_NEAR(actual[i].green, expected[i].green, 1e-9);
        EXPECT_NEAR(actual[i].blue, expected[i].blue, 1e-9);
        EXPECT_NEAR(actual[i].alpha, expected[i].alpha, 1e-9);
    }
}

std::vector<const HMKRecordedCall*> arcs(const HMKRecordingContext& context) {
    std::vector<const HMKRecordedCall*> found;
    for (const HMKRecordedCall& call : context.calls()) {
        if (call.operation == HMKRecordedCall::Operation::addArc) {
            found.push_back(&call);
        }
    }
    return found;
}

TEST(DesignRenderer, EmptyDesignsDrawNothing) {
    HMKDesign noStitches = coloured({});
    HMKDesign noThreads = coloured({stitch(1, 0), stitch(1, 0)}, {});
    EXPECT_THAT(draw(noStitches).calls(), IsEmpty());
    EXPECT_THAT(draw(noThreads).calls(), IsEmpty());
}

TEST(DesignRenderer, FlatStitchIsAnOutlineInTheDarkColourAndACoreInTheThreadColour) {
    HMKDesign design = coloured({stitch(0, 5), stitch(10, 0)});
    EXPECT_THAT(
        draw(design).callTexts(),
        ElementsAre("saveState()", "setRoundLineCap()", "setLineDash()", "setLineWidth(3.5)",
                    "setStrokeColor(0.8, -0.2, -0.2, 1)", "moveTo(0, 5)", "lineTo(10, 5)",
                    "strokePath()", "setLineWidth(2.45)", "setStrokeColor(1, 0, 0, 1)",
                    "moveTo(0, 5)", "lineTo(10, 5)", "strokePath()", "restoreState()"));
}

TEST(DesignRenderer, StrokesEachStitchAsThreadOrJump) {
    const struct {
        const char* name;
        std::vector<HMKStitch> stitches;
        DrawOptions options;
        std::vector<std::string> expected;
    } cases[] = {
        {"the first stitch is a jump line when jumps are shown",
         {stitch(10, 0), stitch(10, 0)},
         {.showJumps = true},
         {"stroke 1.75 dashed M 0 0 L 10 0", "stroke 3.5 solid M 10 0 L 20 0",
          "stroke 2.45 solid M 10 0 L 20 0"}},
        {"the first stitch is left out when jumps are hidden",
         {stitch(10, 0), stitch(10, 0)},
         {},
         {"stroke 3.5 solid M 10 0 L 20 0", "stroke 2.45 solid M 10 0 L 20 0"}},
        {"the stitch after a jump is the move onto the run",
         {stitch(1, 0), jump(20, 0), stitch(0, 3), stitch(0, 3)},
         {.showJumps = true},
         {"stroke 1.75 dashed M 0 0 L 1 0", "stroke 1.75 dashed M 1 0 L 21 0",
          "stroke 1.75 dashed M 21 0 L 21 3", "stroke 3.5 solid M 21 3 L 21 6",
          "stroke 2.45 solid M 21 3 L 21 6"}},
        {"the stitch after a colour change is the move onto the run",
         {stitch(1, 0), stitch(1, 0), change(), stitch(5, 0), stitch(1, 0)},
         {.showJumps = true},
         {"stroke 1.75 dashed M 0 0 L 1 0", "stroke 3.5 solid M 1 0 L 2 0",
          "stroke 2.45 solid M 1 0 L 2 0", "stroke 1.75 dashed M 2 0 L 7 0",
          "stroke 3.5 solid M 7 0 L 8 0", "stroke 2.45 solid M 7 0 L 8 0"}},
        {"a moving colour change after a stitch is thread of the new colour",
         {stitch(1, 0), stitch(1, 0), change(5, 0)},
         {},
         {"stroke 3.5 solid M 1 0 L 2 0", "stroke 2.45 solid M 1 0 L 2 0",
          "stroke 3.5 solid M 2 0 L 7 0", "stroke 2.45 solid M 2 0 L 7 0"}},
        {"null stitches are not drawn but still count as normal",
         {stitch(1, 0), stitch(0, 0), stitch(2, 0)},
         {},
         {"stroke 3.5 solid M 1 0 L 3 0", "stroke 2.45 solid M 1 0 L 3 0"}},
        {"structure mode thins stitches, marks ends and draws jumps as hairlines",
         {jump(4, 0), stitch(2, 0), stitch(2, 0)},
         {.showJumps = true, .showStructure = true},
         {"stroke 0 dashed M 0 0 L 4 0", "fill R 3.5 -0.5 1 1", "stroke 0 dashed M 4 0 L 6 0",
          "fill R 5.5 -0.5 1 1", "stroke 0.5 solid M 6 0 L 8 0", "stroke 0.35 solid M 6 0 L 8 0",
          "fill R 7.5 -0.5 1 1"}},
        {"structure markers of hidden jumps are left out too",
         {jump(4, 0), stitch(2, 0), stitch(2, 0)},
         {.showStructure = true},
         {"stroke 0.5 solid M 6 0 L 8 0", "stroke 0.35 solid M 6 0 L 8 0", "fill R 7.5 -0.5 1 1"}},
        {"a thread index leaves out every other thread",
         {stitch(1, 0), stitch(1, 0), change(), stitch(0, 1), stitch(0, 1)},
         {.showJumps = true, .thread = 1},
         {"stroke 1.75 dashed M 2 0 L 2 1", "stroke 3.5 solid M 2 1 L 2 2",
          "stroke 2.45 solid M 2 1 L 2 2"}},
        {"jumps far outside the rectangle are never culled",
         {stitch(1, 0), stitch(1, 0), jump(500, 0), jump(500, 0), stitch(1, 0), stitch(1, 0)},
         {.showJumps = true, .rect = {0, -10, 20, 20}},
         {"stroke 1.75 dashed M 0 0 L 1 0", "stroke 3.5 solid M 1 0 L 2 0",
          "stroke 2.45 solid M 1 0 L 2 0", "stroke 1.75 dashed M 2 0 L 502 0",
          "stroke 1.75 dashed M 502 0 L 1002 0"}},
        {"a stitch with only its end inside is drawn",
         {jump(240, 0), stitch(0, 0), stitch(-100, 0)},
         {.rect = {0, -10, 100, 20}},
         {"stroke 3.5 solid M 240 0 L 140 0", "stroke 2.45 solid M 240 0 L 140 0"}},
    };
    for (const auto& c : cases) {
        HMKDesign design = coloured(c.stitches, {kRed, kBlue});
        EXPECT_THAT(summary(draw(design, c.options)), ElementsAreArray(c.expected)) << c.name;
    }
}

TEST(DesignRenderer, StitchesAreCulledOutsideTheRectangleWidenedBy50) {
    // The rectangle spans x 0..100; widened by 50, x from -50 (inclusive) to 150 (exclusive)
    // counts as inside.
    const std::pair<float, bool> cases[] = {
        {50, true}, {-50, true}, {-50.5f, false}, {149.5f, true}, {150, false}};
    for (auto [startX, drawn] : cases) {
        HMKDesign design = coloured({jump(startX, 0), stitch(0, 0), stitch(0, 1)});
        auto strokes = summary(draw(design, {.rect = {0, -100, 100, 200}}));
        EXPECT_EQ(strokes.size(), drawn ? 2u : 0u) << startX;
    }
}

TEST(DesignRenderer, DrawsOnlyTheStitchesTheDisplayRangeAllows) {
    // Stitch i runs from x = i to x = i + 1; every stitch is drawn as a jump line here.
    const struct {
        const char* name;
        HMKRange range;
        std::vector<std::string> expectedPaths;
    } cases[] = {
        {"location zero draws one stitch past the length",
         {0, 2},
         {"M 0 0 L 1 0", "M 1 0 L 2 0", "M 2 0 L 3 0"}},
        {"an empty range at zero still draws the first stitch", {0, 0}, {"M 0 0 L 1 0"}},
        {"a later location starts one stitch early",
         {4, 1},
         {"M 3 0 L 4 0", "M 4 0 L 5 0", "M 5 0 L 6 0"}},
        {"a range beyond the end draws everything from its start",
         {6, 100},
         {"M 5 0 L 6 0", "M 6 0 L 7 0", "M 7 0 L 8 0"}},
    };
    for (const auto& c : cases) {
        HMKDesign design = coloured(std::vector<HMKStitch>(8, jump(1, 0)));
        design.setDisplayRange(c.range);
        HMKRecordingContext context = draw(design, {.showJumps = true});
        std::vector<std::string> paths;
        for (const HMKRecordedPaint& paint : context.paints()) {
            paths.push_back(paint.path);
        }
        EXPECT_THAT(paths, ElementsAreArray(c.expectedPaths)) << c.name;
    }
}

TEST(DesignRenderer, HiddenThreadsAreDrawnFadedAndColoursFollowTheThreadOfEachBlock) {
    // Faded grey is q = 0.21 r + 0.71 g + 0.08 b + 0.22, its outline 0.2 darker: 0.43 for red,
    // 0.3 for blue.
    HMKDesign design =
        coloured({stitch(1, 0), stitch(1, 0), change(), stitch(1, 0), stitch(1, 0)}, {kRed, kBlue});
    design.setIsShown(false, 1);
    expectColorsNear(
        strokeColors(draw(design)),
        {{0.8, -0.2, -0.2, 1}, {1, 0, 0, 1}, {0.1, 0.1, 0.1, 0.1}, {0.3, 0.3, 0.3, 0.1}});
    design.setIsShown(false, 0);
    expectColorsNear(strokeColors(draw(design)), {{0.23, 0.23, 0.23, 0.1},
                                                  {0.43, 0.43, 0.43, 0.1},
                                                  {0.1, 0.1, 0.1, 0.1},
                                                  {0.3, 0.3, 0.3, 0.1}});
}

TEST(DesignRenderer, ActiveSelectionFadesEverythingAndOverlaysTheSelectedStitchesInRed) {
    HMKDesign design =
        coloured({stitch(1, 0), stitch(1, 0), selected(stitch(1, 0)), selected(jump(5, 0))});
    design.setSelectionActive(true);
    HMKRecordingContext context = draw(design, {.showJumps = true});
    EXPECT_THAT(summary(context),
                ElementsAre("stroke 1.75 dashed M 0 0 L 1 0", "stroke 3.5 solid M 1 0 L 2 0",
                            "stroke 2.45 solid M 1 0 L 2 0", "stroke 3.5 solid M 2 0 L 3 0",
                            "stroke 2.45 solid M 2 0 L 3 0", "stroke 3.5 solid M 2 0 L 3 0",
                            "stroke 1.75 dashed M 3 0 L 8 0", "stroke 1.75 dashed M 3 0 L 8 0"));
    const HMKRgba faded{0.43, 0.43, 0.43, 0.1};
    const HMKRgba fadedDark{0.23, 0.23, 0.23, 0.1};
    const HMKRgba selection{0.8, 0, 0, 0.6};
    expectColorsNear(strokeColors(context),
                     {faded, fadedDark, faded, fadedDark, faded, selection, faded, selection});
}

TEST(DesignRenderer, JumpsAreDashedTwoOnThreeOffDarkIn3DAndInTheThreadColourWhenFlat) {
    HMKDesign design = coloured({jump(1, 0)});
    auto strokes = draw(design, {.showJumps = true}).paintsOfKind(Kind::stroke);
    ASSERT_EQ(strokes.size(), 1u);
    EXPECT_THAT(strokes[0].dash, ElementsAre(2.0, 3.0));
    expectColorsNear(strokeColors(draw(design, {.showJumps = true})), {{1, 0, 0, 1}});
    expectColorsNear(strokeColors(draw(design, {.show3D = true, .showJumps = true})),
                     {{0.8, -0.2, -0.2, 1}});
}

TEST(DesignRenderer, HorizontalStitchIn3DIsACapsuleFilledWithAGradientAcrossIt) {
    HMKDesign design = coloured({stitch(0, 5), stitch(10, 0)});
    auto calls = draw(design, {.show3D = true}).callTexts();
    // Outline, then the capsule: r = 3.5 * 0.7 * 0.5 = 1.225, theta = 0, so s = 0, c = 1.
    EXPECT_THAT(std::vector<std::string>(calls.begin() + 5, calls.end()),
                ElementsAre("moveTo(0, 5)", "lineTo(10, 5)", "strokePath()", "moveTo(0, 3.775)",
                            "addArc(10, 5, 1.225, -1.571, 1.571, 0)",
                            "addArc(0, 5, 1.225, 1.571, -1.571, 0)", "saveState()", "clipToPath()",
                            "drawLinearGradient([0: 0.8, -0.2, -0.2, 1], [0.4: 1.2, 0.2, 0.2, 1], "
                            "[1: 0.8, -0.2, -0.2, 1], 0, 6.225, 0, 3.775)",
                            "restoreState()", "restoreState()"));
}

TEST(DesignRenderer, StitchGoingLeftBuildsItsCapsuleClockwise) {
    HMKRecordingContext context = draw(coloured({stitch(20, 0), stitch(-10, 0)}), {.show3D = true});
    std::vector<double> clockwiseFlags;
    for (const HMKRecordedCall* arc : arcs(context)) {
        clockwiseFlags.push_back(arc->numbers[5]);
    }
    EXPECT_THAT(clockwiseFlags, ElementsAre(1.0, 1.0));
}

// The arc angles are s -+ 1.571 with s = sin(theta), deliberately not theta -+ pi/2.
TEST(DesignRenderer, ArcAnglesAreTheSineOfTheAnglePlusOrMinus1571) {
    const struct {
        float dx, dy;
        double theta;
    } cases[] = {{10, 10, std::atan(1.0)},
                 {0, 10, std::numbers::pi / 2},
                 {0, -10, -std::numbers::pi / 2},
                 {1, 3, std::atan(3.0)}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.dx << "," << c.dy);
        HMKRecordingContext context =
            draw(coloured({stitch(5, 5), stitch(c.dx, c.dy)}), {.show3D = true});
        auto found = arcs(context);
        ASSERT_EQ(found.size(), 2u);
        const double s = std::sin(c.theta), r = 1.225;
        EXPECT_NEAR(found[0]->numbers[0], 5 + c.dx, 1e-9);
        EXPECT_NEAR(found[0]->numbers[1], 5 + c.dy, 1e-9);
        EXPECT_NEAR(found[0]->numbers[3], s - 1.571, 1e-6);
        EXPECT_NEAR(found[0]->numbers[4], s + 1.571, 1e-6);
        EXPECT_NEAR(found[1]->numbers[0], 5, 1e-9);
        EXPECT_NEAR(found[1]->numbers[3], s + 1.571, 1e-6);
        EXPECT_NEAR(found[1]->numbers[4], s - 1.571, 1e-6);
        auto gradients = context.paintsOfKind(Kind::gradient);
        ASSERT_EQ(gradients.size(), 1u);
        EXPECT_NEAR(gradients[0].startX, 5 - r * s, 1e-6);
        EXPECT_NEAR(gradients[0].startY, 5 + r * std::cos(c.theta), 1e-6);
        EXPECT_NEAR(gradients[0].endX, 5 + r * s, 1e-6);
        EXPECT_NEAR(gradients[0].endY, 5 - r * std::cos(c.theta), 1e-6);
    }
}

TEST(DesignRenderer, GradientStopsAreDarkLightDarkAndNotClamped) {
    HMKDesign design =
        coloured({stitch(1, 0), stitch(1, 0), stitch(1, 0)}, {HMKColor(0.5, 0.1, 0.95)});
    auto normal = draw(design, {.show3D = true}).paintsOfKind(Kind::gradient);
    design.setSelectionActive(true);
    auto faded = draw(design, {.show3D = true}).paintsOfKind(Kind::gradient);
    ASSERT_EQ(normal.size(), 2u);
    ASSERT_EQ(faded.size(), 2u);
    EXPECT_THAT(normal[0].gradient.locations, ElementsAre(0.0, 0.4, 1.0));
    expectColorsNear(normal[0].gradient.colors,
                     {{0.3, -0.1, 0.75, 1}, {0.7, 0.3, 1.15, 1}, {0.3, -0.1, 0.75, 1}});
    // q = 0.21 * 0.5 + 0.71 * 0.1 + 0.08 * 0.95 + 0.22 = 0.472.
    EXPECT_THAT(faded[0].gradient.locations, ElementsAre(0.0, 0.4, 1.0));
    expectColorsNear(
        faded[0].gradient.colors,
        {{0.272, 0.272, 0.272, 0.1}, {0.672, 0.672, 0.672, 0.1}, {0.272, 0.272, 0.272, 0.1}});
}

TEST(DesignRenderer, StructureModeShrinksThe3DRadius) {
    HMKDesign design = coloured({stitch(1, 0), stitch(1, 0)});
    HMKRecordingContext context = draw(design, {.show3D = true, .showStructure = true});
    for (const HMKRecordedCall* arc : arcs(context)) {
        EXPECT_NEAR(arc->numbers[2], 0.175, 1e-12);
    }
}

TEST(DesignRenderer, GradientIsDrawnInsideItsOwnSavedStateAndEverythingIsRestored) {
    HMKDesign design = coloured({stitch(1, 0), stitch(1, 0), stitch(1, 2)});
    HMKRecordingContext context = draw(design, {.show3D = true, .showJumps = true});
    for (const HMKRecordedPaint& paint : context.paints()) {
        EXPECT_EQ(paint.stateDepth, paint.kind == Kind::gradient ? 2 : 1);
    }
    EXPECT_EQ(context.stateDepth(), 0);
}

TEST(DesignRenderer, StitchesBeyondTheLastThreadAreNotDrawn) {
    // Two colour changes but only two threads: the third block has no colour.
    HMKDesign design = coloured({stitch(1, 0), stitch(1, 0), change(), stitch(1, 0), stitch(1, 0),
                                 change(), stitch(1, 0), stitch(1, 0)},
                                {kRed, kBlue});
    EXPECT_EQ(summary(draw(design)).size(), 4u);
    EXPECT_EQ(draw(design).stateDepth(), 0);
}

}  // namespace
