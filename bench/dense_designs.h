// Dense designs for the drawing and writing benchmarks: the bundled flower (about 9,800
// stitches in 77 x 77 mm of satin and fill) repeated until a stitch count is reached, either
// tiled side by side without overlap or piled on one spot, the worst case for overdraw.
#pragma once

#include <cstddef>

#include "model/design.h"

enum class HMKDenseLayout { tiled, piled };

// The flower repeated up to exactly stitchCount stitches (the last copy is cut short), centred
// on the origin; each copy brings its own threads. The result is built once per layout and
// count and then shared by every benchmark.
const HMKDesign& denseFlowers(HMKDenseLayout layout, std::size_t stitchCount);

// A copy of the design cut to its first threadCount colour blocks: the later blocks' stitches
// stay and are sewn in the last kept thread.
HMKDesign withThreadCount(const HMKDesign& design, std::size_t threadCount);
