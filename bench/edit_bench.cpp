// Every edit on designs of 100,000 and 1,000,000 stitches: each must stay linear in the stitch
// count (1M about ten times 100k) and well under 100 ms on 1M, since the document runs one
// per user command on the main thread.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <map>

#include "model/design.h"

namespace {

constexpr std::size_t kColorChanges = 20;
// Selections come in runs of this many stitches, every other run selected: many framed runs.
constexpr std::size_t kSelectionRun = 1000;

// A normalised DST-like design: a random walk of short stitches with about 5 % jumps (some
// longer than the format allows) and 20 colour changes.
HMKDesign makeDesign(std::size_t stitchCount) {
    std::uint32_t seed = 12345;
    auto next = [&seed](int range) {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<float>(
            static_cast<int>((seed >> 8) % static_cast<std::uint32_t>(2 * range + 1)) - range);
    };
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount);
    std::size_t changeEvery = stitchCount / (kColorChanges + 1);
    for (std::size_t i = 0; i < stitchCount; ++i) {
        if (i > 0 && i % changeEvery == 0 && i / changeEvery <= kColorChanges) {
            stitches.emplace_back(0, 0, false, true);
        } else if (i % 20 == 0) {
            stitches.emplace_back(next(200), next(200), true, false);
        } else {
            stitches.emplace_back(next(40), next(40), false, false);
        }
    }
    HMKDesign design;
    design.setStitches(std::move(stitches));
    for (std::size_t i = 0; i <= kColorChanges; ++i) {
        design.threads().push_back(HMKThread(HMKColor(), "Thread", std::to_string(i), "", ""));
    }
    design.setDesignType("DST");
    design.optimizeJumpsFor("DST");
    return design;
}

void selectRuns(HMKDesign& design) {
    auto& stitches = design.stitches();
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        stitches[i].isSelected = (i / kSelectionRun) % 2 == 1;
    }
    design.setSelectionActive(true);
}

const HMKDesign& cachedDesign(std::int64_t stitchCount, bool runsSelected) {
    static std::map<std::pair<std::int64_t, bool>, HMKDesign> cache;
    auto key = std::make_pair(stitchCount, runsSelected);
    auto found = cache.find(key);
    if (found == cache.end()) {
        HMKDesign design = makeDesign(static_cast<std::size_t>(stitchCount));
        if (runsSelected) {
            selectRuns(design);
        }
        found = cache.emplace(key, std::move(design)).first;
    }
    return found->second;
}

// Times `edit` on a fresh copy of the design each iteration (the copy is not timed).
void benchEdit(benchmark::State& state, bool runsSelected,
               const std::function<void(HMKDesign&)>& edit) {
    const HMKDesign& original = cachedDesign(state.range(0), runsSelected);
    for (auto _ : state) {
        state.PauseTiming();
        HMKDesign design = original;
        state.ResumeTiming();
        edit(design);
        benchmark::DoNotOptimize(design.stitches().data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Times a query that leaves the design unchanged.
void benchQuery(benchmark::State& state, bool runsSelected,
                const std::function<void(const HMKDesign&)>& query) {
    const HMKDesign& design = cachedDesign(state.range(0), runsSelected);
    for (auto _ : state) {
        query(design);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define HMK_EDIT_BENCH(name, selected, body)                         \
    void BM_##name(benchmark::State& state) {                        \
        benchEdit(state, selected, [](HMKDesign& design) { body; }); \
    }                                                                \
    BENCHMARK(BM_##name)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)
#define HMK_QUERY_BENCH(name, selected, body)                               \
    void BM_##name(benchmark::State& state) {                               \
        benchQuery(state, selected, [](const HMKDesign& design) { body; }); \
    }                                                                       \
    BENCHMARK(BM_##name)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)

// Selection and hit testing.
HMK_EDIT_BENCH(SelectAll, false, design.selectAll());
HMK_EDIT_BENCH(InvertAll, true, design.invertAll());
HMK_EDIT_BENCH(SelectInRect, false, design.selectInRect({-500, -500, 1000, 1000}, false));
HMK_EDIT_BENCH(SelectBlockAt, false, design.selectBlockAt({0, 0}, 0.7f, false));
HMK_QUERY_BENCH(SelectionRect, true, benchmark::DoNotOptimize(design.selectionRect()));
HMK_QUERY_BENCH(IndexOfStitchAt, false,
                benchmark::DoNotOptimize(design.indexOfStitchAt({10, 10}, 0.7f)));
HMK_QUERY_BENCH(IndexOfThreadAt, false,
                benchmark::DoNotOptimize(design.indexOfThreadAt({10, 10}, 0.7f)));

// Transforms: runs of 1000 stitches, every other one selected, except the whole rotation.
HMK_EDIT_BENCH(MoveSelection, true, design.moveSelectionByVector({12.5, -3}));
HMK_EDIT_BENCH(FlipSelection, true, design.flipSelection("V"));
HMK_EDIT_BENCH(RotateSelection, true, design.rotateSelectionByDegrees(30));
HMK_EDIT_BENCH(RotateWholeDesign, false, design.selectAll(); design.rotateSelectionByDegrees(30));
HMK_EDIT_BENCH(ResizeSelection, true, design.resizeSelectionByPercent(1.5f));
HMK_EDIT_BENCH(CenterDesign, false, design.centerDesign());

// Stitch edits.
HMK_EDIT_BENCH(OptimizeJumps, false, design.optimizeJumpsFor("PES"));
// Every run of DST-cut jump pieces is merged and cut again: the slow path, for ~10 % of records.
HMK_EDIT_BENCH(OptimizeJumpsDst, false, design.optimizeJumpsFor("DST"));
HMK_EDIT_BENCH(InsertJumpAtStart, false, design.insertJump({5, 5}, 0));
HMK_EDIT_BENCH(DeleteSelection, true, design.deleteSelection());
HMK_EDIT_BENCH(SwitchSelectionToJumps, true, design.switchSelectionToJumps(true));
HMK_EDIT_BENCH(AddBasting, false, design.addBastingWithLength(5, 2));

// Thread edits.
HMK_EDIT_BENCH(DeleteThread, false, design.deleteThreadAtIndex(10));
HMK_EDIT_BENCH(InsertThreadBeforeSelection, true, design.insertThreadBeforeSelection());
HMK_EDIT_BENCH(MoveThreadToEnd, false, design.moveThreadFromIndex(0, 20));
HMK_EDIT_BENCH(MoveThreadToStart, false, design.moveThreadFromIndex(15, 0));
HMK_EDIT_BENCH(AppendDesign, false, design.appendDesign(cachedDesign(100'000, false)));

}  // namespace
