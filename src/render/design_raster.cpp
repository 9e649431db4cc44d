#include "render/design_raster.h"

#include <algorithm>
#include <cmath>

#include "model/design.h"

void drawDesignIntoRaster(const HMKDesign& design, HMKRasterTarget target,
                          const HMKAffineTransform& designToPixels,
                          const HMKDrawingSwitches& switches, const std::atomic<bool>* cancel) {
    const HMKAffineTransform& m = designToPixels;
    const double determinant = m.a * m.d - m.b * m.c;
    if (target.width <= 0 || target.height <= 0 || !(std::abs(determinant) > 0)) {
        return;
    }
    // The target's corners in design units bound what can be seen; the renderer culls the
    // rest (and widens the box by the width of a stitch itself).
    double left = INFINITY, bottom = INFINITY, right = -INFINITY, top = -INFINITY;
    for (double x : {0.0, double(target.width)}) {
        for (double y : {0.0, double(target.height)}) {
            const double dx = x - m.tx;
            const double dy = y - m.ty;
            const double designX = (m.d * dx - m.c * dy) / determinant;
            const double designY = (-m.b * dx + m.a * dy) / determinant;
            left = std::min(left, designX);
            right = std::max(right, designX);
            bottom = std::min(bottom, designY);
            top = std::max(top, designY);
        }
    }
    HMKRasterContext context(target, designToPixels);
    context.setCancelFlag(cancel);
    design.drawDesignInRect({left, bottom, right - left, top - bottom}, context, switches.show3D,
                            switches.showJumps, switches.showStructure, switches.thread);
}
