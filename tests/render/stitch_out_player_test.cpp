// The stitch-out player's engine against a small hand-made design: stepping by stitch and by
// colour block, seeking, playing across frames with speed changes, and the display range it
// hands the renderer drawing exactly the sewn records.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "render/recording_context.h"
#include "render/stitch_out_player.h"

namespace {

// Records 0-9: a leading jump, two stitches, a colour change (3), a stitch, a run of two
// jumps, a stitch, a colour change (8), a stitch. No two records end at the same point.
std::shared_ptr<const HMKDesign> blocksDesign() {
    auto design = std::make_shared<HMKDesign>();
    design->setStitches({{10, 0, true, false},
                         {10, 0, false, false},
                         {10, 0, false, false},
                         {0, 10, true, true},
                         {10, 0, false, false},
                         {50, 0, true, false},
                         {50, 0, true, false},
                         {10, 0, false, false},
                         {0, 10, true, true},
                         {0, 10, false, false}});
    for (int i = 0; i < 3; ++i) {
        design->threads().push_back(HMKThread(HMKColor(0, 0, 0), "T", "1", "", ""));
    }
    design->recomputeBounds();
    return design;
}

TEST(StitchOutPlayer, StepsSeeksAndPlaysThroughTheDesign) {
    HMKStitchOutPlayer player(blocksDesign());
    EXPECT_EQ(player.position(), 10u);  // a new player shows the whole design
    struct Step {
        const char* what;
        std::function<void(HMKStitchOutPlayer&)> act;
        std::uint64_t position;
        std::int32_t thread;
        bool playing;
    };
    const auto advance = [](double seconds) {
        return [seconds](HMKStitchOutPlayer& p) { p.advance(seconds); };
    };
    const Step steps[] = {
        {"seek to the start", [](auto& p) { p.seek(0); }, 0, 0, false},
        {"back at the start stays", [](auto& p) { p.stepBackward(); }, 0, 0, false},
        {"one stitch", [](auto& p) { p.stepForward(); }, 1, 0, false},
        {"next block", [](auto& p) { p.nextBlock(); }, 3, 0, false},
        {"colour change sewn", [](auto& p) { p.stepForward(); }, 4, 1, false},
        {"back to its block's start", [](auto& p) { p.previousBlock(); }, 3, 0, false},
        {"and the one before", [](auto& p) { p.previousBlock(); }, 0, 0, false},
        {"seek past the end clamps", [](auto& p) { p.seek(99); }, 10, 2, false},
        {"previous block from the end", [](auto& p) { p.previousBlock(); }, 8, 1, false},
        {"next block to the end", [](auto& p) { p.nextBlock(); }, 10, 2, false},
        {"play at the end restarts", [](auto& p) { p.play(); }, 0, 0, true},
        {"paused clock stands still", [](auto& p) { p.pause(), p.advance(1); }, 0, 0, false},
        {"100/s for 16 ms: one", [](auto& p) { p.play(), p.advance(0.016); }, 1, 0, true},
        {"the fraction carries", advance(0.016), 3, 0, true},
        {"seeking keeps playing", [](auto& p) { p.seek(4); }, 4, 1, true},
        {"faster at once", [](auto& p) { p.setSpeed(250), p.advance(0.016); }, 8, 1, true},
        {"the end stops", advance(1), 10, 2, false},
        {"long frames are capped", [](auto& p) { p.setSpeed(20), p.play(), p.advance(9); }, 5, 1,
         true},
        {"slowest speed, capped frame", [](auto& p) { p.setSpeed(0), p.advance(0.5); }, 5, 1, true},
        {"half a second", advance(0.25), 5, 1, true},
        {"a second: one stitch", [](auto& p) { p.advance(0.25), p.advance(0.25); }, 6, 1, true},
    };
    for (const Step& step : steps) {
        step.act(player);
        EXPECT_EQ(player.position(), step.position) << step.what;
        EXPECT_EQ(player.currentThread(), step.thread) << step.what;
        EXPECT_EQ(player.isPlaying(), step.playing) << step.what;
    }
    EXPECT_EQ(player.speed(), HMKStitchOutPlayer::kMinimumSpeed);
    player.setSpeed(1e9);
    EXPECT_EQ(player.speed(), HMKStitchOutPlayer::kMaximumSpeed);
}

TEST(StitchOutPlayer, CountsStitchesTimeAndNeedleAtEveryPosition) {
    HMKStitchOutPlayer player(blocksDesign());
    EXPECT_EQ(player.stitchCount(), 8u);  // as numberOfStitches: 10 records + 1 - 3 threads
    const HMKSewingTimeSettings settings{600, 30, 5};
    struct Case {
        std::uint64_t position;
        std::uint64_t stitch;
        double elapsed;
        HMKPoint needle;
    };
    // Seconds: 0.1 per move, 30 per colour change, 5 per run of jumps.
    for (const Case& c :
         {Case{0, 0, 0, {0, 0}}, Case{1, 1, 5.1, {10, 0}}, Case{4, 3, 35.3, {30, 10}},
          Case{7, 6, 40.6, {140, 10}}, Case{10, 8, 70.8, {150, 30}}}) {
        player.seek(c.position);
        EXPECT_EQ(player.stitchNumber(), c.stitch) << c.position;
        EXPECT_NEAR(player.elapsedSeconds(settings), c.elapsed, 1e-9) << c.position;
        EXPECT_NEAR(player.remainingSeconds(settings), 70.8 - c.elapsed, 1e-9) << c.position;
        EXPECT_EQ(player.needlePosition(), c.needle) << c.position;
    }
}

TEST(StitchOutPlayer, DisplayRangeDrawsExactlyTheSewnRecords) {
    HMKStitchOutPlayer player(blocksDesign());
    HMKDesign design = *player.design();
    for (std::uint64_t position = 1; position <= player.recordCount(); ++position) {
        player.seek(position);
        design.setDisplayRange(player.displayRange());
        HMKRecordingContext context;
        design.drawDesignInRect({-1000, -1000, 2000, 2000}, context, false, true, false);
        const auto strokes = context.paintsOfKind(HMKRecordedPaint::Kind::stroke);
        ASSERT_FALSE(strokes.empty()) << position;
        EXPECT_EQ(strokes.front().path.rfind("M 0 0", 0), 0u) << position;
        const HMKPoint needle = player.needlePosition();
        const std::string end = " L " + std::to_string(static_cast<int>(needle.x)) + " " +
                                std::to_string(static_cast<int>(needle.y));
        EXPECT_TRUE(strokes.back().path.ends_with(end)) << position << strokes.back().path;
    }
    player.seek(0);
    EXPECT_TRUE(player.showsNothing());
}

TEST(StitchOutPlayer, AChangedDesignKeepsThePositionWhereItCan) {
    HMKStitchOutPlayer player(blocksDesign());
    player.seek(7);
    auto shorter = std::make_shared<HMKDesign>(*player.design());
    shorter->stitches().resize(5);
    player.setDesign(shorter);
    EXPECT_EQ(player.position(), 5u);
    // More colour changes than threads: the last thread sews the rest.
    shorter->threads().resize(1);
    player.setDesign(shorter);
    EXPECT_EQ(player.currentThread(), 0);
    player.setDesign(nullptr);
    EXPECT_EQ(player.position(), 0u);
    player.play();
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(player.needlePosition(), HMKPoint{});
}

}  // namespace
