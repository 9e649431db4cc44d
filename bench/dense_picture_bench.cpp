// Vector pictures of dense designs: SVG and PDF of the flower tiled to 100,000 and 1,000,000
// stitches and piled on one spot. The "bytes" counter is the size of the file made.
#include <benchmark/benchmark.h>

#include "dense_designs.h"
#include "platform/design_picture.h"

namespace {

// Arguments: layout (0 tiled, 1 piled), stitches.
void BM_DenseVectorPicture(benchmark::State& state, HMKPictureFormat format) {
    const HMKDesign& design = denseFlowers(static_cast<HMKDenseLayout>(state.range(0)),
                                           static_cast<std::size_t>(state.range(1)));
    HMKPictureOptions options;
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::optional<std::vector<std::uint8_t>> data = designPictureData(design, format, options);
        if (!data) {
            state.SkipWithError("no picture");
            break;
        }
        bytes = data->size();
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void denseVectorArguments(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"piled", "stitches"});
    for (int piled : {0, 1}) {
        for (int stitches : {100'000, 1'000'000}) {
            benchmark->Args({piled, stitches});
        }
    }
}

BENCHMARK_CAPTURE(BM_DenseVectorPicture, svg, HMKPictureFormat::svg)
    ->Apply(denseVectorArguments)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DenseVectorPicture, pdf, HMKPictureFormat::pdf)
    ->Apply(denseVectorArguments)
    ->Unit(benchmark::kMillisecond);

}  // namespace
