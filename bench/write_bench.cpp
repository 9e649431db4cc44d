// Converting large designs to every writable format: optimize + write to a temporary file
// through exportDesignToURL, and the writer alone. PES and PCS are benchmarked at their caps
// (30,000 and 14,000 stitches); PES and PEC include their thumbnails.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "model/design.h"

namespace {

constexpr std::size_t kThreads = 8;

// Short zig-zag moves with a jump every 20 stitches and 8 colour blocks; every format's
// reach and bounds accept it.
HMKDesign makeDesign(std::size_t recordCount) {
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    stitches.reserve(recordCount);
    const std::size_t blockLength = recordCount / kThreads;
    for (std::size_t i = 0; i < recordCount; ++i) {
        bool change = i > 0 && i % blockLength == 0 && i / blockLength < kThreads;
        float fraction = i % 2 ? 0.25f : -0.25f;  // fractional moves that do not drift
        stitches.emplace_back(static_cast<float>(i % 7) - 3 + fraction,
                              static_cast<float>(i % 5) - 2 - fraction, i % 20 == 0, change);
    }
    design.setStitches(std::move(stitches));
    for (std::size_t i = 0; i < kThreads; ++i) {
        design.threads().push_back(
            HMKThread(HMKColor(0.1 * i, 0.5, 0.9 - 0.1 * i), "Thread", "", "", ""));
    }
    design.recomputeBounds();
    return design;
}

class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "hemlark-bench-XXXXXX";
        path_ = ::mkdtemp(pattern.data());
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

void BM_ExportDesign(benchmark::State& state, const std::string& extension) {
    HMKDesign design = makeDesign(static_cast<std::size_t>(state.range(0)));
    ScratchFolder folder;
    const std::filesystem::path target = folder.path() / ("bench." + extension);
    for (auto _ : state) {
        HMKError error;
        if (!design.exportDesignToURL(target, &error)) {
            state.SkipWithError(error.message().c_str());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

using Writer = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);

void BM_WriterOnly(benchmark::State& state, Writer writer, const std::string& extension) {
    HMKDesign design = makeDesign(static_cast<std::size_t>(state.range(0)));
    design.optimizeJumpsFor(extension == "dst" ? "DST" : extension == "jef" ? "JEF" : "EXP");
    ScratchFolder folder;
    const std::filesystem::path target = folder.path() / ("bench." + extension);
    for (auto _ : state) {
        HMKError error;
        if (!(design.*writer)(target, &error)) {
            state.SkipWithError(error.message().c_str());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_CAPTURE(BM_ExportDesign, dst, std::string("dst"))
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportDesign, jef, std::string("jef"))
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportDesign, exp, std::string("exp"))
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportDesign, pec, std::string("pec"))
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportDesign, pes, std::string("pes"))
    ->Arg(30'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportDesign, pcs, std::string("pcs"))
    ->Arg(14'000)
    ->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(BM_WriterOnly, dst, &HMKDesign::exportDstDesignToURL, std::string("dst"))
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriterOnly, jef, &HMKDesign::exportJefDesignToURL, std::string("jef"))
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriterOnly, exp, &HMKDesign::exportExpDesignToURL, std::string("exp"))
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
