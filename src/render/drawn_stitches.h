// What the renderer draws for each stitch and in which colours, decided in one place for every
// kind of output: the drawing context (screen, print, PNG), the vector pictures (SVG, PDF) and
// the PES/PEC thumbnails all walk the design through walkDrawnStitches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/design.h"
#include "model/stitch_walk.h"
#include "render/drawing_context.h"

// --- Colours -----------------------------------------------------------------------------
// Everything the stitches of one thread are drawn with. The gradients keep their three stops,
// so setting a new thread colour allocates nothing after the first time.
struct HMKThreadPaint {
    HMKRgba color;
    HMKRgba dark;
    HMKRgba faded;
    HMKRgba fadedDark;
    HMKGradient gradient{std::vector<HMKRgba>(3), {0.0, 0.4, 1.0}};
    HMKGradient fadedGradient{std::vector<HMKRgba>(3), {0.0, 0.4, 1.0}};

    // Components are deliberately not clamped: the drawing layer decides what lies outside
    // 0..1 looks like.
    void setThreadColor(const HMKColor& threadColor);
};

inline constexpr HMKRgba kHMKSelectionColor{0.8, 0.0, 0.0, 0.6};
inline constexpr HMKRgba kHMKMarkerColor{0.0, 0.0, 0.0, 1.0};
// Outline width of a stitch and of the selection overlay, in 0.1 mm, normally and in
// structure mode; the lighter core of a flat stitch is this much narrower.
inline constexpr double kHMKStitchWidth = 3.5;
inline constexpr double kHMKStructureStitchWidth = 0.5;
inline constexpr double kHMKCoreWidthFactor = 0.7;

// --- The stitches drawn ------------------------------------------------------------------
struct HMKDrawnStitch {
    // A thread stitch, or the needle's move drawn as a jump line (a jump, or the first stitch
    // after a jump, a colour change or the start of the design).
    bool isThread = false;
    std::size_t index = 0;
    const HMKStitch* stitch = nullptr;
    std::size_t thread = 0;
    // The thread is hidden or a selection is active.
    bool faded = false;
    HMKPosition<double> from;
    HMKPosition<double> to;
};

// Calls visit(const HMKDrawnStitch&) for every stitch the renderer draws, in drawing order:
// thread stitches always, jump lines only with showJumps. Stitches outside `visible` (null:
// none are) are left out, except jumps; so are null stitches, other threads than showThread
// (-1: all), and whatever lies outside the design's display range.
template <class Visit>
void walkDrawnStitches(const HMKDesign& design, const HMKRect* visible, bool showJumps,
                       std::int32_t showThread, Visit&& visit) {
    const std::vector<HMKStitch>& stitches = design.stitches();
    const std::vector<HMKThread>& threads = design.threads();
    if (stitches.empty() || threads.empty()) {
        return;
    }
    const HMKRange range = design.displayRange();
    const std::uint64_t lastIndex = range.location + range.length;
    const bool selectionActive = design.selectionActive();
    std::int64_t thread = -1;
    bool hidden = false;
    bool previousWasNormal = false;
    walkStitches<double>(
        stitches, [&](std::size_t i, const HMKStitch& stitch, const HMKPosition<double>& from,
                      const HMKPosition<double>& to) {
            if (stitch.isColorChange || i == 0) {
                ++thread;
                if (thread >= static_cast<std::int64_t>(threads.size())) {
                    // More colour changes than threads: the rest has no colour to be drawn in.
                    return false;
                }
                hidden = !threads[static_cast<std::size_t>(thread)].isShown;
            }
            if (i > lastIndex) {
                return false;
            }
            const bool asThread = previousWasNormal && !stitch.isJumpStitch;
            previousWasNormal = !stitch.isJumpStitch && !stitch.isColorChange;
            if ((asThread || showJumps) && range.location <= i + 1 &&
                (showThread == -1 || thread == showThread) &&
                (stitch.isJumpStitch || !visible || visible->contains({from.x, from.y}) ||
                 visible->contains({to.x, to.y})) &&
                !stitch.isNullStitch()) {
                visit(HMKDrawnStitch{asThread, i, &stitch, static_cast<std::size_t>(thread),
                                     selectionActive || hidden, from, to});
            }
            return true;
        });
}
