// The sewing-time estimate on hand-made designs: moves at the machine speed, a fixed time per
// colour change and per run of jumps, and the text it is shown as.
#include <gtest/gtest.h>

#include <vector>

#include "model/sewing_time.h"

namespace {

HMKStitch stitch() {
    return HMKStitch(10, 0, false, false);
}
HMKStitch jump() {
    return HMKStitch(100, 0, true, false);
}
HMKStitch change() {
    return HMKStitch(0, 0, true, true);
}

TEST(SewingTime, EstimatesMovesColourChangesAndTrims) {
    struct Case {
        const char* what;
        std::vector<HMKStitch> records;
        double seconds;
    };
    const HMKSewingTimeSettings settings{600, 30, 5};  // 0.1 s per move
    const Case cases[] = {
        {"empty", {}, 0},
        {"ten stitches", std::vector<HMKStitch>(10, stitch()), 1.0},
        {"a jump run is one trim", {stitch(), jump(), jump(), jump(), stitch()}, 5.5},
        {"two runs", {jump(), stitch(), jump(), stitch()}, 10.4},
        {"colour change is no move", {stitch(), change(), stitch()}, 30.2},
        {"change splits runs", {jump(), change(), jump()}, 40.2},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(sewingSecondsOf(c.records, settings), c.seconds, 1e-9) << c.what;
    }
    // The default machine: 700 stitches a minute.
    EXPECT_NEAR(sewingSecondsOf(std::vector<HMKStitch>(700, stitch())), 60, 1e-9);
    EXPECT_EQ(sewingSeconds({10, 0, 0}, {0, 30, 5}), 0);
}

TEST(SewingTime, TimelineCountsBeforeEveryRecord) {
    const std::vector<HMKStitch> records{jump(), stitch(), change(), jump(), jump(), stitch()};
    const HMKSewingTimeline timeline(records);
    const HMKSewingCounts expected[] = {{0, 0, 0}, {1, 0, 1}, {2, 0, 1}, {2, 1, 1},
                                        {3, 1, 2}, {4, 1, 2}, {5, 1, 2}, {5, 1, 2}};
    for (std::uint64_t end = 0; end < std::size(expected); ++end) {
        EXPECT_EQ(timeline.countsBefore(end), expected[end]) << end;
    }
}

TEST(SewingTime, FormatsMinutesAndHours) {
    struct Case {
        double seconds;
        const char* text;
    };
    for (const Case& c : {Case{0, "0:00"}, Case{59.6, "1:00"}, Case{754, "12:34"},
                          Case{3600, "1:00:00"}, Case{3909, "1:05:09"}, Case{-5, "0:00"}}) {
        EXPECT_EQ(sewingTimeText(c.seconds), c.text) << c.seconds;
    }
}

}  // namespace
