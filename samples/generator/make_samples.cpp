// hemlark-samples: writes the bundled sample designs into a folder, once per writable format,
// with the project's own writers. scripts/make-samples runs it on samples/.
#include <cstdio>
#include <filesystem>
#include <functional>
#include <utility>

#include "platform/qt_raster_provider.h"
#include "sample_designs.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: hemlark-samples FOLDER\n");
        return 2;
    }
    // The PES and PEC writers draw their thumbnails through the raster provider.
    installQtRasterProvider();
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
        for (const char* extension : {"dst", "pes", "pec", "jef", "exp", "pcs"}) {
            HMKDesign design = original;
            const std::filesystem::path file = folder / (std::string(name) + "." + extension);
            design.setDesignLocation(file);
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
