// The renderer's decisions, read back from a recording context as one line per painting call
// (width and colour of each stroke, dashed or solid, the path) for a table of named cases, and
// compared with tests/golden/renderer.txt, which reads as a description of what the renderer draws.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "render/recording_context.h"
#include "support/test_support.h"

namespace {

struct DrawOptions {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t thread = -1;
    HMKRect rect = {-1000, -1000, 2000, 2000};
};

std::string number(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", value);
    return buffer;
}

// "stroke 3.5 0.8,-0.2,-0.2,1 solid M 0 0 L 10 0": each stroke's width and colour, then the
// dash pattern and the path; a stroke of the same path right after another adds its width and
// colour to that line (the outline, then the core). Fills and gradients give their path or every
// call.
std::string summary(const HMKRecordingContext& context, bool calls) {
    std::vector<std::string> lines;
    if (calls)
        lines = context.callTexts();
    for (const HMKRecordedPaint& paint :
         calls ? std::vector<HMKRecordedPaint>() : context.paints()) {
        const HMKRgba& c = paint.color;
        const std::string width = number(paint.lineWidth) + " " + number(c.red) + "," +
                                  number(c.green) + "," + number(c.blue) + "," + number(c.alpha);
        std::string tail = paint.dash.empty() ? " solid" : " dashed";
        for (double length : paint.dash)
            tail += " " + number(length);
        tail += " " + paint.path;
        if (paint.kind == HMKRecordedPaint::Kind::stroke && !lines.empty() &&
            lines.back().ends_with(tail))
            lines.back().insert(lines.back().size() - tail.size(), " " + width);
        else if (paint.kind == HMKRecordedPaint::Kind::stroke)
            lines.push_back("stroke " + width + tail);
        else
            lines.push_back("fill " + paint.path);
    }
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

}  // namespace

TEST(DesignRenderer, DrawsWhatTheGoldenTraceRecords) {
    const HMKColor red(1, 0, 0), blue(0, 0, 1);
    const auto hide = [](std::int32_t thread) {
        return [=](HMKDesign& d) { d.setIsShown(false, thread); };
    };
    const auto range = [](HMKRange range) {
        return [=](HMKDesign& d) { d.setDisplayRange(range); };
    };
    const auto select = [](HMKDesign& d) { d.setSelectionActive(true); };
    const Stitches twoBlocks = {stitch(1, 0), stitch(1, 0), change(), stitch(1, 0), stitch(1, 0)};
    const Stitches eightJumps(8, jump(1, 0));
    const struct {
        const char* name;
        Stitches stitches;
        DrawOptions options = {};
        std::function<void(HMKDesign&)> change = {};
        bool calls = false;  // every call, not only the paints
        std::vector<HMKColor> colors = {HMKColor(1, 0, 0), HMKColor(0, 0, 1)};
    } cases[] = {
        {"a flat stitch: an outline in the dark colour, a core in the thread colour",
         {stitch(0, 5), stitch(10, 0)},
         {},
         {},
         true},
        {"no stitches", {}, {.showJumps = true}},
        {"no threads", {stitch(1, 0), stitch(1, 0)}, {}, {}, false, {}},
        {"the first stitch is a jump line when jumps are shown",
         {stitch(10, 0), stitch(10, 0)},
         {.showJumps = true}},
        {"and left out when they are hidden", {stitch(10, 0), stitch(10, 0)}},
        {"the stitch after a jump is the move onto the run",
         {stitch(1, 0), jump(20, 0), stitch(0, 3), stitch(0, 3)},
         {.showJumps = true}},
        {"so is the stitch after a colour change",
         {stitch(1, 0), stitch(1, 0), change(), stitch(5, 0), stitch(1, 0)},
         {.showJumps = true}},
        {"a moving colour change after a stitch is thread of the new colour",
         {stitch(1, 0), stitch(1, 0), change(5, 0)}},
        {"null stitches are not drawn but still count as normal",
         {stitch(1, 0), stitch(0, 0), stitch(2, 0)}},
        {"structure mode thins stitches, marks ends and draws jumps as hairlines",
         {jump(4, 0), stitch(2, 0), stitch(2, 0)},
         {.showJumps = true, .showStructure = true}},
        {"structure markers of hidden jumps are left out too",
         {jump(4, 0), stitch(2, 0), stitch(2, 0)},
         {.showStructure = true}},
        {"a thread index leaves out every other thread",
         twoBlocks,
         {.showJumps = true, .thread = 1}},
        {"jumps far outside the rectangle are never culled",
         {stitch(1, 0), stitch(1, 0), jump(500, 0), jump(500, 0), stitch(1, 0), stitch(1, 0)},
         {.showJumps = true, .rect = {0, -10, 20, 20}}},
        {"a stitch with only its end inside is drawn",
         {jump(240, 0), stitch(0, 0), stitch(-100, 0)},
         {.rect = {0, -10, 100, 20}}},
        {"culling widens the rectangle by 50: x from -50 to 150, the end excluded",
         {jump(-50, 0), stitch(0, 0), stitch(0, 1), jump(199.5f, -1), stitch(0, 0), stitch(0, 1),
          jump(0.5f, -1), stitch(0, 0), stitch(0, 1)},
         {.rect = {0, -100, 100, 200}}},
        {"a block without a thread is not drawn",
         {stitch(1, 0), change(), stitch(1, 0), change(), stitch(1, 0)}},
        {"the display range from 0 draws one stitch past its length",
         eightJumps,
         {.showJumps = true},
         range({0, 2})},
        {"an empty range at 0 still draws the first stitch",
         eightJumps,
         {.showJumps = true},
         range({0, 0})},
        {"a later range starts one stitch early", eightJumps, {.showJumps = true}, range({4, 1})},
        {"a range beyond the end draws everything from its start",
         eightJumps,
         {.showJumps = true},
         range({6, 100})},
        {"hidden threads are faded: q = 0.21 r + 0.71 g + 0.08 b + 0.22", twoBlocks, {}, hide(1)},
        {"an active selection fades everything and overlays the selected stitches",
         {stitch(1, 0), stitch(1, 0), selected(stitch(1, 0)), selected(jump(5, 0))},
         {.showJumps = true},
         select},
        {"jumps are dashed two on three off in the thread colour",
         {jump(1, 0)},
         {.showJumps = true}},
        {"and dark in 3D", {jump(1, 0)}, {.show3D = true, .showJumps = true}},
        {"a 3D stitch is a capsule filled with a gradient across it: r = 3.5 * 0.7 * 0.5, theta = "
         "0",
         {stitch(0, 5), stitch(10, 0)},
         {.show3D = true},
         {},
         true},
        // s = sin(theta), deliberately not theta: for (1, 3) s = 0.948683, for (0, -10) s = -1.
        {"the arc angles are s -+ 1.571", {stitch(5, 5), stitch(1, 3)}, {.show3D = true}, {}, true},
        {"going down", {stitch(5, 5), stitch(0, -10)}, {.show3D = true}, {}, true},
        {"going left the capsule turns clockwise; structure mode shrinks it",
         {stitch(20, 0), stitch(-10, 0)},
         {.show3D = true, .showStructure = true},
         {},
         true},
        {"faded gradients are grey and not clamped (q = 0.472)",
         {stitch(1, 0), stitch(1, 0)},
         {.show3D = true},
         select,
         true,
         {HMKColor(0.5, 0.1, 0.95)}},
    };
    std::string trace;
    for (const auto& c : cases) {
        std::vector<HMKThread> threads;
        for (const HMKColor& color : c.colors)
            threads.push_back(makeThread("1", "", color));
        HMKDesign design = makeDesign(c.stitches, threads);
        design.setThreads(threads);
        if (c.change)
            c.change(design);
        HMKRecordingContext context;
        design.drawDesignInRect(c.options.rect, context, c.options.show3D, c.options.showJumps,
                                c.options.showStructure, c.options.thread);
        EXPECT_EQ(context.stateDepth(), 0) << c.name;
        trace += std::string("# ") + c.name + "\n" + summary(context, c.calls);
    }
    expectGolden(trace, "renderer.txt");
}
