// Thread (colour block) edits: merging a thread into the one before it, splitting a thread at
// the selection, moving a thread to another place in the sewing order and appending another
// design. Every stitch keeps its absolute position: jumps are put in where stitches are taken
// away or put in, and optimizeJumpsFor then merges them and cuts them to the format.
#include <algorithm>

#include "model/design.h"
#include "model/stitch_walk.h"

namespace {

using Position = HMKPosition<double>;

// Where a pasted design starts relative to the end of this one: 1 mm right of and 1 mm below
// the origin, so that a pasted copy is visibly apart from the design it was copied from.
constexpr float kAppendOffsetX = 10;
constexpr float kAppendOffsetY = -10;

// The stitches of one colour block within the list, and where the needle is around it.
struct HMKBlock {
    std::size_t begin = 0;
    std::size_t end = 0;
    Position start;     // before the block's first stitch
    Position movement;  // the sum of the block's deltas
};

// Finds block `thread`: the stitches whose colour-change count, the stitch itself included,
// equals `thread`. A block that does not exist is empty and sits before the next block.
HMKBlock findBlock(const std::vector<HMKStitch>& stitches, std::size_t thread) {
    HMKBlock block;
    std::size_t count = 0;
    std::size_t i = 0;
    for (; i < stitches.size(); ++i) {
        count += stitches[i].isColorChange ? 1 : 0;
        if (count >= thread) {
            break;
        }
        block.start.x += stitches[i].deltaX;
        block.start.y += stitches[i].deltaY;
    }
    block.begin = i;
    for (; i < stitches.size() && count == thread; ++i) {
        block.movement.x += stitches[i].deltaX;
        block.movement.y += stitches[i].deltaY;
        if (i + 1 < stitches.size()) {
            count += stitches[i + 1].isColorChange ? 1 : 0;
        }
    }
    block.end = i;
    return block;
}

}  // namespace

bool HMKDesign::deleteThreadAtIndex(std::int32_t index, HMKError*) {
    // Thread 0 has no thread before it to be merged into: taking only its record away would
    // leave one colour block without a thread, so index 0 is as invalid as any other.
    if (index <= 0 || static_cast<std::size_t>(index) >= threads_.size()) {
        return true;
    }
    // The stitches stay: the block is sewn on as part of the thread before it.
    std::int32_t count = 0;
    for (auto& stitch : stitches_) {
        count += stitch.isColorChange ? 1 : 0;
        if (count == index) {
            stitch.isColorChange = false;
            threads_.erase(threads_.begin() + index);
            break;
        }
    }
    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::insertThreadBeforeSelection(HMKError*) {
    if (!selectionActive_) {
        return true;
    }
    std::size_t thread = 0;
    for (auto& stitch : stitches_) {
        thread += stitch.isColorChange ? 1 : 0;
        if (stitch.isSelected) {
            // The selection starts a new thread with an identical copy of the record, whose
            // colour the user then changes.
            stitch.isColorChange = true;
            if (thread < threads_.size()) {
                HMKThread copy = threads_[thread];
                threads_.insert(threads_.begin() + static_cast<std::ptrdiff_t>(thread), copy);
            }
            break;
        }
    }
    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::moveThreadFromIndex(std::int32_t from, std::int32_t to, HMKError*) {
    auto threadCount = static_cast<std::int64_t>(threads_.size());
    if (from < 0 || to < 0 || from >= threadCount || to >= threadCount || from == to) {
        return true;
    }
    auto source = static_cast<std::size_t>(from);

    // Take the block out; the stitches after it keep their place through a bridging jump
    // over the gap, which also takes over the colour change that began their thread.
    HMKBlock block = findBlock(stitches_, source);
    std::vector<HMKStitch> moved(stitches_.begin() + static_cast<std::ptrdiff_t>(block.begin),
                                 stitches_.begin() + static_cast<std::ptrdiff_t>(block.end));
    for (auto& stitch : moved) {
        stitch.isColorChange = false;
    }
    Position start = block.start;
    Position end{start.x + block.movement.x, start.y + block.movement.y};
    std::vector<HMKStitch> rest;
    rest.reserve(stitches_.size() + 3);
    rest.insert(rest.end(), stitches_.begin(),
                stitches_.begin() + static_cast<std::ptrdiff_t>(block.begin));
    if (block.end < stitches_.size()) {
        HMKStitch next = stitches_[block.end];
        rest.emplace_back(static_cast<float>(end.x - start.x), static_cast<float>(end.y - start.y),
                          true, next.isColorChange);
        next.isColorChange = false;
        rest.push_back(next);
        rest.insert(rest.end(), stitches_.begin() + static_cast<std::ptrdiff_t>(block.end) + 1,
                    stitches_.end());
    }

    // With the first stitch counted as a colour change, the stitch where the count reaches
    // the destination is where the block lands, and the position before it the landing point.
    if (!rest.empty()) {
        rest.front().isColorChange = true;
    }
    std::size_t landing = 0;
    Position landingPoint;
    std::int64_t count = -1;
    for (; landing < rest.size(); ++landing) {
        count += rest[landing].isColorChange ? 1 : 0;
        if (count == to) {
            break;
        }
        landingPoint.x += rest[landing].deltaX;
        landingPoint.y += rest[landing].deltaY;
    }

    // The block that becomes the first thread begins without a colour change and the former
    // first stitch then begins the second; everywhere else the block begins a new thread.
    bool firstBeginsThread = to == 0;
    if (!rest.empty()) {
        rest.front().isColorChange = firstBeginsThread;
    }
    if (!moved.empty()) {
        moved.front().isColorChange = !firstBeginsThread;
    }

    // Frame the block with jumps from the landing point to where it was sewn and back.
    std::vector<HMKStitch> result;
    result.reserve(rest.size() + moved.size() + 2);
    result.insert(result.end(), rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(landing));
    result.emplace_back(static_cast<float>(start.x - landingPoint.x),
                        static_cast<float>(start.y - landingPoint.y), true, false);
    result.insert(result.end(), moved.begin(), moved.end());
    result.emplace_back(static_cast<float>(landingPoint.x - end.x),
                        static_cast<float>(landingPoint.y - end.y), true, false);
    result.insert(result.end(), rest.begin() + static_cast<std::ptrdiff_t>(landing), rest.end());
    stitches_ = std::move(result);

    HMKThread thread = threads_[source];
    threads_.erase(threads_.begin() + from);
    threads_.insert(threads_.begin() + to, thread);

    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::appendDesign(const HMKDesign& other, HMKError* error) {
    if (&other == this) {
        HMKDesign copy = other;
        return appendDesign(copy, error);
    }
    HMKPoint end = lastStitch();
    if (!stitches_.empty()) {
        stitches_.emplace_back(0, 0, false, true);
    }
    stitches_.emplace_back(kAppendOffsetX - static_cast<float>(end.x),
                           kAppendOffsetY - static_cast<float>(end.y), true, false);
    stitches_.insert(stitches_.end(), other.stitches_.begin(), other.stitches_.end());
    // The pasted part stays selected so that it can be moved at once.
    if (std::any_of(other.stitches_.begin(), other.stitches_.end(),
                    [](const HMKStitch& stitch) { return stitch.isSelected; })) {
        selectionActive_ = true;
    }
    // Pasted threads take the nearest codes of this design's palette.
    std::string palette = designPalette();
    for (HMKThread thread : other.threads_) {
        thread.changeToColor(thread.color, palette);
        threads_.push_back(std::move(thread));
    }
    optimizeJumpsFor(designType_);
    return true;
}
