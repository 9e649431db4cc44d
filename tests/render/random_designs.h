// Random designs for the differential tests of the drawing code: satin columns, running
// stitches, jumps, colour changes, selected stitches and hidden threads, reproducible from a
// seed.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "model/design.h"

// A design of up to `threads` colour blocks within about +-reach units of the origin.
inline HMKDesign randomDesign(std::mt19937& random, double reach = 200, int threads = 4) {
    std::uniform_real_distribution<double> unit(0, 1);
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    double x = 0, y = 0;
    const int blocks = 1 + static_cast<int>(unit(random) * threads);
    for (int block = 0; block < blocks; ++block) {
        HMKThread thread(HMKColor(unit(random), unit(random), unit(random)), "Thread", "1", "", "");
        thread.isShown = unit(random) > 0.1;
        design.threads().push_back(thread);
        if (block > 0) {
            stitches.emplace_back(0, 0, false, true);
        }
        for (int run = 1 + static_cast<int>(unit(random) * 3); run > 0; --run) {
            // A jump to where the run starts, then a satin column or a running line.
            const double startX = (unit(random) * 2 - 1) * reach;
            const double startY = (unit(random) * 2 - 1) * reach;
            stitches.emplace_back(static_cast<float>(startX - x), static_cast<float>(startY - y),
                                  true, false);
            x = startX;
            y = startY;
            double angle = unit(random) * 6.283;
            const bool satin = unit(random) < 0.6;
            const double width = 10 + unit(random) * 30;
            for (int i = 10 + static_cast<int>(unit(random) * 60); i > 0; --i) {
                double dx, dy;
                if (satin) {
                    const double side = (i % 2 ? 1 : -1) * width;
                    dx = std::cos(angle) * 3 - std::sin(angle) * side;
                    dy = std::sin(angle) * 3 + std::cos(angle) * side;
                } else {
                    angle += unit(random) - 0.5;
                    dx = std::cos(angle) * 20;
                    dy = std::sin(angle) * 20;
                }
                HMKStitch stitch(static_cast<float>(dx), static_cast<float>(dy), false, false);
                stitch.isSelected = unit(random) < 0.05;
                stitches.push_back(stitch);
                x += stitch.deltaX;
                y += stitch.deltaY;
            }
        }
    }
    design.setStitches(std::move(stitches));
    design.setSelectionActive(unit(random) < 0.1);
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}
