// The renderer's decisions, read back from a recording context: which stitches are stroked,
// how wide, dashed or not, in which colour, and how the 3D capsules are built.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

#include "model/design.h"
#include "render/recording_context.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using Kind = HMKRecordedPaint::Kind;

const HMKColor kRed(1, 0, 0);
const HMKColor kBlue(0, 0, 1);
const HMKRect kEverywhere{-1000, -1000, 2000, 2000};

HMKStitch stitch(float dx, float dy) {
    return HMKStitch(dx, dy, false, false);
}
HMKStitch jump(float dx, float dy) {
    return HMKStitch(dx, dy, true, false);
}
HMKStitch colorChange(float dx, float dy) {
    return HMKStitch(dx, dy, false, true);
}
HMKStitch selected(HMKStitch s) {
    s.isSelected = true;
    return s;
}

// A design as a reader leaves it: one thread per colour block, bounds computed and the
// whole design in the display range.
HMKDesign makeDesign(std::vector<HMKStitch> stitches, std::vector<HMKColor> colors = {kRed}) {
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
// "fill M ...", "gradient CCW ...".
std::vector<std::string> summary(const HMKRecordingContext& context) {
    std::vector<std::string> lines;
    for (const HMKRecordedPaint& paint : context.paints()) {
        switch (paint.kind) {
            case Kind::stroke:
                lines.push_back("stroke " + number(paint.lineWidth) +
                                (paint.dash.empty() ? " solid " : " dashed ") + paint.path);
                break;
            case Kind::fill:
                lines.push_back("fill " + paint.path);
                break;
            case Kind::gradient:
                lines.push_back("gradient");
                break;
        }
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

void expectColorNear(const HMKRgba& actual, const HMKRgba& expected) {
    EXPECT_NEAR(actual.red, expected.red, 1e-9);
    EXPECT_NEAR(actual.green, expected.green, 1e-9);
    EXPECT_NEAR(actual.blue, expected.blue, 1e-9);
    EXPECT_NEAR(actual.alpha, expected.alpha, 1e-9);
}

TEST(DesignRenderer, EmptyDesignsDrawNothing) {
    HMKDesign noStitches = makeDesign({});
    HMKDesign noThreads = makeDesign({stitch(1, 0), stitch(1, 0)}, {});
    EXPECT_THAT(draw(noStitches).calls(), IsEmpty());
    EXPECT_THAT(draw(noThreads).calls(), IsEmpty());
}

TEST(DesignRenderer, FlatStitchIsAnOutlineInTheDarkColourAndACoreInTheThreadColour) {
    HMKDesign design = makeDesign({stitch(0, 5), stitch(10, 0)});
    EXPECT_THAT(
        draw(design).callTexts(),
        ElementsAre("saveState()", "setRoundLineCap()", "setLineDash()", "setLineWidth(3.5)",
                    "setStrokeColor(0.8, -0.2, -0.2, 1)", "moveTo(0, 5)", "lineTo(10, 5)",
                    "strokePath()", "setLineWidth(2.45)", "setStrokeColor(1, 0, 0, 1)",
                    "moveTo(0, 5)", "lineTo(10, 5)", "strokePath()", "restoreState()"));
}

struct StrokeCase {
    const char* name;
    std::vector<HMKStitch> stitches;
    DrawOptions options;
    std::vector<std::string> expected;
};

class DesignRendererStrokes : public ::testing::TestWithParam<StrokeCase> {};

TEST_P(DesignRendererStrokes, StrokesEachStitchAsThreadOrJump) {
    const StrokeCase& c = GetParam();
    HMKDesign design = makeDesign(c.stitches, {kRed, kBlue});
    EXPECT_THAT(summary(draw(design, c.options)), ElementsAreArray(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DesignRendererStrokes,
    ::testing::Values(
        StrokeCase{"FirstStitchIsAJumpLineWhenJumpsAreShown",
                   {stitch(10, 0), stitch(10, 0)},
                   {.showJumps = true},
                   {"stroke 1.75 dashed M 0 0 L 10 0", "stroke 3.5 solid M 10 0 L 20 0",
                    "stroke 2.45 solid M 10 0 L 20 0"}},
        StrokeCase{"FirstStitchIsLeftOutWhenJumpsAreHidden",
                   {stitch(10, 0), stitch(10, 0)},
                   {},
                   {"stroke 3.5 solid M 10 0 L 20 0", "stroke 2.45 solid M 10 0 L 20 0"}},
        StrokeCase{"StitchAfterAJumpIsTheMoveOntoTheRun",
                   {stitch(1, 0), jump(20, 0), stitch(0, 3), stitch(0, 3)},
                   {.showJumps = true},
                   {"stroke 1.75 dashed M 0 0 L 1 0", "stroke 1.75 dashed M 1 0 L 21 0",
                    "stroke 1.75 dashed M 21 0 L 21 3", "stroke 3.5 solid M 21 3 L 21 6",
                    "stroke 2.45 solid M 21 3 L 21 6"}},
        StrokeCase{"StitchAfterAColourChangeIsTheMoveOntoTheRun",
                   {stitch(1, 0), stitch(1, 0), colorChange(0, 0), stitch(5, 0), stitch(1, 0)},
                   {.showJumps = true},
                   {"stroke 1.75 dashed M 0 0 L 1 0", "stroke 3.5 solid M 1 0 L 2 0",
                    "stroke 2.45 solid M 1 0 L 2 0", "stroke 1.75 dashed M 2 0 L 7 0",
                    "stroke 3.5 solid M 7 0 L 8 0", "stroke 2.45 solid M 7 0 L 8 0"}},
        StrokeCase{"MovingColourChangeAfterAStitchIsDrawnAsThreadOfTheNewColour",
                   {stitch(1, 0), stitch(1, 0), colorChange(5, 0)},
                   {},
                   {"stroke 3.5 solid M 1 0 L 2 0", "stroke 2.45 solid M 1 0 L 2 0",
                    "stroke 3.5 solid M 2 0 L 7 0", "stroke 2.45 solid M 2 0 L 7 0"}},
        StrokeCase{"NullStitchesAreNotDrawnButStillCountAsNormal",
                   {stitch(1, 0), stitch(0, 0), stitch(2, 0)},
                   {},
                   {"stroke 3.5 solid M 1 0 L 3 0", "stroke 2.45 solid M 1 0 L 3 0"}},
        StrokeCase{
            "StructureModeThinsStitchesMarksEndsAndDrawsJumpsAsHairlines",
            {jump(4, 0), stitch(2, 0), stitch(2, 0)},
            {.showJumps = true, .showStructure = true},
            {"stroke 0 dashed M 0 0 L 4 0", "fill R 3.5 -0.5 1 1", "stroke 0 dashed M 4 0 L 6 0",
             "fill R 5.5 -0.5 1 1", "stroke 0.5 solid M 6 0 L 8 0", "stroke 0.35 solid M 6 0 L 8 0",
             "fill R 7.5 -0.5 1 1"}},
        StrokeCase{"StructureMarkersOfHiddenJumpsAreLeftOutToo",
                   {jump(4, 0), stitch(2, 0), stitch(2, 0)},
                   {.showStructure = true},
                   {"stroke 0.5 solid M 6 0 L 8 0", "stroke 0.35 solid M 6 0 L 8 0",
                    "fill R 7.5 -0.5 1 1"}},
        StrokeCase{"AThreadIndexLeavesOutEveryOtherThread",
                   {stitch(1, 0), stitch(1, 0), colorChange(0, 0), stitch(0, 1), stitch(0, 1)},
                   {.showJumps = true, .thread = 1},
                   {"stroke 1.75 dashed M 2 0 L 2 1", "stroke 3.5 solid M 2 1 L 2 2",
                    "stroke 2.45 solid M 2 1 L 2 2"}},
        StrokeCase{
            "JumpsFarOutsideTheRectangleAreNeverCulled",
            {stitch(1, 0), stitch(1, 0), jump(500, 0), jump(500, 0), stitch(1, 0), stitch(1, 0)},
            {.showJumps = true, .rect = {0, -10, 20, 20}},
            {"stroke 1.75 dashed M 0 0 L 1 0", "stroke 3.5 solid M 1 0 L 2 0",
             "stroke 2.45 solid M 1 0 L 2 0", "stroke 1.75 dashed M 2 0 L 502 0",
             "stroke 1.75 dashed M 502 0 L 1002 0"}}),
    [](const ::testing::TestParamInfo<StrokeCase>& info) { return info.param.name; });

struct CullCase {
    const char* name;
    float startX;
    bool drawn;
};

class DesignRendererCulling : public ::testing::TestWithParam<CullCase> {};

// The rectangle spans x 0..100; it is widened by 50, so x from -50 (inclusive) to 150
// (exclusive) counts as inside.
TEST_P(DesignRendererCulling, StitchesAreCulledOutsideTheRectangleWidenedBy50) {
    const CullCase& c = GetParam();
    HMKDesign design = makeDesign({jump(c.startX, 0), stitch(0, 0), stitch(0, 1)});
    auto strokes = summary(draw(design, {.rect = {0, -100, 100, 200}}));
    EXPECT_EQ(strokes.size(), c.drawn ? 2u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Cases, DesignRendererCulling,
                         ::testing::Values(CullCase{"Inside", 50, true},
                                           CullCase{"WithinLeftMargin", -50, true},
                                           CullCase{"BeyondLeftMargin", -50.5f, false},
                                           CullCase{"WithinRightMargin", 149.5f, true},
                                           CullCase{"AtRightEdgeOfMargin", 150, false}),
                         [](const ::testing::TestParamInfo<CullCase>& info) {
                             return info.param.name;
                         });

TEST(DesignRenderer, AStitchWithOnlyItsEndInsideIsDrawn) {
    HMKDesign design = makeDesign({jump(240, 0), stitch(0, 0), stitch(-100, 0)});
    EXPECT_THAT(
        summary(draw(design, {.rect = {0, -10, 100, 20}})),
        ElementsAre("stroke 3.5 solid M 240 0 L 140 0", "stroke 2.45 solid M 240 0 L 140 0"));
}

struct RangeCase {
    const char* name;
    HMKRange range;
    std::vector<std::string> expectedPaths;
};

class DesignRendererRange : public ::testing::TestWithParam<RangeCase> {};

// Stitch i runs from x = i to x = i + 1; every stitch is drawn as a jump line here.
TEST_P(DesignRendererRange, DrawsOnlyTheStitchesTheDisplayRangeAllows) {
    const RangeCase& c = GetParam();
    HMKDesign design = makeDesign(std::vector<HMKStitch>(8, jump(1, 0)));
    design.setDisplayRange(c.range);
    HMKRecordingContext context = draw(design, {.showJumps = true});
    std::vector<std::string> paths;
    for (const HMKRecordedPaint& paint : context.paints()) {
        paths.push_back(paint.path);
    }
    EXPECT_THAT(paths, ElementsAreArray(c.expectedPaths));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DesignRendererRange,
    ::testing::Values(RangeCase{"LocationZeroDrawsOneStitchPastTheLength",
                                {0, 2},
                                {"M 0 0 L 1 0", "M 1 0 L 2 0", "M 2 0 L 3 0"}},
                      RangeCase{
                          "EmptyRangeAtZeroStillDrawsTheFirstStitch", {0, 0}, {"M 0 0 L 1 0"}},
                      RangeCase{"LaterLocationStartsOneStitchEarly",
                                {4, 1},
                                {"M 3 0 L 4 0", "M 4 0 L 5 0", "M 5 0 L 6 0"}},
                      RangeCase{"RangeBeyondTheEndDrawsEverythingFromItsStart",
                                {6, 100},
                                {"M 5 0 L 6 0", "M 6 0 L 7 0", "M 7 0 L 8 0"}}),
    [](const ::testing::TestParamInfo<RangeCase>& info) { return info.param.name; });

TEST(DesignRenderer, HiddenThreadIsDrawnFadedNotLeftOut) {
    // q = 0.21 * 1 + 0.22 = 0.43 for pure red.
    HMKDesign design = makeDesign({stitch(1, 0), stitch(1, 0)});
    design.setIsShown(false, 0);
    auto colors = strokeColors(draw(design));
    ASSERT_EQ(colors.size(), 2u);
    expectColorNear(colors[0], {0.23, 0.23, 0.23, 0.1});
    expectColorNear(colors[1], {0.43, 0.43, 0.43, 0.1});
}

TEST(DesignRenderer, ColoursFollowTheThreadOfEachBlock) {
    HMKDesign design = makeDesign(
        {stitch(1, 0), stitch(1, 0), colorChange(0, 0), stitch(1, 0), stitch(1, 0)}, {kRed, kBlue});
    design.setIsShown(false, 1);
    auto colors = strokeColors(draw(design));
    ASSERT_EQ(colors.size(), 4u);
    expectColorNear(colors[1], {1, 0, 0, 1});
    // Blue is hidden: q = 0.08 + 0.22 = 0.3.
    expectColorNear(colors[3], {0.3, 0.3, 0.3, 0.1});
}

TEST(DesignRenderer, ActiveSelectionFadesEverythingAndOverlaysTheSelectedStitchesInRed) {
    HMKDesign design =
        makeDesign({stitch(1, 0), stitch(1, 0), selected(stitch(1, 0)), selected(jump(5, 0))});
    design.setSelectionActive(true);
    HMKRecordingContext context = draw(design, {.showJumps = true});
    EXPECT_THAT(summary(context),
                ElementsAre("stroke 1.75 dashed M 0 0 L 1 0", "stroke 3.5 solid M 1 0 L 2 0",
                            "stroke 2.45 solid M 1 0 L 2 0", "stroke 3.5 solid M 2 0 L 3 0",
                            "stroke 2.45 solid M 2 0 L 3 0", "stroke 3.5 solid M 2 0 L 3 0",
                            "stroke 1.75 dashed M 3 0 L 8 0", "stroke 1.75 dashed M 3 0 L 8 0"));
    auto colors = strokeColors(context);
    const HMKRgba faded{0.43, 0.43, 0.43, 0.1};
    const HMKRgba fadedDark{0.23, 0.23, 0.23, 0.1};
    const HMKRgba selection{0.8, 0, 0, 0.6};
    const std::vector<HMKRgba> expected{faded, fadedDark, faded, fadedDark,
                                        faded, selection, faded, selection};
    ASSERT_EQ(colors.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        expectColorNear(colors[i], expected[i]);
    }
}

TEST(DesignRenderer, JumpsAreDarkIn3DAndInTheThreadColourWhenFlat) {
    HMKDesign design = makeDesign({jump(1, 0)});
    auto flat = strokeColors(draw(design, {.showJumps = true}));
    auto shaded = strokeColors(draw(design, {.show3D = true, .showJumps = true}));
    ASSERT_EQ(flat.size(), 1u);
    ASSERT_EQ(shaded.size(), 1u);
    expectColorNear(flat[0], {1, 0, 0, 1});
    expectColorNear(shaded[0], {0.8, -0.2, -0.2, 1});
}

TEST(DesignRenderer, JumpsAreDashedTwoOnThreeOff) {
    HMKDesign design = makeDesign({jump(1, 0)});
    auto strokes = draw(design, {.showJumps = true}).paintsOfKind(Kind::stroke);
    ASSERT_EQ(strokes.size(), 1u);
    EXPECT_THAT(strokes[0].dash, ElementsAre(2.0, 3.0));
}

TEST(DesignRenderer, HorizontalStitchIn3DIsACapsuleFilledWithAGradientAcrossIt) {
    HMKDesign design = makeDesign({stitch(0, 5), stitch(10, 0)});
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
    HMKDesign design = makeDesign({stitch(20, 0), stitch(-10, 0)});
    auto arcs = draw(design, {.show3D = true});
    std::vector<double> clockwiseFlags;
    for (const HMKRecordedCall& call : arcs.calls()) {
        if (call.operation == HMKRecordedCall::Operation::addArc) {
            clockwiseFlags.push_back(call.numbers[5]);
        }
    }
    EXPECT_THAT(clockwiseFlags, ElementsAre(1.0, 1.0));
}

struct CapsuleCase {
    const char* name;
    float dx;
    float dy;
    double theta;
};

class DesignRendererCapsule : public ::testing::TestWithParam<CapsuleCase> {};

// The arc angles are s -+ 1.571 with s = sin(theta), deliberately not theta -+ pi/2.
TEST_P(DesignRendererCapsule, ArcAnglesAreTheSineOfTheAnglePlusOrMinus1571) {
    const CapsuleCase& c = GetParam();
    HMKDesign design = makeDesign({stitch(5, 5), stitch(c.dx, c.dy)});
    HMKRecordingContext context = draw(design, {.show3D = true});
    std::vector<const HMKRecordedCall*> arcs;
    for (const HMKRecordedCall& call : context.calls()) {
        if (call.operation == HMKRecordedCall::Operation::addArc) {
            arcs.push_back(&call);
        }
    }
    ASSERT_EQ(arcs.size(), 2u);
    const double s = std::sin(c.theta);
    const double r = 1.225;
    EXPECT_NEAR(arcs[0]->numbers[0], 5 + c.dx, 1e-9);
    EXPECT_NEAR(arcs[0]->numbers[1], 5 + c.dy, 1e-9);
    EXPECT_NEAR(arcs[0]->numbers[3], s - 1.571, 1e-6);
    EXPECT_NEAR(arcs[0]->numbers[4], s + 1.571, 1e-6);
    EXPECT_NEAR(arcs[1]->numbers[0], 5, 1e-9);
    EXPECT_NEAR(arcs[1]->numbers[3], s + 1.571, 1e-6);
    EXPECT_NEAR(arcs[1]->numbers[4], s - 1.571, 1e-6);
    auto gradients = context.paintsOfKind(Kind::gradient);
    ASSERT_EQ(gradients.size(), 1u);
    EXPECT_NEAR(gradients[0].startX, 5 - r * s, 1e-6);
    EXPECT_NEAR(gradients[0].startY, 5 + r * std::cos(c.theta), 1e-6);
    EXPECT_NEAR(gradients[0].endX, 5 + r * s, 1e-6);
    EXPECT_NEAR(gradients[0].endY, 5 - r * std::cos(c.theta), 1e-6);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DesignRendererCapsule,
    ::testing::Values(CapsuleCase{"Diagonal", 10, 10, std::atan(1.0)},
                      CapsuleCase{"VerticalUp", 0, 10, std::numbers::pi / 2},
                      CapsuleCase{"VerticalDown", 0, -10, -std::numbers::pi / 2},
                      CapsuleCase{"Steep", 1, 3, std::atan(3.0)}),
    [](const ::testing::TestParamInfo<CapsuleCase>& info) { return info.param.name; });

TEST(DesignRenderer, GradientStopsAreDarkLightDarkAndNotClamped) {
    HMKDesign design =
        makeDesign({stitch(1, 0), stitch(1, 0), stitch(1, 0)}, {HMKColor(0.5, 0.1, 0.95)});
    auto normal = draw(design, {.show3D = true}).paintsOfKind(Kind::gradient);
    design.setSelectionActive(true);
    auto faded = draw(design, {.show3D = true}).paintsOfKind(Kind::gradient);
    ASSERT_EQ(normal.size(), 2u);
    ASSERT_EQ(faded.size(), 2u);

    EXPECT_THAT(normal[0].gradient.locations, ElementsAre(0.0, 0.4, 1.0));
    ASSERT_EQ(normal[0].gradient.colors.size(), 3u);
    expectColorNear(normal[0].gradient.colors[0], {0.3, -0.1, 0.75, 1});
    expectColorNear(normal[0].gradient.colors[1], {0.7, 0.3, 1.15, 1});
    expectColorNear(normal[0].gradient.colors[2], {0.3, -0.1, 0.75, 1});

    // q = 0.21 * 0.5 + 0.71 * 0.1 + 0.08 * 0.95 + 0.22 = 0.472.
    EXPECT_THAT(faded[0].gradient.locations, ElementsAre(0.0, 0.4, 1.0));
    ASSERT_EQ(faded[0].gradient.colors.size(), 3u);
    expectColorNear(faded[0].gradient.colors[0], {0.272, 0.272, 0.272, 0.1});
    expectColorNear(faded[0].gradient.colors[1], {0.672, 0.672, 0.672, 0.1});
    expectColorNear(faded[0].gradient.colors[2], {0.272, 0.272, 0.272, 0.1});
}

TEST(DesignRenderer, StructureModeShrinksThe3DRadius) {
    HMKDesign design = makeDesign({stitch(1, 0), stitch(1, 0)});
    HMKRecordingContext context = draw(design, {.show3D = true, .showStructure = true});
    for (const HMKRecordedCall& call : context.calls()) {
        if (call.operation == HMKRecordedCall::Operation::addArc) {
            EXPECT_NEAR(call.numbers[2], 0.175, 1e-12);
        }
    }
}

TEST(DesignRenderer, GradientIsDrawnInsideItsOwnSavedStateAndEverythingIsRestored) {
    HMKDesign design = makeDesign({stitch(1, 0), stitch(1, 0), stitch(1, 2)});
    HMKRecordingContext context = draw(design, {.show3D = true, .showJumps = true});
    for (const HMKRecordedPaint& paint : context.paints()) {
        EXPECT_EQ(paint.stateDepth, paint.kind == Kind::gradient ? 2 : 1);
    }
    EXPECT_EQ(context.stateDepth(), 0);
}

TEST(DesignRenderer, StitchesBeyondTheLastThreadAreNotDrawn) {
    // Two colour changes but only two threads: the third block has no colour.
    HMKDesign design = makeDesign({stitch(1, 0), stitch(1, 0), colorChange(0, 0), stitch(1, 0),
                                   stitch(1, 0), colorChange(0, 0), stitch(1, 0), stitch(1, 0)},
                                  {kRed, kBlue});
    EXPECT_EQ(summary(draw(design)).size(), 4u);
    EXPECT_EQ(draw(design).stateDepth(), 0);
}

}  // namespace
