// Small builders and checks shared by the edit and render tests: stitches written as one call
// each, designs with numbered threads, sewn positions and bit-exact comparisons.
#pragma once

#include <bit>
#include <cstdint>
#include <optional>
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

// Three threads: (10,0) (10,0) | (0,10) (0,10) | (-10,0).
inline std::vector<HMKStitch> threeThreads() {
    return {stitch(10, 0), stitch(10, 0), change(),      stitch(0, 10),
            stitch(0, 10), change(),      stitch(-10, 0)};
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

// The ends of the sewn stitches (normal ones with length) by thread, optionally only those
// with the given selection mark.
using SewnEnds = std::vector<std::vector<HMKPosition<double>>>;
inline SewnEnds sewnEndsByThread(const HMKDesign& design, std::optional<bool> marked = {}) {
    SewnEnds threads(1);
    walkStitches(design.stitches(), [&](std::size_t, const HMKStitch& s, auto, auto end) {
        if (s.isColorChange) {
            threads.emplace_back();
        }
        if (!s.isJumpStitch && !s.isNullStitch() && (!marked || s.isSelected == *marked)) {
            threads.back().push_back(end);
        }
    });
    return threads;
}

inline void expectNear(const SewnEnds& actual, const SewnEnds& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t t = 0; t < actual.size(); ++t) {
        ASSERT_EQ(actual[t].size(), expected[t].size()) << "thread " << t;
        for (std::size_t i = 0; i < actual[t].size(); ++i) {
            EXPECT_NEAR(actual[t][i].x, expected[t][i].x, 1e-3) << "thread " << t << " end " << i;
            EXPECT_NEAR(actual[t][i].y, expected[t][i].y, 1e-3) << "thread " << t << " end " << i;
        }
    }
}

inline std::vector<std::string> threadNames(const HMKDesign& design) {
    std::vector<std::string> names;
    for (const auto& thread : design.threads()) {
        names.push_back(thread.name);
    }
    return names;
}

inline std::vector<bool> selectionFlags(const HMKDesign& design) {
    std::vector<bool> flags;
    for (const auto& s : design.stitches()) {
        flags.push_back(s.isSelected);
    }
    return flags;
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
    auto bounds = [](const HMKDesign& d) {
        return std::vector<float>{d.xMin(), d.yMin(), d.xMax(), d.yMax()};
    };
    for (std::size_t i = 0; i < 4; ++i) {
        if (!sameBits(bounds(actual)[i], bounds(expected)[i])) {
            return ::testing::AssertionFailure()
                   << "bounds " << ::testing::PrintToString(bounds(actual)) << " vs "
                   << ::testing::PrintToString(bounds(expected));
        }
    }
    if (actual.threads() != expected.threads()) {
        return ::testing::AssertionFailure() << "threads differ";
    }
    if (actual.selectionActive() != expected.selectionActive() ||
        actual.displayRange() != expected.displayRange()) {
        return ::testing::AssertionFailure() << "selectionActive or displayRange differs";
    }
    return ::testing::AssertionSuccess();
}
