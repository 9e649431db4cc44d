// Geometric transforms of the selection (move, flip, rotate, resize) and centring the design.
// A design stores relative moves only, so changing some absolute positions would drag every
// later stitch along: each selected run gets new deltas and is framed by a jump into the run
// and a jump back out of it, which keeps the unselected stitches where they were.
#include <cmath>

#include "edit/jump_insertion.h"
#include "model/design.h"
#include "model/stitch_walk.h"

namespace {

using Position = HMKPosition<double>;

constexpr double kRadiansPerDegree = 0.017453292519943295;

// A transform F of absolute positions with its inverse G, applied to the selected runs: the
// opening jump carries the needle from S to F(S), a selected stitch ending at E moves to
// F(E), and the closing jump carries it from N back to G(N), the unchanged position.
template <class Forward, class Inverse>
struct HMKMappedRuns {
    Forward forward;
    Inverse inverse;

    Position openingJump(Position start) const {
        Position moved = forward(start);
        return {moved.x - start.x, moved.y - start.y};
    }
    // Sets the stitch's deltas to reach F(end) from `now`; returns the new needle position,
    // kept exactly so that the rounding of the stored deltas does not build up along a run.
    Position place(HMKStitch& stitch, Position end, Position now) const {
        Position moved = forward(end);
        stitch.deltaX = static_cast<float>(moved.x - now.x);
        stitch.deltaY = static_cast<float>(moved.y - now.y);
        return moved;
    }
    Position closingJump(Position now) const {
        Position back = inverse(now);
        return {back.x - now.x, back.y - now.y};
    }
};

template <class Forward, class Inverse>
HMKMappedRuns<Forward, Inverse> mappedRuns(Forward forward, Inverse inverse) {
    return {forward, inverse};
}

// A translation leaves the deltas of the selected stitches as they are; only the framing
// jumps carry the vector.
struct HMKTranslatedRuns {
    double dx;
    double dy;

    Position forward(Position p) const { return {p.x + dx, p.y + dy}; }
    Position openingJump(Position) const { return {dx, dy}; }
    Position place(HMKStitch&, Position end, Position) const { return forward(end); }
    Position closingJump(Position) const { return {-dx, -dy}; }
};

// A mirror about the vertical line through the centre (x changes) or the horizontal one.
struct HMKMirror {
    bool vertical;
    Position center;

    Position operator()(Position p) const {
        if (vertical) {
            return {2 * center.x - p.x, p.y};
        }
        return {p.x, 2 * center.y - p.y};
    }
};

// A mirror is its own inverse; its closing jump is taken as 2c - 2N on the mirrored axis.
struct HMKMirroredRuns : HMKMappedRuns<HMKMirror, HMKMirror> {
    Position closingJump(Position now) const {
        if (forward.vertical) {
            return {2 * forward.center.x - 2 * now.x, 0};
        }
        return {0, 2 * forward.center.y - 2 * now.y};
    }
};

// The shared selection-run scheme, written as one pass that builds the new list: the framing
// jumps are appended where an in-place walk would insert them, so the result is the same.
template <class Runs>
std::vector<HMKStitch> transformSelectedRuns(const std::vector<HMKStitch>& stitches,
                                             const Runs& runs) {
    std::vector<HMKStitch> result;
    result.reserve(stitches.size() + stitches.size() / 16 + 4);
    Position now;
    bool previousSelected = false;
    walkStitches(stitches, [&](std::size_t, const HMKStitch& stitch, Position start, Position end) {
        HMKStitch changed = stitch;
        if (stitch.isSelected) {
            if (!previousSelected) {
                Position jump = runs.openingJump(start);
                appendJumpBefore(result, jump.x, jump.y, stitch);
                now = runs.forward(start);
            }
            now = runs.place(changed, end, now);
        } else {
            // A run that reaches the last stitch needs no closing jump: nothing follows it.
            if (previousSelected) {
                Position jump = runs.closingJump(now);
                appendJumpBefore(result, jump.x, jump.y, stitch);
            }
            now = end;
        }
        result.push_back(changed);
        previousSelected = stitch.isSelected;
    });
    return result;
}

Position centerOf(const HMKRect& rect) {
    return {rect.x + rect.width * 0.5, rect.y + rect.height * 0.5};
}

}  // namespace

bool HMKDesign::centerDesign() {
    // The bounds are float sums, so after one shift their middle can still be a rounding
    // error away from the origin; further rounds settle it, and ten is where we give up.
    for (int round = 0; round < 10; ++round) {
        HMKPoint center = centerOfDesign();
        if (center.x == 0 && center.y == 0) {
            break;
        }
        insertJump({-center.x, -center.y}, 0);
        optimizeJumpsFor(designType_);
    }
    return true;
}

bool HMKDesign::flipSelection(std::string_view orientation, HMKError* error) {
    if (orientation != "V" && orientation != "H") {
        return fail(error, 70, "Unable to flip the design (invalid orientation).");
    }
    Position center = centerOf(selectionRect());
    HMKMirror mirror{orientation == "V", center};
    stitches_ = transformSelectedRuns(stitches_, HMKMirroredRuns{{mirror, mirror}});
    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::rotateSelectionByDegrees(std::int32_t degrees, HMKError*) {
    Position center = centerOf(selectionRect());
    double angle = degrees * kRadiansPerDegree;
    // sin and cos are kept at float precision on purpose: the rotated positions are
    // fractional anyway, and the inverse uses its own rounded values.
    auto rotation = [center](double angleRadians) {
        double sine = static_cast<float>(std::sin(angleRadians));
        double cosine = static_cast<float>(std::cos(angleRadians));
        return [center, sine, cosine](Position p) -> Position {
            return {cosine * (p.x - center.x) - sine * (p.y - center.y) + center.x,
                    (p.y - center.y) * cosine + (p.x - center.x) * sine + center.y};
        };
    };
    stitches_ = transformSelectedRuns(stitches_, mappedRuns(rotation(angle), rotation(-angle)));
    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::moveSelectionByVector(HMKPoint vector, HMKError*) {
    stitches_ = transformSelectedRuns(stitches_, HMKTranslatedRuns{vector.x, vector.y});
    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::resizeSelectionByPercent(float factor, HMKError*) {
    Position center = centerOf(selectionRect());
    double scale = factor;
    auto forward = [center, scale](Position p) -> Position {
        return {(p.x - center.x) * scale + center.x, (p.y - center.y) * scale + center.y};
    };
    // A factor of 0 makes the closing jump undefined; the command layer never passes it.
    auto inverse = [center, scale](Position p) -> Position {
        return {(p.x - center.x) / scale + center.x, (p.y - center.y) / scale + center.y};
    };
    stitches_ = transformSelectedRuns(stitches_, mappedRuns(forward, inverse));
    optimizeJumpsFor(designType_);
    return true;
}
