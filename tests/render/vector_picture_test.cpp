// Vector pictures: stitches joined into runs with the strokes of their look, and the SVG text
// made from them at real size.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/design.h"
#include "render/design_svg.h"
#include "render/random_designs.h"
#include "render/stitch_runs.h"

namespace {

HMKStitch plain(float dx, float dy) {
    return HMKStitch(dx, dy, false, false);
}

// Thread 0: a move onto the run, two stitches, a jump, a move, one stitch; thread 1: a move
// and one stitch.
HMKDesign twoThreads() {
    HMKDesign design;
    design.setStitches({plain(10, 0), plain(10, 0), plain(0, 10), HMKStitch(50, 0, true, false),
                        plain(0, 5), plain(5, 0), HMKStitch(0, 0, false, true), plain(0, 20),
                        plain(20, 0)});
    design.setThreads({HMKThread(HMKColor(1, 0, 0), "A", "1", "", ""),
                       HMKThread(HMKColor(0, 0, 1), "B", "2", "", "")});
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

// Each run as "T0:3x2" (thread or Jump, thread index, points, strokes).
std::vector<std::string> runs(const HMKDesign& design, HMKDrawingSwitches switches) {
    std::vector<std::string> found;
    walkStitchRuns(design, switches, [&](const HMKStitchRun& run) {
        found.push_back(std::string(run.isThread ? "T" : "J") + std::to_string(run.thread) + ":" +
                        std::to_string(run.points.size()) + "x" +
                        std::to_string(run.strokes.size()) + (run.markerSize > 0 ? "+" : ""));
    });
    return found;
}

TEST(StitchRuns, JoinedStitchesOfOneLookMakeOneRun) {
    HMKDesign selected = twoThreads();
    selected.stitches()[2].isSelected = true;
    const struct {
        const char* name;
        const HMKDesign& design;
        HMKDrawingSwitches switches;
        std::vector<std::string> expected;
    } cases[] = {
        {"flat", twoThreads(), {}, {"T0:3x2", "T0:2x2", "T1:2x2"}},
        {"shaded", twoThreads(), {true, false, false, -1}, {"T0:3x3", "T0:2x3", "T1:2x3"}},
        {"jumps and marks",
         twoThreads(),
         {false, true, true, -1},
         {"J0:2x1+", "T0:3x2+", "J0:3x1+", "T0:2x2+", "J1:2x1+", "T1:2x2+"}},
        {"one thread", twoThreads(), {false, false, false, 1}, {"T1:2x2"}},
        {"selection overlay", selected, {}, {"T0:3x2", "T0:2x1", "T0:2x2", "T1:2x2"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(runs(c.design, c.switches), c.expected) << c.name;
    }
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

TEST(DesignSvg, IsRealSizeWithAPathPerRunAndTheCoreReusingIt) {
    const std::string svg = designSvg(twoThreads(), {}, 2, HMKRgba{1, 1, 1, 1});
    // 85 x 35 units, half a stitch and 5 mm more on every side, twice real size.
    EXPECT_NE(svg.find("width=\"37.7mm\" height=\"27.7mm\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("viewBox=\"-41.75 -86.75 188.5 138.5\""), std::string::npos);
    EXPECT_EQ(count(svg, "<path id="), 3u);
    EXPECT_EQ(count(svg, "<use "), 3u);
    // The first run, from (10, 0) to (30, 10), y pointing down.
    EXPECT_NE(svg.find("d=\"M10 0l10 0 0 -10\""), std::string::npos);
    EXPECT_NE(svg.find("<rect"), std::string::npos);
    // Red thread: a darker rim and the thread colour.
    EXPECT_NE(svg.find("<g stroke=\"#cc0000\" stroke-width=\"3.5\">"), std::string::npos);
    EXPECT_NE(svg.find("stroke=\"#ff0000\" stroke-width=\"2.45\""), std::string::npos);
}

TEST(DesignSvg, StaysSmallForDenseDesigns) {
    std::mt19937 random(3);
    HMKDesign design = randomDesign(random, 500, 8);
    const std::string svg = designSvg(design, {true, true, true, -1}, 1, std::nullopt);
    EXPECT_LT(svg.size(), 80 * design.stitches().size());
    EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");
}

}  // namespace
