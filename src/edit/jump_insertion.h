// How the edit operations put a jump in front of a stitch, shared by insertJump and by the
// edits that rebuild the stitch list in one pass (deletion, the selection transforms). Those
// edits copy the surviving stitches into a new list instead of inserting into the old one, so
// "the stitch before" is always the last stitch already written to the new list.
#pragma once

#include <vector>

#include "model/stitch.h"

// A jump lands the needle on a normal stitch that follows a normal stitch: the machine gets a
// zero-length stitch at the landing point, so that it sews there before moving on. Jumps and
// null stitches need no such landing stitch.
inline bool needsLandingStitch(const HMKStitch& before, const HMKStitch& next) {
    return !before.isJumpStitch && !next.isJumpStitch && !next.isNullStitch();
}

// Appends to `out` what insertJump inserts in front of `next` when `next` would be the stitch
// after the current end of `out`: the jump (dx, dy) and, where needed, the landing stitch,
// which shares the selection mark of `next`. `next` itself is not appended.
inline void appendJumpBefore(std::vector<HMKStitch>& out, double dx, double dy,
                             const HMKStitch& next) {
    // At the start of the list the stitch before is a fresh zero normal stitch.
    HMKStitch before = out.empty() ? HMKStitch() : out.back();
    out.emplace_back(static_cast<float>(dx), static_cast<float>(dy), true, false);
    if (needsLandingStitch(before, next)) {
        HMKStitch landing(0, 0, false, false);
        landing.isSelected = next.isSelected;
        out.push_back(landing);
    }
}
