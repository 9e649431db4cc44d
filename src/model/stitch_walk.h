// Walking the stitch list with the running absolute needle position: the one mechanism that
// statistics, editors, the renderer and the writers use. Positions are never stored; stitch i
// runs from the sum of deltas 0..i-1 to the sum 0..i, starting at the origin. The scalar type
// of the running sum is a parameter because some rules sum in float and others in double.
#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

#include "model/stitch.h"

template <class Scalar>
struct HMKPosition {
    Scalar x = 0;
    Scalar y = 0;
};

// Calls visit(index, stitch, start, end) for every stitch in order. A visit that returns bool
// ends the walk by returning false (the renderer stops at the end of the display range).
template <class Scalar = double, class Visit>
void walkStitches(const std::vector<HMKStitch>& stitches, Visit&& visit) {
    using Result = std::invoke_result_t<Visit&, std::size_t, const HMKStitch&,
                                        const HMKPosition<Scalar>&, const HMKPosition<Scalar>&>;
    HMKPosition<Scalar> position;
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        const HMKStitch& stitch = stitches[i];
        HMKPosition<Scalar> end{position.x + static_cast<Scalar>(stitch.deltaX),
                                position.y + static_cast<Scalar>(stitch.deltaY)};
        if constexpr (std::is_same_v<Result, bool>) {
            if (!visit(i, stitch, position, end)) {
                return;
            }
        } else {
            visit(i, stitch, position, end);
        }
        position = end;
    }
}
