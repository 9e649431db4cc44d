// The recording context reports calls and paints faithfully, state saves included.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "render/recording_context.h"

namespace {

using ::testing::ElementsAre;
using Kind = HMKRecordedPaint::Kind;

TEST(RecordingContext, WritesEveryCallWithItsArguments) {
    HMKRecordingContext context;
    context.setLineDash({2, 3});
    context.setFillColor({0.5, 0.25, 1, 0.1});
    context.addArc(1, 2, 3, -1.5, 1.5, true);
    context.addRect(0, 0, 1, 1);
    context.drawLinearGradient({{{1, 0, 0, 1}}, {0}}, 0, 1, 2, 3);
    EXPECT_THAT(context.callTexts(),
                ElementsAre("setLineDash(2, 3)", "setFillColor(0.5, 0.25, 1, 0.1)",
                            "addArc(1, 2, 3, -1.5, 1.5, 1)", "addRect(0, 0, 1, 1)",
                            "drawLinearGradient([0: 1, 0, 0, 1], 0, 1, 2, 3)"));
}

TEST(RecordingContext, PaintsCarryTheStateTheyWerePaintedWith) {
    HMKRecordingContext context;
    context.setLineWidth(2);
    context.setStrokeColor({1, 0, 0, 1});
    context.saveState();
    context.setLineWidth(5);
    context.moveTo(0, 0);
    context.lineTo(1, 1);
    context.strokePath();
    context.restoreState();
    context.moveTo(1, 1);
    context.lineTo(2, 2);
    context.strokePath();

    auto strokes = context.paintsOfKind(Kind::stroke);
    ASSERT_EQ(strokes.size(), 2u);
    EXPECT_EQ(strokes[0].path, "M 0 0 L 1 1");
    EXPECT_EQ(strokes[0].lineWidth, 5);
    EXPECT_EQ(strokes[0].stateDepth, 1);
    EXPECT_EQ(strokes[1].path, "M 1 1 L 2 2");
    EXPECT_EQ(strokes[1].lineWidth, 2);
    EXPECT_EQ(strokes[1].color, (HMKRgba{1, 0, 0, 1}));
    EXPECT_EQ(context.stateDepth(), 0);
}

TEST(RecordingContext, GradientRemembersTheClipItWasDrawnIn) {
    HMKRecordingContext context;
    context.saveState();
    context.addRect(0, 0, 2, 2);
    context.clipToPath();
    context.drawLinearGradient({{{0, 0, 0, 1}, {1, 1, 1, 1}}, {0, 1}}, 0, 0, 2, 0);
    context.restoreState();
    context.drawLinearGradient({{{0, 0, 0, 1}, {1, 1, 1, 1}}, {0, 1}}, 0, 0, 2, 0);

    auto gradients = context.paintsOfKind(Kind::gradient);
    ASSERT_EQ(gradients.size(), 2u);
    EXPECT_EQ(gradients[0].path, "R 0 0 2 2");
    EXPECT_EQ(gradients[1].path, "");
}

}  // namespace
