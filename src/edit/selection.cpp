// Selection and hit testing: the selection is the isSelected flag of each stitch plus
// selectionActive; the hit tests turn a point of the design view into a stitch, a block of
// stitches or a thread.
#include <algorithm>

#include "model/design.h"
#include "model/stitch_walk.h"

namespace {

// The empty selection rectangle starts inverted at these extremes.
constexpr float kSelectionRectStart = 65536.0f;

// Jumps and colour changes bound the blocks that selectBlockAt selects.
bool bordersBlock(const HMKStitch& stitch) {
    return stitch.isJumpStitch || stitch.isColorChange;
}

bool anySelected(const std::vector<HMKStitch>& stitches) {
    return std::any_of(stitches.begin(), stitches.end(),
                       [](const HMKStitch& stitch) { return stitch.isSelected; });
}

}  // namespace

HMKRect HMKDesign::selectionRect() const {
    if (!selectionActive_) {
        return {xMin_, yMin_, xMax_ - xMin_, yMax_ - yMin_};
    }
    float minX = kSelectionRectStart, minY = kSelectionRectStart;
    float maxX = -kSelectionRectStart, maxY = -kSelectionRectStart;
    auto fold = [&](float x, float y) {
        minX = std::min(minX, x);
        minY = std::min(minY, y);
        maxX = std::max(maxX, x);
        maxY = std::max(maxY, y);
    };
    walkStitches(stitches_, [&](std::size_t, const HMKStitch& stitch, auto start, auto end) {
        if (stitch.isSelected) {
            fold(static_cast<float>(start.x), static_cast<float>(start.y));
            fold(static_cast<float>(end.x), static_cast<float>(end.y));
        }
    });
    return {minX, minY, maxX - minX, maxY - minY};
}

void HMKDesign::selectAll() {
    for (auto& stitch : stitches_) {
        stitch.isSelected = true;
    }
    selectionActive_ = true;
}

void HMKDesign::deselectAll() {
    for (auto& stitch : stitches_) {
        stitch.isSelected = false;
    }
    selectionActive_ = false;
}

void HMKDesign::invertAll() {
    selectionActive_ = false;
    for (auto& stitch : stitches_) {
        stitch.isSelected = !stitch.isSelected;
        selectionActive_ = selectionActive_ || stitch.isSelected;
    }
}

void HMKDesign::selectInRect(const HMKRect& rect, bool unselectMode) {
    selectionActive_ = false;
    walkStitches(stitches_, [&](std::size_t i, const HMKStitch&, auto start, auto end) {
        HMKStitch& stitch = stitches_[i];
        if (rect.contains({start.x, start.y}) && rect.contains({end.x, end.y})) {
            stitch.isSelected = !unselectMode;
        }
        // Stitches outside keep their flag, so the rectangle adds to the selection.
        selectionActive_ = selectionActive_ || stitch.isSelected;
    });
}

std::int32_t HMKDesign::indexOfStitchAt(HMKPoint point, float tolerance) const {
    std::int32_t found = -1;
    walkStitches(stitches_, [&](std::size_t i, const HMKStitch&, auto start, auto end) {
        double dx = end.x - start.x;
        double dy = end.y - start.y;
        float lengthSquared = static_cast<float>(dx * dx + dy * dy);
        if (lengthSquared == 0) {
            return;  // null stitches and most colour changes cannot be clicked
        }
        float t = static_cast<float>(((point.x - start.x) * dx + (point.y - start.y) * dy) /
                                     lengthSquared);
        // Beyond either end the point is measured against the far end of the stitch, so a
        // click just past a stitch's end picks the stitch that starts there instead.
        double cx = 0, cy = 0;
        if (t < 0) {
            cx = end.x, cy = end.y;
        } else if (t > 1) {
            cx = start.x, cy = start.y;
        } else {
            cx = start.x + t * dx, cy = start.y + t * dy;
        }
        float distanceSquared =
            static_cast<float>((point.x - cx) * (point.x - cx) + (point.y - cy) * (point.y - cy));
        // The view's tolerance is compared with the squared distance; no early exit, so the
        // stitch drawn last (on top) wins.
        if (tolerance > distanceSquared) {
            found = static_cast<std::int32_t>(i);
        }
    });
    return found;
}

bool HMKDesign::isSelectedAt(HMKPoint point, float tolerance) const {
    std::int32_t index = indexOfStitchAt(point, tolerance);
    return index >= 0 && stitches_[index].isSelected;
}

void HMKDesign::selectStitchAt(HMKPoint point, float tolerance, bool unselectMode) {
    std::int32_t index = indexOfStitchAt(point, tolerance);
    if (index >= 0) {
        stitches_[index].isSelected = !unselectMode;
    }
    selectionActive_ = anySelected(stitches_);
}

void HMKDesign::selectBlockAt(HMKPoint point, float tolerance, bool unselectMode) {
    std::int32_t hit = indexOfStitchAt(point, tolerance);
    if (hit >= 0) {
        for (std::int32_t i = hit; i >= 0 && !bordersBlock(stitches_[i]); --i) {
            stitches_[i].isSelected = !unselectMode;
        }
        for (std::size_t i = static_cast<std::size_t>(hit) + 1;
             i < stitches_.size() && !bordersBlock(stitches_[i]); ++i) {
            stitches_[i].isSelected = !unselectMode;
        }
    }
    selectionActive_ = anySelected(stitches_);
}

std::int32_t HMKDesign::indexOfThreadAt(HMKPoint point, float tolerance) const {
    std::int32_t hit = indexOfStitchAt(point, tolerance);
    if (hit < 0) {
        return -1;
    }
    return static_cast<std::int32_t>(
        std::count_if(stitches_.begin(), stitches_.begin() + hit + 1,
                      [](const HMKStitch& stitch) { return stitch.isColorChange; }));
}
