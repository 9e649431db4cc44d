// Every writer paired with its reader: a design written and read back has the same needle
// positions (within the format's rounding) and the same colour blocks.
#include <gtest/gtest.h>

#include <cmath>

#include "model/stitch_walk.h"
#include "support/test_support.h"

namespace {

// The end of every stitch that is not a colour change, without repeats of the same point
// (some formats store a colour change's move as a separate zero-length stitch), and the
// number of colour changes.
struct Trace {
    std::vector<HMKPosition<double>> points;
    std::size_t colorChanges = 0;
};

Trace traceOf(const HMKDesign& design) {
    Trace trace;
    walkStitches<double>(design.stitches(),
                         [&](std::size_t, const HMKStitch& stitch, const HMKPosition<double>&,
                             const HMKPosition<double>& end) {
                             if (stitch.isColorChange)
                                 ++trace.colorChanges;
                             else if (trace.points.empty() || trace.points.back().x != end.x ||
                                      trace.points.back().y != end.y)
                                 trace.points.push_back(end);
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

// Three colour blocks with stitches, jumps and fractional moves, centred on the origin.
HMKDesign sampleDesign() {
    std::vector<HMKStitch> stitches{jump(-120, -10)};
    for (int block = 0; block < 3; ++block) {
        if (block > 0)
            stitches.push_back(change(0, 0));
        for (int i = 0; i < 20; ++i) {
            stitches.push_back(stitch(i % 2 ? 7.5f : -2.25f, i % 3 ? 3.0f : -4.5f));
        }
        stitches.push_back(jump(30, 0));
    }
    return makeDesign(stitches, {makeThread("405", "Brother"), makeThread("620", "Brother"),
                                 makeThread("007", "Brother")});
}

TEST_P(RoundTrip, KeepsNeedlePositionsAndColourBlocks) {
    const RoundTripCase& c = GetParam();
    HMKDesign written = sampleDesign();
    std::filesystem::path path = file("round." + c.extension);
    HMKError error;
    ::testing::internal::CaptureStderr();
    bool exported = written.exportDesignToURL(path, &error);
    ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(exported) << error.message();

    HMKDesign read;
    ASSERT_TRUE(read.importDesignFromURL(path, &error)) << error.code << " " << error.message();
    Trace expected = traceOf(written);
    Trace actual = traceOf(read);
    EXPECT_EQ(read.threads().size(), written.threads().size());
    EXPECT_EQ(actual.colorChanges, expected.colorChanges);

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
    ASSERT_GE(actual.points.size() + written.threads().size(), expected.points.size());
    for (std::size_t i = 0; i < std::min(actual.points.size(), expected.points.size()); ++i) {
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
