// Recolouring a whole design into a palette: every thread searches the palette for its
// nearest thread, and the palette file must be parsed only once for all of them.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "model/color_list.h"
#include "model/design.h"
#include "model/resources.h"

namespace {

namespace fs = std::filesystem;

constexpr int kDesignThreads = 100;
constexpr int kPaletteThreads = 400;

// A palette of evenly spread colours in a resources folder of the benchmark's own.
std::string installGeneratedPalette() {
    static const std::string name = [] {
        fs::path root = fs::temp_directory_path() / "hemlark-palette-bench";
        std::string palette = "Bench Poly";
        fs::path folder = root / "palettes" / (palette + ".clr");
        fs::create_directories(folder);
        std::ofstream out(folder / (palette + ".clr"));
        out << "generated benchmark palette\n";
        for (int i = 0; i < kPaletteThreads; ++i) {
            out << i + 1 << ' ' << (i % 8) / 7.0 << ' ' << (i / 8 % 8) / 7.0 << ' '
                << (i / 64) / 6.0 << " 1 " << (i % 50 == 0 ? "x" : "") << 1000 + i << '\n';
        }
        setResourceOverrideDirectory(root);
        return palette;
    }();
    return name;
}

HMKDesign makeDesign() {
    HMKDesign design;
    for (int i = 0; i < kDesignThreads; ++i) {
        design.threads().push_back(
            HMKThread(HMKColor(i / 99.0, (i * 37 % 100) / 99.0, (i * 61 % 100) / 99.0), "Thread",
                      std::to_string(i), "", ""));
    }
    return design;
}

// The installed palettes, or the generated one when none is installed.
std::vector<std::string> palettesToConvertInto() {
    std::vector<std::string> palettes;
    for (const auto& name : HMKColorList::shippedPaletteNames()) {
        if (HMKColorList::named(name)) {
            palettes.push_back(name);
        }
    }
    if (palettes.empty()) {
        palettes.push_back(installGeneratedPalette());
    }
    return palettes;
}

// One iteration converts all threads of the design into every palette in turn.
void BM_ConvertDesignIntoPalettes(benchmark::State& state) {
    const std::vector<std::string> palettes = palettesToConvertInto();
    const HMKDesign source = makeDesign();
    for (auto _ : state) {
        for (const auto& palette : palettes) {
            HMKDesign design = source;
            for (int i = 0; i < kDesignThreads; ++i) {
                design.changeThread(i, source.threads()[i].color, palette);
            }
            benchmark::DoNotOptimize(design.threads().data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kDesignThreads *
                            static_cast<std::int64_t>(palettes.size()));
    state.SetLabel(std::to_string(palettes.size()) + " palette(s)");
}
BENCHMARK(BM_ConvertDesignIntoPalettes)->Unit(benchmark::kMicrosecond);

}  // namespace
