// The rules every reader shares, tested once: the stitch appender's running position and
// bounds, and the placeholder threads of formats without colours.
#include "formats/read/readers.h"
#include "support/test_support.h"

TEST(StitchAppender, EveryRecordWidensTheBoundsButTheStartDoesNot) {
    const std::pair<Stitches, Bounds> cases[] = {
        {{jump(9, 0), change(0, 1), stitch(-27, 0)}, {-18, 0, 9, 1}},
        {{stitch(1, 0)}, {1, 0, 1, 0}},
        {{}, kEmptyBounds},
    };
    for (const auto& [stitches, bounds] : cases) {
        HMKDesign design;
        design.resetBounds();
        HMKStitchAppender appender(design);
        for (const auto& stitch : stitches)
            appender.append(stitch);
        EXPECT_EQ(design.stitches(), stitches);
        EXPECT_EQ(boundsOf(design), bounds);
    }
}

TEST(PlaceholderThreads, AreKeyedOneToTwentyOfTheUndefinedPalette) {
    HMKDesign design;
    HMKPlaceholderThreads placeholders;
    for (int i = 0; i < 22; ++i)
        placeholders.appendTo(design);
    ASSERT_EQ(design.threads().size(), 22u);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(design.threads()[i],
                  HMKThread::fromPaletteKey(std::to_string(i % 20 + 1), "Undefined"));
    }
}
