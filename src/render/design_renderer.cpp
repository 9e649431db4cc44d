// HMKDesign::drawDesignInRect: strokes every stitch as a thread segment in one pass, flat or as
// a shaded 3D capsule, with dashed jumps, the selection overlay and structure markers. The
// caller sets up the context so that design units map onto the device; nothing here
// transforms.
#include <cmath>
#include <vector>

#include "model/design.h"
#include "model/stitch_walk.h"
#include "render/drawing_context.h"
#include "render/drawn_stitches.h"

namespace {

// Jumps thinner than this are drawn with width 0, the thinnest line the device can draw.
constexpr double kThinnestJumpWidth = 0.5;
// Stitches just outside the rectangle still reach into it with their width.
constexpr double kCullMargin = 50.0;
constexpr double kMarkerSize = 1.0;
// Half of pi, rounded as the arc angles of the 3D capsule have always used it.
constexpr double kCapsuleQuarterTurn = 1.571;

void strokeSegment(HMKDrawingContext& context, const HMKPosition<double>& from,
                   const HMKPosition<double>& to) {
    context.moveTo(from.x, from.y);
    context.lineTo(to.x, to.y);
    context.strokePath();
}

void fillMarker(HMKDrawingContext& context, const HMKPosition<double>& at) {
    context.setFillColor(kHMKMarkerColor);
    context.addRect(at.x - kMarkerSize / 2, at.y - kMarkerSize / 2, kMarkerSize, kMarkerSize);
    context.fillPath();
}

// The shaded thread: a capsule around the stitch filled with a gradient across it.
void fillCapsule(HMKDrawingContext& context, const HMKStitch& stitch,
                 const HMKPosition<double>& from, const HMKPosition<double>& to, double radius,
                 const HMKGradient& gradient) {
    // Single precision as always; a vertical stitch divides by zero and gets +-pi/2.
    const float theta = std::atan(stitch.deltaY / stitch.deltaX);
    const double s = std::sin(theta);
    const double c = std::cos(theta);
    const bool clockwise = to.x < from.x;
    // Deliberate: the arcs run from s -+ 1.571, the sine of theta used as an angle, not
    // theta -+ pi/2. This is the established look of the 3D stitches; do not "fix" it.
    context.moveTo(from.x + radius * s, from.y - radius * c);
    context.addArc(to.x, to.y, radius, s - kCapsuleQuarterTurn, s + kCapsuleQuarterTurn, clockwise);
    context.addArc(from.x, from.y, radius, s + kCapsuleQuarterTurn, s - kCapsuleQuarterTurn,
                   clockwise);
    context.saveState();
    context.clipToPath();
    context.drawLinearGradient(gradient, from.x - radius * s, from.y + radius * c,
                               from.x + radius * s, from.y - radius * c);
    context.restoreState();
}

}  // namespace

void HMKThreadPaint::setThreadColor(const HMKColor& threadColor) {
    constexpr double kFadedAlpha = 0.1;
    const double r = threadColor.red();
    const double g = threadColor.green();
    const double b = threadColor.blue();
    const double grey = 0.21 * r + 0.71 * g + 0.08 * b + 0.22;
    color = {r, g, b, 1.0};
    dark = {r - 0.2, g - 0.2, b - 0.2, 1.0};
    faded = {grey, grey, grey, kFadedAlpha};
    fadedDark = {grey - 0.2, grey - 0.2, grey - 0.2, kFadedAlpha};
    gradient.colors[0] = dark;
    gradient.colors[1] = {r + 0.2, g + 0.2, b + 0.2, 1.0};
    gradient.colors[2] = dark;
    fadedGradient.colors[0] = fadedDark;
    fadedGradient.colors[1] = {grey + 0.2, grey + 0.2, grey + 0.2, kFadedAlpha};
    fadedGradient.colors[2] = fadedDark;
}

void HMKDesign::drawDesignInRect(const HMKRect& rect, HMKDrawingContext& context, bool show3D,
                                 bool showJumps, bool showStructure,
                                 std::int32_t showThread) const {
    if (stitches_.empty() || threads_.empty()) {
        return;
    }
    static const std::vector<double> kSolid;
    static const std::vector<double> kJumpDash{2.0, 3.0};

    context.saveState();
    context.setRoundLineCap();

    const double width = showStructure ? kHMKStructureStitchWidth : kHMKStitchWidth;
    const double coreWidth = kHMKCoreWidthFactor * width;
    const double radius = width * kHMKCoreWidthFactor * 0.5;
    const double jumpWidth = width * 0.5 >= kThinnestJumpWidth ? width * 0.5 : 0.0;
    const HMKRect visible{rect.x - kCullMargin, rect.y - kCullMargin, rect.width + 2 * kCullMargin,
                          rect.height + 2 * kCullMargin};

    HMKThreadPaint paint;
    std::size_t paintedThread = 0;
    bool painted = false;
    walkDrawnStitches(*this, &visible, showJumps, showThread, [&](const HMKDrawnStitch& drawn) {
        // Colours are worked out once per thread.
        if (!painted || drawn.thread != paintedThread) {
            paint.setThreadColor(threads_[drawn.thread].color);
            paintedThread = drawn.thread;
            painted = true;
        }
        const bool faded = drawn.faded;
        const HMKStitch& stitch = *drawn.stitch;
        if (drawn.isThread) {
            context.setLineDash(kSolid);
            context.setLineWidth(width);
            context.setStrokeColor(faded ? paint.fadedDark : paint.dark);
            strokeSegment(context, drawn.from, drawn.to);
            if (show3D) {
                fillCapsule(context, stitch, drawn.from, drawn.to, radius,
                            faded ? paint.fadedGradient : paint.gradient);
            } else {
                context.setLineWidth(coreWidth);
                context.setStrokeColor(faded ? paint.faded : paint.color);
                strokeSegment(context, drawn.from, drawn.to);
            }
            if (stitch.isSelected) {
                context.setLineWidth(width);
                context.setStrokeColor(kHMKSelectionColor);
                strokeSegment(context, drawn.from, drawn.to);
            }
        } else {
            // The needle's move onto the first point of a run is drawn as a jump too.
            context.setLineWidth(jumpWidth);
            context.setLineDash(kJumpDash);
            context.setStrokeColor(faded ? paint.faded : (show3D ? paint.dark : paint.color));
            strokeSegment(context, drawn.from, drawn.to);
            if (stitch.isSelected) {
                context.setStrokeColor(kHMKSelectionColor);
                strokeSegment(context, drawn.from, drawn.to);
            }
        }
        if (showStructure) {
            fillMarker(context, drawn.to);
        }
    });

    context.restoreState();
}
