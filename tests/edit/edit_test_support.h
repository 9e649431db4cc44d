// Small builders and checks shared by the edit tests: stitches written as one call each,
// designs with numbered threads, absolute positions and bit-exact comparisons.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/design.h"
#include "model/stitch_walk.h"

inline HMKStitch stitch(float dx, float dy) {
    return HMKStitch(dx, dy, false, false);
}
inline HMKStitch jump(float dx, float dy) {
    return HMKStitch(dx, dy, true, false);
}
inline HMKStitch change(float dx = 0, float dy = 0) {
    return HMKStitch(dx, dy, false, true);
}
inline HMKStitch selected(HMKStitch stitch) {
    stitch.isSelected = true;
    return stitch;
}

// A thread named after its index, so that tests can follow threads through reordering.
inline HMKThread numberedThread(int number) {
    return HMKThread(HMKColor(number / 10.0, 0, 0), "Thread " + std::to_string(number),
                     std::to_string(number), "", "");
}

// A design of the given type with one numbered thread per colour block and fresh bounds.
inline HMKDesign makeDesign(std::vector<HMKStitch> stitches, std::string type = "DST") {
    HMKDesign design;
    std::size_t threads = 1;
    for (const auto& s : stitches) {
        threads += s.isColorChange ? 1 : 0;
    }
    design.setStitches(std::move(stitches));
    for (std::size_t i = 0; i < threads; ++i) {
        design.threads().push_back(numberedThread(static_cast<int>(i)));
    }
    design.setDesignType(std::move(type));
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

// The needle position after every stitch, summed in double.
inline std::vector<HMKPosition<double>> positionsAfterEachStitch(const HMKDesign& design) {
    std::vector<HMKPosition<double>> positions;
    walkStitches(design.stitches(),
                 [&](std::size_t, const HMKStitch&, auto, auto end) { positions.push_back(end); });
    return positions;
}

// The ends of the normal (sewn) stitches with length, in order: what the machine sews.
inline std::vector<HMKPosition<double>> sewnPoints(const HMKDesign& design) {
    std::vector<HMKPosition<double>> points;
    walkStitches(design.stitches(), [&](std::size_t, const HMKStitch& s, auto, auto end) {
        if (!s.isJumpStitch && !s.isNullStitch()) {
            points.push_back(end);
        }
    });
    return points;
}

inline std::vector<std::string> threadNames(const HMKDesign& design) {
    std::vector<std::string> names;
    for (const auto& thread : design.threads()) {
        names.push_back(thread.name);
    }
    return names;
}

inline bool sameBits(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// Stitches equal bit for bit (so 0 and -0 differ), with their flags.
inline ::testing::AssertionResult sameStitches(const std::vector<HMKStitch>& actual,
                                               const std::vector<HMKStitch>& expected) {
    if (actual.size() != expected.size()) {
        return ::testing::AssertionFailure()
               << "stitch count " << actual.size() << " vs " << expected.size();
    }
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const HMKStitch& a = actual[i];
        const HMKStitch& e = expected[i];
        if (!sameBits(a.deltaX, e.deltaX) || !sameBits(a.deltaY, e.deltaY) ||
            a.isJumpStitch != e.isJumpStitch || a.isColorChange != e.isColorChange ||
            a.isSelected != e.isSelected) {
            return ::testing::AssertionFailure()
                   << "stitch " << i << ": " << a.description() << " vs " << e.description();
        }
    }
    return ::testing::AssertionSuccess();
}

// The whole edited state: stitches, threads, bounds, selection flag and display range.
inline ::testing::AssertionResult sameDesign(const HMKDesign& actual, const HMKDesign& expected) {
    if (auto stitches = sameStitches(actual.stitches(), expected.stitches()); !stitches) {
        return stitches;
    }
    if (actual.threads() != expected.threads()) {
        return ::testing::AssertionFailure() << "threads differ";
    }
    if (!sameBits(actual.xMin(), expected.xMin()) || !sameBits(actual.yMin(), expected.yMin()) ||
        !sameBits(actual.xMax(), expected.xMax()) || !sameBits(actual.yMax(), expected.yMax())) {
        return ::testing::AssertionFailure()
               << "bounds " << actual.xMin() << " " << actual.yMin() << " " << actual.xMax() << " "
               << actual.yMax() << " vs " << expected.xMin() << " " << expected.yMin() << " "
               << expected.xMax() << " " << expected.yMax();
    }
    if (actual.selectionActive() != expected.selectionActive()) {
        return ::testing::AssertionFailure() << "selectionActive differs";
    }
    if (actual.displayRange() != expected.displayRange()) {
        return ::testing::AssertionFailure() << "displayRange differs";
    }
    return ::testing::AssertionSuccess();
}
