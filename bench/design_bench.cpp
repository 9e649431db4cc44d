// Copying a large design must be a plain vector copy.
#include <benchmark/benchmark.h>

#include "model/design.h"

namespace {

HMKDesign makeDesign(std::size_t stitchCount) {
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount);
    for (std::size_t i = 0; i < stitchCount; ++i) {
        stitches.emplace_back(static_cast<float>(i % 7) - 3, static_cast<float>(i % 5) - 2,
                              i % 20 == 0, false);
    }
    design.setStitches(std::move(stitches));
    design.threads().push_back(HMKThread(HMKColor(), "Thread", "1", "Undefined", ""));
    design.recomputeBounds();
    return design;
}

void BM_CopyDesign(benchmark::State& state) {
    HMKDesign design = makeDesign(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        HMKDesign copy = design;
        benchmark::DoNotOptimize(copy.stitches().data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CopyDesign)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
