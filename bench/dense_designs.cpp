#include "dense_designs.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>

#include "model/stitch_walk.h"

namespace {

// Blank space between tiled copies, in design units.
constexpr double kTileGap = 20;

const HMKDesign& flower() {
    static const HMKDesign design = [] {
        HMKDesign loaded;
        HMKError error;
        if (!loaded.importDesignFromURL(HEMLARK_SAMPLES_DIR "/flower.pes", &error)) {
            std::fprintf(stderr, "cannot read the flower sample: %s\n", error.message().c_str());
            std::exit(1);
        }
        return loaded;
    }();
    return design;
}

HMKDesign buildDenseFlowers(HMKDenseLayout layout, std::size_t stitchCount) {
    const HMKDesign& source = flower();
    const std::size_t perCopy = static_cast<std::size_t>(source.numberOfStitches());
    const std::size_t copies = (stitchCount + perCopy - 1) / perCopy;
    const std::size_t columns = static_cast<std::size_t>(std::ceil(std::sqrt(double(copies))));
    const std::size_t rows = (copies + columns - 1) / columns;
    const double pitchX = source.xMax() - source.xMin() + kTileGap;
    const double pitchY = source.yMax() - source.yMin() + kTileGap;

    HMKDesign design;
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount + copies * (source.numberOfThreads() + 1));
    HMKPosition<double> needle;
    std::size_t sewn = 0;
    for (std::size_t copy = 0; copy < copies && sewn < stitchCount; ++copy) {
        // The copy's origin, chosen so that the whole layout is centred on the origin.
        HMKPosition<double> origin;
        if (layout == HMKDenseLayout::tiled) {
            origin.x = (double(copy % columns) - (columns - 1) / 2.0) * pitchX;
            origin.y = ((rows - 1) / 2.0 - double(copy / columns)) * pitchY;
        }
        origin.x -= (source.xMin() + source.xMax()) / 2;
        origin.y -= (source.yMin() + source.yMax()) / 2;
        if (copy > 0) {
            stitches.emplace_back(0, 0, false, true);
        }
        for (const HMKThread& thread : source.threads()) {
            design.threads().push_back(thread);
        }
        walkStitches<double>(source.stitches(),
                             [&](std::size_t i, const HMKStitch& stitch, const HMKPosition<double>&,
                                 const HMKPosition<double>& to) {
                                 if (sewn >= stitchCount) {
                                     return false;
                                 }
                                 const HMKPosition<double> target{origin.x + to.x, origin.y + to.y};
                                 // The copy's first record carries the needle over from the
                                 // previous copy.
                                 const bool jump = stitch.isJumpStitch || (copy > 0 && i == 0);
                                 stitches.emplace_back(static_cast<float>(target.x - needle.x),
                                                       static_cast<float>(target.y - needle.y),
                                                       jump, stitch.isColorChange);
                                 needle = target;
                                 if (!stitch.isColorChange) {
                                     ++sewn;
                                 }
                                 return true;
                             });
    }
    // A copy cut short may have lost its last colour changes: keep one thread per block.
    std::size_t blocks = 1;
    for (const HMKStitch& stitch : stitches) {
        blocks += stitch.isColorChange ? 1 : 0;
    }
    design.threads().resize(blocks);
    design.setStitches(std::move(stitches));
    design.setDesignName("dense.pes");
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

}  // namespace

const HMKDesign& denseFlowers(HMKDenseLayout layout, std::size_t stitchCount) {
    static std::map<std::pair<HMKDenseLayout, std::size_t>, HMKDesign> built;
    auto [entry, inserted] = built.try_emplace({layout, stitchCount});
    if (inserted) {
        entry->second = buildDenseFlowers(layout, stitchCount);
    }
    return entry->second;
}

HMKDesign withThreadCount(const HMKDesign& design, std::size_t threadCount) {
    HMKDesign result = design;
    std::size_t blocks = 1;
    for (HMKStitch& stitch : result.stitches()) {
        if (stitch.isColorChange && blocks == threadCount) {
            // The move stays, as a jump in the same thread.
            stitch.isColorChange = false;
            stitch.isJumpStitch = true;
        } else if (stitch.isColorChange) {
            ++blocks;
        }
    }
    result.threads().resize(std::min(threadCount, result.threads().size()));
    return result;
}
