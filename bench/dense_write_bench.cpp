// Writing dense designs where the PES and PEC thumbnails used to dominate: the thumbnails on
// their own, a full PES of 30,000 stitches in 10 threads, PEC against DST for the same
// 1,000,000 stitches (both through exportDesignToURL, to a file), and a batch of 100 daisies
// read from JEF and written as PES one after the other.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "dense_designs.h"
#include "formats/write/pec_thumbnails.h"

namespace {

class ScratchFile {
public:
    explicit ScratchFile(const std::string& name) {
        std::string pattern = std::filesystem::temp_directory_path() / "hemlark-dense-XXXXXX";
        folder_ = ::mkdtemp(pattern.data());
        path_ = folder_ / name;
    }
    ~ScratchFile() { std::filesystem::remove_all(folder_); }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path folder_;
    std::filesystem::path path_;
};

// Arguments: layout (0 tiled, 1 piled), stitches. The thumbnail of all threads, then one per
// thread as a PES file carries them.
void BM_DensePecThumbnails(benchmark::State& state, bool withThreadThumbnails) {
    const HMKDesign& design = denseFlowers(static_cast<HMKDenseLayout>(state.range(0)),
                                           static_cast<std::size_t>(state.range(1)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(pecThumbnails(design, withThreadThumbnails).data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void denseThumbnailArguments(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"piled", "stitches"});
    for (int piled : {0, 1}) {
        for (int stitches : {30'000, 100'000, 1'000'000}) {
            benchmark->Args({piled, stitches});
        }
    }
}

BENCHMARK_CAPTURE(BM_DensePecThumbnails, whole, false)
    ->Apply(denseThumbnailArguments)
    ->Unit(benchmark::kMillisecond);
// PES files, the only ones with thumbnails per thread, hold at most 30,000 stitches.
BENCHMARK_CAPTURE(BM_DensePecThumbnails, perThread, true)
    ->ArgNames({"piled", "stitches"})
    ->Args({0, 30'000})
    ->Args({1, 30'000})
    ->Unit(benchmark::kMillisecond);

// Exports a fresh copy every time, since a write changes the design it writes.
void exportDense(benchmark::State& state, const HMKDesign& source, const std::string& extension) {
    ScratchFile file("dense." + extension);
    for (auto _ : state) {
        state.PauseTiming();
        HMKDesign design = source;
        state.ResumeTiming();
        HMKError error;
        if (!design.exportDesignToURL(file.path(), &error)) {
            state.SkipWithError(error.message().c_str());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * source.numberOfStitches());
}

void BM_DensePes30000In10Threads(benchmark::State& state) {
    static const HMKDesign design =
        withThreadCount(denseFlowers(HMKDenseLayout::piled, 30'000), 10);
    exportDense(state, design, "pes");
}
BENCHMARK(BM_DensePes30000In10Threads)->Unit(benchmark::kMillisecond);

// Argument: layout (0 tiled, 1 piled).
void BM_DenseExportMillion(benchmark::State& state, const std::string& extension) {
    exportDense(state, denseFlowers(static_cast<HMKDenseLayout>(state.range(0)), 1'000'000),
                extension);
}
BENCHMARK_CAPTURE(BM_DenseExportMillion, pec, std::string("pec"))
    ->ArgName("piled")
    ->DenseRange(0, 1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DenseExportMillion, dst, std::string("dst"))
    ->ArgName("piled")
    ->DenseRange(0, 1)
    ->Unit(benchmark::kMillisecond);

// What `hemlark convert --to pes --jobs 1` does for 100 JEF daisies: read, write, next.
void BM_HundredDaisiesJefToPes(benchmark::State& state) {
    ScratchFile file("daisy.pes");
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i) {
            HMKDesign design;
            HMKError error;
            if (!design.importDesignFromURL(HEMLARK_SAMPLES_DIR "/flower.jef", &error) ||
                !design.exportDesignToURL(file.path(), &error)) {
                state.SkipWithError(error.message().c_str());
                return;
            }
        }
    }
}
BENCHMARK(BM_HundredDaisiesJefToPes)->Unit(benchmark::kMillisecond);

}  // namespace
