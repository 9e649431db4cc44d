// Named examples of the edits the differential tests do not reach (jump insertion, trimming,
// stitches to jumps and back, basting, centring, thread edits, selection and hit tests), and
// what they make of small designs against tests/golden/edits.txt.
#include <algorithm>
#include <functional>

#include "support/test_support.h"

namespace {

constexpr float kTolerance = 0.7f;

// Three threads: (10,0) (10,0) | (0,10) (0,10) | (-10,0).
const Stitches kThreeThreads = {stitch(10, 0), stitch(10, 0), change(),      stitch(0, 10),
                                stitch(0, 10), change(),      stitch(-10, 0)};
// Ends at (10,0), (20,0), (30,0), (40,0), the last selected.
const Stitches kFourStitches = {stitch(10, 0), stitch(10, 0), stitch(10, 0),
                                selected(stitch(10, 0))};
// Stitches 0-1 and 3-4 form blocks; 2 is a jump, 5 a colour change.
const Stitches kBlocks = {stitch(10, 0), stitch(10, 0), jump(0, 50),  stitch(10, 0),
                          stitch(10, 0), change(),      stitch(0, 10)};

}  // namespace

TEST(EditExamples, EditWhatTheGoldenFileRecords) {
    using Edit = std::function<std::string(HMKDesign&)>;
    const auto insertJumpAt = [](std::vector<std::int32_t> indexes) -> Edit {
        return [=](HMKDesign& d) {
            std::string returned = "returns";
            for (auto index : indexes)
                returned += " " + std::to_string(d.insertJump({3, 4}, index));
            return returned;
        };
    };
    const auto done = [](auto edit) -> Edit {
        return [=](HMKDesign& d) { return "returns " + std::to_string(edit(d)); };
    };
    const auto rect = [](HMKRect rect, bool unselect) -> Edit {
        return [=](HMKDesign& d) { return d.selectInRect(rect, unselect), std::string(); };
    };
    const auto hits = [](std::vector<HMKPoint> points) -> Edit {
        return [=](HMKDesign& d) {
            std::string text = "stitch, thread, selected at";
            for (auto point : points)
                text += " " + std::to_string(d.indexOfStitchAt(point, kTolerance)) + "," +
                        std::to_string(d.indexOfThreadAt(point, kTolerance)) + "," +
                        std::to_string(d.isSelectedAt(point, kTolerance));
            return text;
        };
    };
    const auto block = [](HMKPoint point, bool unselect) -> Edit {
        return [=](HMKDesign& d) {
            return d.selectBlockAt(point, kTolerance, unselect), std::string();
        };
    };
    const auto rectangle = [](HMKDesign& d) {
        const HMKRect r = d.selectionRect();
        return "rect " + shortest(r.x) + " " + shortest(r.y) + " " + shortest(r.width) + " " +
               shortest(r.height);
    };
    const std::tuple<std::string, Stitches, Edit> cases[] = {
        {"a jump between normal stitches gets a landing stitch with the next one's mark",
         {stitch(1, 0), selected(stitch(1, 0))},
         insertJumpAt({1})},
        {"so does one before a normal first stitch", {stitch(1, 0)}, insertJumpAt({0})},
        {"none after a jump, before a jump or before a null stitch; no jump at the count or -1",
         {stitch(1, 0), jump(1, 0), stitch(1, 0), stitch(0, 0)},
         insertJumpAt({2, 1, 5, 7, -1})},
        // Deliberate: the rest of a stitch that follows a jump is a jump (and gets the jump
        // limit), as the machines' own software does.
        {"PES cuts stitches at 62 and jumps at 2046, a moving colour change becomes a stitch",
         {jump(10, 0), stitch(100, 0), jump(3000, 0), stitch(1, 0), change(5, 5), stitch(1, 0)},
         done([](HMKDesign& d) { return d.optimizeJumpsFor("PES"); })},
        {"trimming narrows the selection to its first and last normal stitches",
         {stitch(1, 0), selected(jump(1, 0)), selected(change()), selected(stitch(1, 0)),
          selected(jump(1, 0)), selected(stitch(1, 0)), selected(jump(2, 0)), stitch(1, 0)},
         done([](HMKDesign& d) { return d.trimSelectedJumps() * 10 + d.trimSelectedJumps(); })},
        {"switching to jumps merges them, and the merged jump leaves the selection",
         {stitch(10, 0), selected(stitch(30, 0)), selected(stitch(40, 0)), jump(5, 0),
          stitch(1, 0)},
         done([](HMKDesign& d) { return d.switchSelectionToJumps(true); })},
        {"switching back splits at the stitch limit",
         {stitch(10, 0), selected(jump(100, 0)), stitch(1, 0)},
         done([](HMKDesign& d) { return d.switchSelectionToJumps(false); })},
        // 5 mm stitches 1 mm away: the outline runs 10 units outside the design.
        {"basting outlines the design in a first thread of its own",
         {stitch(0, 0), stitch(100, 0), stitch(0, 50)},
         done([](HMKDesign& d) { return d.addBastingWithLength(5, 1); })},
        {"deleting everything leaves no threads and a 20 mm box", kThreeThreads,
         done([](HMKDesign& d) { return d.selectAll(), d.deleteSelection(); })},
        {"centring puts the middle of the bounds on the origin",
         {stitch(10, 0), stitch(0, 20)},
         done([](HMKDesign& d) { return d.centerDesign(); })},
        {"centring leaves an emptied design alone",
         {selected(stitch(10, 0))},
         done([](HMKDesign& d) { return d.deleteSelection() && d.centerDesign(); })},
        // The former colour change stays as a null stitch, so every position is kept.
        {"deleting a thread sews its stitches in the previous one", kThreeThreads,
         done([](HMKDesign& d) { return d.deleteThreadAtIndex(2); })},
        // A colour change carries no movement, so the first selected stitch's own move is
        // still sewn in the old colour.
        {"splitting starts a copy of the thread after the first selected stitch",
         {stitch(10, 0), selected(stitch(10, 0)), selected(stitch(10, 0)), stitch(1, 0)},
         done([](HMKDesign& d) { return d.insertThreadBeforeSelection(); })},
        {"appending adds a jump and a colour change, in the design's palette",
         {stitch(10, 0), stitch(0, 20)},
         done([](HMKDesign& d) {
             return d.appendDesign(makeDesign({selected(stitch(1, 0)), stitch(0, 1)}));
         })},
        {"appending to an empty design starts with the offset jump", {}, done([](HMKDesign& d) {
             return d.threads().clear(), d.appendDesign(makeDesign({stitch(1, 0), stitch(0, 1)}));
         })},
        {"the selection rectangle encloses the selected stitches",
         {stitch(10, 5), selected(stitch(5, 5)), stitch(-130, 20)},
         rectangle},
        {"an active but empty selection has a negative size",
         {stitch(10, 5), stitch(5, 5)},
         rectangle},
        {"select all", kFourStitches, done([](HMKDesign& d) { return d.selectAll(), 0; })},
        {"deselect all", kFourStitches, done([](HMKDesign& d) { return d.deselectAll(), 0; })},
        {"invert", kFourStitches, done([](HMKDesign& d) { return d.invertAll(), 0; })},
        {"invert to nothing", kFourStitches,
         done([](HMKDesign& d) { return d.selectAll(), d.invertAll(), 0; })},
        {"a rectangle adds the stitches with both ends inside, its edge included", kFourStitches,
         rect({5, -1, 25, 2}, false)},
        {"and removes them", kFourStitches, rect({-1, -1, 100, 2}, true)},
        {"a missed click still rescans the selection", kFourStitches, done([](HMKDesign& d) {
             return d.selectStitchAt({50, 50}, kTolerance, false), 0;
         })},
        {"a click selects the stitch", kFourStitches, done([](HMKDesign& d) {
             return d.selectStitchAt({5, 0}, kTolerance, false), 0;
         })},
        {"and unselects it", kFourStitches, done([](HMKDesign& d) {
             return d.selectStitchAt({35, 0}, kTolerance, true), 0;
         })},
        {"a block reaching the first stitch", kBlocks, block({15, 0}, false)},
        {"a block between a jump and a colour change", kBlocks, block({25, 50}, false)},
        {"a click on a jump selects the run after it", kBlocks, block({20, 25}, false)},
        {"a missed block", kBlocks, block({500, 500}, false)},
        {"unselecting a block", kBlocks,
         [&](HMKDesign& d) { return d.selectAll(), block({15, 0}, true)(d); }},
        // The squared distance to the stitch counts: 0.8 away is within 0.7, 0.9 is not; beyond
        // the end it is measured from the start, before the start from the end; null stitches
        // are never hit; the later of two overlapping stitches wins.
        {"hit tests along a stitch",
         {stitch(100, 0), stitch(-100, 0)},
         hits({{5, 0.8}, {5, 0.9}, {100.3, 0}, {-0.3, 0}})},
        {"hit tests at its end", {stitch(100, 0), stitch(0, 100)}, hits({{100.3, 0}})},
        {"hit tests on null stitches and colour changes",
         {stitch(0, 0), stitch(10, 0), change(), selected(stitch(0, 10)), change(5, 5),
          stitch(10, 0)},
         hits({{0, 0}, {5, 0}, {10, 0}, {10, 5}, {18, 15}, {-50, 0}})},
        {"a point on a colour change hits the stitch before",
         {stitch(10, 0), change()},
         hits({{10, 0}})},
        {"no stitch to hit", {}, hits({{0, 0}})},
    };
    std::string trace;
    for (const auto& [name, stitches, edit] : cases) {
        HMKDesign design = makeDesign(stitches, {}, name.starts_with("basting") ? "VP3" : "PES");
        design.setSelectionActive(std::ranges::any_of(stitches, &HMKStitch::isSelected) ||
                                  name.starts_with("an active"));
        const std::string result = edit(design);
        trace += "# " + name + "\n" + (result.empty() ? "" : result + "\n") + describe(design);
    }
    expectGolden(trace, "edits.txt");
}

