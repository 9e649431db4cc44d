#include "render/stitch_runs.h"

#include "model/design.h"
#include "render/drawn_stitches.h"

namespace {

constexpr double kThinnestJumpWidth = 0.5;
constexpr double kMarkerSize = 1.0;
// The shaded look in strokes: a lighter, narrower line along the middle of the thread.
constexpr double kShadeWidthFactor = 0.45;
constexpr double kHighlightWidthFactor = 0.2;

HMKRgba lighter(const HMKRgba& color) {
    return {color.red + 0.2, color.green + 0.2, color.blue + 0.2, color.alpha};
}

// Gathers joined stitches of one look and hands them out as runs.
class RunBuilder {
public:
    RunBuilder(const HMKDesign& design, const HMKDrawingSwitches& switches,
               const std::function<void(const HMKStitchRun&)>& visit)
        : design_(design), switches_(switches), visit_(visit) {
        width_ = switches.showStructure ? kHMKStructureStitchWidth : kHMKStitchWidth;
        jumpWidth_ = width_ * 0.5 >= kThinnestJumpWidth ? width_ * 0.5 : 0.0;
    }

    void add(const HMKDrawnStitch& drawn) {
        const bool joins = !run_.points.empty() && drawn.isThread == run_.isThread &&
                           drawn.thread == run_.thread && drawn.faded == faded_ &&
                           drawn.from.x == run_.points.back().x &&
                           drawn.from.y == run_.points.back().y;
        if (!joins) {
            finish();
            run_.isThread = drawn.isThread;
            run_.thread = drawn.thread;
            faded_ = drawn.faded;
            run_.points.push_back(drawn.from);
        }
        run_.points.push_back(drawn.to);
        selected_.push_back(drawn.stitch->isSelected);
    }

    void finish() {
        if (run_.points.size() < 2) {
            run_.points.clear();
            selected_.clear();
            return;
        }
        paint_.setThreadColor(design_.threads()[run_.thread].color);
        run_.strokes.clear();
        const HMKRgba& dark = faded_ ? paint_.fadedDark : paint_.dark;
        const HMKRgba& color = faded_ ? paint_.faded : paint_.color;
        if (run_.isThread) {
            run_.strokes.push_back({width_, dark, false});
            if (switches_.show3D) {
                run_.strokes.push_back({width_ * kShadeWidthFactor, color, false});
                run_.strokes.push_back({width_ * kHighlightWidthFactor, lighter(color), false});
            } else {
                run_.strokes.push_back({width_ * kHMKCoreWidthFactor, color, false});
            }
        } else {
            run_.strokes.push_back(
                {jumpWidth_, faded_ ? paint_.faded : (switches_.show3D ? dark : color), true});
        }
        run_.markerSize = switches_.showStructure ? kMarkerSize : 0;
        run_.markerColor = kHMKMarkerColor;
        visit_(run_);
        visitSelection();
        run_.points.clear();
        selected_.clear();
    }

private:
    // Each stretch of selected stitches of the run, in the selection colour on top.
    void visitSelection() {
        HMKStitchRun overlay;
        overlay.isThread = run_.isThread;
        overlay.thread = run_.thread;
        overlay.strokes.push_back(
            {run_.isThread ? width_ : jumpWidth_, kHMKSelectionColor, !run_.isThread});
        for (std::size_t i = 0; i <= selected_.size(); ++i) {
            if (i < selected_.size() && selected_[i]) {
                if (overlay.points.empty()) {
                    overlay.points.push_back(run_.points[i]);
                }
                overlay.points.push_back(run_.points[i + 1]);
            } else if (!overlay.points.empty()) {
                visit_(overlay);
                overlay.points.clear();
            }
        }
    }

    const HMKDesign& design_;
    const HMKDrawingSwitches& switches_;
    const std::function<void(const HMKStitchRun&)>& visit_;
    double width_ = 0;
    double jumpWidth_ = 0;
    HMKThreadPaint paint_;
    HMKStitchRun run_;
    bool faded_ = false;
    // Per stitch of the run.
    std::vector<bool> selected_;
};

}  // namespace

void walkStitchRuns(const HMKDesign& design, const HMKDrawingSwitches& switches,
                    const std::function<void(const HMKStitchRun&)>& visit) {
    RunBuilder builder(design, switches, visit);
    walkDrawnStitches(design, nullptr, switches.showJumps, switches.thread,
                      [&](const HMKDrawnStitch& drawn) { builder.add(drawn); });
    builder.finish();
}
