// The file manager's thumbnail of a dense design: reading a 100,000-stitch DST file with its
// thread side file and drawing it in 3D into a 256-pixel PNG, as hemlark-thumbnailer does
// (the process itself adds about 20 ms of start-up).
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <filesystem>
#include <string>

#include "model/design.h"
#include "model/diagnostics.h"
#include "thumbnailer/thumbnail.h"

namespace {

// Ten daisies sewn over each other: about 98,000 stitches in 5 colours, 78 mm across,
// written as DST with its thread side file.
bool writeDenseDesign(const std::filesystem::path& file) {
    HMKDesign design;
    HMKDesign flower;
    if (!design.importDesignFromURL(HEMLARK_SAMPLES_DIR "/flower.dst") ||
        !flower.importDesignFromURL(HEMLARK_SAMPLES_DIR "/flower.dst")) {
        return false;
    }
    for (int copy = 1; copy < 10; ++copy) {
        design.appendDesign(flower);
    }
    // Saving writes (or deletes) the side file of the design's location, which still names
    // the sample: point it at the new file, as the application does when it saves.
    design.setDesignLocation(file);
    design.setUseThreadFile(true);
    return design.exportDesignToURL(file);
}

void BM_ThumbnailOfDenseDesign(benchmark::State& state) {
    // As in the thumbnailer: the notes about DST's missing palette are no news here.
    setDiagnosticSink([](std::string_view) {});
    std::filesystem::path file = std::filesystem::temp_directory_path() /
                                 ("hemlark-thumbnail-bench-" + std::to_string(::getpid()) + ".dst");
    if (!writeDenseDesign(file)) {
        state.SkipWithError("the dense design cannot be written");
        return;
    }
    for (auto _ : state) {
        HMKDesign design;
        if (!readThumbnailDesign(file, design)) {
            state.SkipWithError("the dense design cannot be read");
            break;
        }
        auto png = designThumbnailPng(design, static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(png);
    }
    std::filesystem::remove(file);
    std::filesystem::remove(file.replace_extension("threads"));
    setDiagnosticSink({});
}
BENCHMARK(BM_ThumbnailOfDenseDesign)->Arg(128)->Arg(256)->Unit(benchmark::kMillisecond);

}  // namespace
