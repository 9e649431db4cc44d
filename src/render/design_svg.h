// SVG pictures of a design at real size: millimetres on the page, one path per run of joined
// stitches (see stitch_runs.h), written as text straight into memory, so that a design of a
// million stitches gives a file of tens of megabytes. Used by the picture export.
#pragma once

#include <optional>
#include <string>

#include "render/design_raster.h"

class HMKDesign;

// The part of the design plane a vector picture shows, in design units (0.1 mm): the design's
// bounds, widened by half a stitch and a blank margin on every side.
struct HMKVectorPage {
    double left = 0;
    double bottom = 0;
    double width = 0;
    double height = 0;
};
inline constexpr double kHMKVectorMarginUnits = 50;
HMKVectorPage vectorPageOfDesign(const HMKDesign& design);

// The SVG document; scale 1 gives real size, 2 twice that. A background fills the page.
std::string designSvg(const HMKDesign& design, const HMKDrawingSwitches& switches, double scale,
                      const std::optional<HMKRgba>& background);
