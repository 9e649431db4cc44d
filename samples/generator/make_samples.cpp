// hemlark-samples: writes the bundled sample designs into a folder, once per writable format,
// with the project's own writers. scripts/make-samples runs it on samples/.
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>

#include "model/color_list.h"
#include "sample_designs.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: hemlark-samples FOLDER\n");
        return 2;
    }
    if (!HMKColorList::named("Janome")) {
        std::fprintf(stderr, "hemlark-samples: the Janome thread palette is not installed\n");
        return 1;
    }
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    const std::pair<const char*, std::function<HMKDesign()>> designs[] = {
        {"flower", makeFlower}, {"heart", makeHeart}, {"star", makeStar}};
    int failures = 0;
    for (const auto& [name, make] : designs) {
        const HMKDesign original = make();
        std::printf("%s: %d stitches, %zu threads, %.1f x %.1f mm\n", name,
                    original.numberOfStitches(), original.numberOfThreads(),
                    original.designWidth() / 10.0, original.designHeight() / 10.0);
        // DST and EXP carry no colours, so they get the thread side file; they come last
        // because saving a design without a side file removes the one at its name.
        for (const char* extension : {"pes", "pec", "jef", "pcs", "dst", "exp"}) {
            HMKDesign design = original;
            const std::filesystem::path file = folder / (std::string(name) + "." + extension);
            design.setDesignLocation(file);
            const std::string_view format = extension;
            design.setUseThreadFile(format == "dst" || format == "exp");
            HMKError error;
            if (!design.exportDesignToURL(file, &error)) {
                std::fprintf(stderr, "%s: error %d: %s\n", file.c_str(), error.code,
                             error.message().c_str());
                ++failures;
            }
        }
    }
    return failures == 0 ? 0 : 1;
}
