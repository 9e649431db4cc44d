// Saving, copying to the pasteboard and restoring a large design all go through the keyed
// archive, so both directions must stay linear in the stitch count.
#include <benchmark/benchmark.h>

#include "model/archive.h"

namespace {

HMKDesign makeDesign(std::size_t stitchCount) {
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount);
    for (std::size_t i = 0; i < stitchCount; ++i) {
        // Fractional moves as left by transforms, so the reals do not all coincide.
        stitches.emplace_back(static_cast<float>(i % 251) * 0.37f - 46,
                              static_cast<float>(i % 241) * 0.41f - 49, i % 20 == 0,
                              i % 50'000 == 0);
    }
    design.setStitches(std::move(stitches));
    for (int i = 0; i <= static_cast<int>(stitchCount / 50'000); ++i) {
        design.threads().push_back(
            HMKThread(HMKColor(i / 20.0, 0.5, 1 - i / 20.0), "Thread", std::to_string(i), "", ""));
    }
    design.setDesignName("Benchmark");
    design.setDesignType("DST");
    design.setDesignLocation("/designs/benchmark.dst");
    design.setDesignHoop(HMKDesign::hoops()[5]);
    design.recomputeBounds();
    return design;
}

void BM_ArchiveDesign(benchmark::State& state) {
    const HMKDesign design = makeDesign(static_cast<std::size_t>(state.range(0)));
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::vector<std::uint8_t> data = archiveDesign(design);
        bytes = data.size();
        benchmark::DoNotOptimize(data.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["archive_MB"] = static_cast<double>(bytes) / 1e6;
}
BENCHMARK(BM_ArchiveDesign)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void BM_UnarchiveDesign(benchmark::State& state) {
    const std::vector<std::uint8_t> data =
        archiveDesign(makeDesign(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) {
        auto design = unarchiveDesign(data);
        if (!design) {
            state.SkipWithError("the archive did not decode");
            break;
        }
        benchmark::DoNotOptimize(design->stitches().data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_UnarchiveDesign)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