TEST(EditExamples, InvalidIndicesAndOrientationsChangeNothing) {
    Stitches stitches = kThreeThreads;
    stitches.push_back(jump(5, 0));  // a normalisation would drop it
    const std::function<bool(HMKDesign&)> edits[] = {
        [](HMKDesign& d) { return d.deleteThreadAtIndex(3); },
        [](HMKDesign& d) { return d.deleteThreadAtIndex(-1); },
        [](HMKDesign& d) { return d.deleteThreadAtIndex(0); },  // no thread before it
        [](HMKDesign& d) { return d.moveThreadFromIndex(3, 0); },
        [](HMKDesign& d) { return d.moveThreadFromIndex(0, -1); },
        [](HMKDesign& d) { return d.moveThreadFromIndex(1, 1); },
        [](HMKDesign& d) { return d.insertThreadBeforeSelection(); },  // nothing selected
    };
    for (const auto& edit : edits) {
        HMKDesign design = makeDesign(stitches);
        const HMKDesign before = design;
        EXPECT_TRUE(edit(design));
        EXPECT_TRUE(sameDesign(design, before));
    }
    stitches[0].isSelected = true;
    for (const char* orientation : {"v", "h", "", "VH", "X"}) {
        HMKDesign design = makeDesign(stitches);
        design.setSelectionActive(true);
        const HMKDesign before = design;
        HMKError error;
        EXPECT_FALSE(design.flipSelection(orientation, &error)) << orientation;
        expectDesignError(error, 70, "Unable to flip the design (invalid orientation).");
        EXPECT_TRUE(sameDesign(design, before)) << orientation;
        EXPECT_FALSE(design.flipSelection(orientation));
    }
}
