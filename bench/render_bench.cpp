// Drawing a large design into a 2000 x 2000 raster, flat and with the shaded 3D look.
#include <benchmark/benchmark.h>

#include <cmath>

#include "model/design.h"
#include "platform/design_picture.h"

namespace {

// 100,000 stitches of satin-like zigzag rows filling about 100 x 100 mm, a jump to the next
// row every 400 stitches and a new colour every 20,000.
HMKDesign makeSatinDesign(std::size_t stitchCount) {
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount);
    const HMKColor colors[] = {
        {0.8, 0.1, 0.1}, {0.1, 0.6, 0.2}, {0.1, 0.2, 0.8}, {0.9, 0.8, 0.1}, {0.5, 0.2, 0.6}};
    design.threads().push_back(HMKThread(colors[0], "Thread", "1", "", ""));
    float direction = 1;
    for (std::size_t i = 0; i < stitchCount; ++i) {
        if (i > 0 && i % 20'000 == 0) {
            stitches.emplace_back(0, 0, false, true);
            design.threads().push_back(
                HMKThread(colors[design.threads().size() % 5], "Thread", "1", "", ""));
        } else if (i % 400 == 0) {
            direction = -direction;
            stitches.emplace_back(0, -25, true, false);
        } else {
            // Zigzag 30 units across, advancing 2.5 units per stitch along the row.
            const float across = (i % 2 == 0) ? 30.0f : -30.0f;
            stitches.emplace_back(direction * 2.5f, across, false, false);
        }
    }
    design.setStitches(std::move(stitches));
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

void renderDesign(benchmark::State& state, bool show3D) {
    HMKDesign design = makeSatinDesign(100'000);
    HMKPictureOptions options;
    options.widthPixels = 2000;
    options.heightPixels = 2000;
    options.show3D = show3D;
    options.showJumps = true;
    for (auto _ : state) {
        QImage image = renderDesignImage(design, options);
        benchmark::DoNotOptimize(image.constBits());
    }
    state.SetItemsProcessed(state.iterations() * 100'000);
}

void BM_RenderFlat(benchmark::State& state) {
    renderDesign(state, false);
}
void BM_Render3D(benchmark::State& state) {
    renderDesign(state, true);
}
BENCHMARK(BM_RenderFlat)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Render3D)->Unit(benchmark::kMillisecond);

}  // namespace
