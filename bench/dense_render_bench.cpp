// Drawing dense designs as the design view and the picture export do: the flower tiled to
// 100,000 and 1,000,000 stitches and the same stitches piled on one spot, flat and shaded, into
// square pictures 1000 and 2000 pixels wide.
#include <benchmark/benchmark.h>

#include <ctime>

#include "dense_designs.h"
#include "platform/design_picture.h"

namespace {

// Arguments: layout (0 tiled, 1 piled), stitches, picture side in pixels, 3D (0 or 1).
void BM_DenseRender(benchmark::State& state) {
    const HMKDesign& design = denseFlowers(static_cast<HMKDenseLayout>(state.range(0)),
                                           static_cast<std::size_t>(state.range(1)));
    HMKPictureOptions options;
    options.widthPixels = static_cast<int>(state.range(2));
    options.heightPixels = options.widthPixels;
    options.show3D = state.range(3) != 0;
    // Pictures this large are drawn in bands on every processor: the processor time of all
    // of them together tells the cost on a busy machine, where the wall time includes
    // waiting for a core.
    const std::clock_t start = std::clock();
    for (auto _ : state) {
        QImage image = renderDesignImage(design, options);
        benchmark::DoNotOptimize(image.constBits());
    }
    state.counters["process_cpu_ms"] = benchmark::Counter(
        1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / state.iterations());
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void denseRenderArguments(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"piled", "stitches", "px", "3d"});
    for (int piled : {0, 1}) {
        for (int stitches : {100'000, 1'000'000}) {
            for (int pixels : {1000, 2000}) {
                for (int shaded : {0, 1}) {
                    benchmark->Args({piled, stitches, pixels, shaded});
                }
            }
        }
    }
}

BENCHMARK(BM_DenseRender)->Apply(denseRenderArguments)->Unit(benchmark::kMillisecond);

}  // namespace
