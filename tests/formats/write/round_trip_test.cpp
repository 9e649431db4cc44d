// Every writer paired with its reader: a design written and read back has the same sewn
// stitches at the same needle positions (within the format's rounding), the same jumps and
// the same colour blocks; nothing is dropped or added.
#include <gtest/gtest.h>

#include <cmath>

#include "model/stitch_walk.h"
#include "support/test_support.h"

namespace {

// Where the needle goes, in order: the end of every stitch that is not a colour change, a
// point that repeats the one before counted once (formats differ in how they store a colour
// change's move and a block's first point), and how many stitches are sewn.
struct Trace {
    std::vector<HMKPosition<double>> points;
    std::size_t sewn = 0;
    std::size_t colorChanges = 0;
};

Trace traceOf(const HMKDesign& design) {
    Trace trace;
    walkStitches<double>(design.stitches(),
                         [&](std::size_t, const HMKStitch& stitch, const HMKPosition<double>&,
                             const HMKPosition<double>& end) {
                             if (stitch.isColorChange) {
                                 ++trace.colorChanges;
                                 return;
                             }
                             if (!stitch.isJumpStitch && !stitch.isNullStitch()) {
                                 ++trace.sewn;
                             }
                             if (trace.points.empty() || trace.points.back().x != end.x ||
                                 trace.points.back().y != end.y) {
                                 trace.points.push_back(end);
                             }
                         });
    return trace;
}

struct RoundTripCase {
    std::string extension;
    double tolerance;         // units of 0.1 mm
    bool startsWithItsStart;  // the reader adds a jump from the centre to the start (PES, PEC)
};

class RoundTrip : public ::testing::TestWithParam<RoundTripCase> {
protected:
    std::filesystem::path file(const std::string& name) const { return folder_.file(name); }
    ScratchFolder folder_;
};

// Three colour blocks of fractional moves in every direction, a stitch longer than PES
// stitches reach and a jump longer than DST, JEF and EXP records reach, centred on the origin.
HMKDesign sampleDesign() {
    std::vector<HMKStitch> stitches{jump(-120, -10)};
    for (int block = 0; block < 3; ++block) {
        if (block > 0)
            stitches.push_back(change(0, 0));
        for (int i = 0; i < 20; ++i) {
            stitches.push_back(stitch(i % 2 ? 7.5f : -2.25f, i % 3 ? 3.0f : -4.5f));
        }
        stitches.push_back(stitch(-70.25f, 1.5f));
        stitches.push_back(jump(block == 1 ? -200.5f : 200.5f, block == 1 ? 30 : -30));
    }
    return makeDesign(stitches, {makeThread("405", "Brother"), makeThread("620", "Brother"),
                                 makeThread("007", "Brother")});
}

TEST_P(RoundTrip, KeepsEverySewnStitchAtItsPositionAndTheColourBlocks) {
    const RoundTripCase& c = GetParam();
    HMKDesign written = sampleDesign();
    std::filesystem::path path = file("round." + c.extension);
    HMKError error;
    ASSERT_TRUE(written.exportDesignToURL(path, &error)) << error.message();

    HMKDesign read;
    ASSERT_TRUE(read.importDesignFromURL(path, &error)) << error.code << " " << error.message();
    const Trace expected = traceOf(written);
    Trace actual = traceOf(read);
    EXPECT_EQ(read.threads().size(), written.threads().size());
    EXPECT_EQ(actual.colorChanges, expected.colorChanges);
    EXPECT_EQ(actual.sewn, expected.sewn);

    HMKPosition<double> origin{0, 0};
    if (c.startsWithItsStart) {
        ASSERT_FALSE(actual.points.empty());
        origin = actual.points.front();
        actual.points.erase(actual.points.begin());
        // The reader's opening jump runs from the design's centre to the written start
        // position, which is the centre itself: positions come back absolute.
        EXPECT_NEAR(origin.x, 0, c.tolerance);
        EXPECT_NEAR(origin.y, 0, c.tolerance);
    }
    ASSERT_EQ(actual.points.size(), expected.points.size());
    for (std::size_t i = 0; i < expected.points.size(); ++i) {
        EXPECT_NEAR(actual.points[i].x - origin.x, expected.points[i].x, c.tolerance) << i;
        EXPECT_NEAR(actual.points[i].y - origin.y, expected.points[i].y, c.tolerance) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllWritableFormats, RoundTrip,
    ::testing::Values(RoundTripCase{"dst", 1.0, false}, RoundTripCase{"exp", 1.0, false},
                      RoundTripCase{"jef", 1.0, false}, RoundTripCase{"pes", 1.0, true},
                      RoundTripCase{"pec", 1.0, true},
                      // 1/6 mm units: half a unit is 0.84 design units.
                      RoundTripCase{"pcs", 0.9, false}),
    [](const ::testing::TestParamInfo<RoundTripCase>& info) { return info.param.extension; });

}  // namespace
