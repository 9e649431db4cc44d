// optimizeJumpsFor cuts long moves into pieces the format can hold. A design that would need
// far more pieces than the format can hold, or than a small multiple of its own size, is
// refused before anything is cut or allocated, and stays exactly as it was.
#include <cmath>

#include "support/test_support.h"

namespace {

TEST(NormalisationBudget, RefusesDesignsWhoseMovesWouldNeedTooManyPiecesAndKeepsThem) {
    struct Case {
        const char* behaviour;
        std::vector<HMKStitch> stitches;
        std::string type;
        bool normalised;
    };
    const Case cases[] = {
        {"a design cut a little", {stitch(5, 5), jump(300, 0), stitch(130, 0)}, "DST", true},
        // 10,000 pieces: any design may grow to a million stitches.
        {"a long jump within the allowance",
         {stitch(1, 1), jump(1.2e6f, 0), stitch(1, 1)},
         "DST",
         true},
        // 1.2 million pieces from three stitches.
        {"a jump far out", {stitch(1, 1), jump(1.44e8f, 0), stitch(1, 1)}, "DST", false},
        {"a jump far out, cut less finely for PCS", {stitch(1, 1), jump(1.44e8f, 0)}, "PCS", false},
        // 40,000 pieces: within the allowance, but twice the most stitches a PES file holds.
        {"stitches beyond what PES holds", {stitch(62 * 40'000, 0)}, "PES", true},
        {"stitches far beyond what PES holds", {stitch(62 * 70'000, 0)}, "PES", false},
        {"types without a writer are not cut", {jump(1.0e8f, 0), stitch(1, 1)}, "KSM", true},
        {"an endless move", {stitch(1, 1), jump(INFINITY, 0), stitch(1, 1)}, "DST", false},
        {"a move that is no number", {stitch(1, 1), stitch(0, NAN)}, "KSM", false},
    };
    for (const Case& c : cases) {
        HMKDesign design = makeDesign(c.stitches, {}, c.type);
        const HMKDesign original = design;
        EXPECT_EQ(design.optimizeJumpsFor(c.type), c.normalised) << c.behaviour;
        if (!c.normalised) {
            EXPECT_TRUE(sameDesign(design, original)) << c.behaviour;
        }
    }
}

}  // namespace
