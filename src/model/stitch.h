// One stitch record: a relative needle movement in 0.1 mm plus its flags. Designs hold
// millions of these in a std::vector, so the record stays a small trivially copyable struct.
#pragma once

#include <string>

struct HMKStitch {
    float deltaX = 0;
    float deltaY = 0;
    bool isJumpStitch = false;
    bool isColorChange = false;
    bool isSelected = false;

    HMKStitch() = default;
    HMKStitch(float dx, float dy, bool isJump, bool isChange)
        : deltaX(dx), deltaY(dy), isJumpStitch(isJump), isColorChange(isChange) {}

    // Both deltas exactly zero (negative zero included); the flags play no part.
    bool isNullStitch() const { return deltaX == 0 && deltaY == 0; }

    std::string description() const;

    friend bool operator==(const HMKStitch&, const HMKStitch&) = default;
};
