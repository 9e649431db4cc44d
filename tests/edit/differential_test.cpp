// The one-pass edits against their literal step-by-step references on thousands of random
// designs: every stitch, thread, bound and flag must come out identical.
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "support/test_support.h"

namespace {

// --- Literal references -------------------------------------------------------------------
// Each inserts into and erases from the stitch vector one record at a time, exactly in the
// order the edit is defined, which is obviously right and quadratic.

struct HMKReferencePoint {
    double x = 0;
    double y = 0;
};

// How the selection-run scheme treats one selected run: the jump into it from its old start,
// the new deltas of a selected stitch (which may stay as they are), the jump out of it.
struct HMKReferenceRunRules {
    std::function<HMKReferencePoint(HMKReferencePoint)> forward;
    std::function<HMKReferencePoint(HMKReferencePoint start)> openingJump;
    std::function<HMKReferencePoint(HMKReferencePoint now)> closingJump;
    bool keepsDeltas = false;
};

using Index = std::ptrdiff_t;

Index size(const Stitches& stitches) {
    return static_cast<Index>(stitches.size());
}

bool isJumpOrChange(const HMKStitch& stitch) {
    return stitch.isJumpStitch || stitch.isColorChange;
}

HMKReferencePoint difference(HMKReferencePoint to, HMKReferencePoint from) {
    return {to.x - from.x, to.y - from.y};
}

std::int32_t referenceInsertJump(Stitches& stitches, double dx, double dy, std::int32_t index) {
    if (index < 0 || index >= size(stitches))
        return index;
    HMKStitch next = stitches[index];
    HMKStitch before = index == 0 ? HMKStitch(0, 0, false, false) : stitches[index - 1];
    stitches.insert(stitches.begin() + index,
                    HMKStitch(static_cast<float>(dx), static_cast<float>(dy), true, false));
    if (!before.isJumpStitch && !next.isJumpStitch && !next.isNullStitch()) {
        HMKStitch zero(0, 0, false, false);
        zero.isSelected = next.isSelected;
        stitches.insert(stitches.begin() + index + 1, zero);
        return index + 2;
    }
    return index + 1;
}

bool referenceTrimSelectedJumps(Stitches& s);

void referenceOptimizeJumpsFor(HMKDesign& design, std::string_view type) {
    Stitches& s = design.stitches();
    for (Index i = 0; i < size(s); ++i) {
        if (!isJumpOrChange(s[i]))
            continue;
        int changes = s[i].isColorChange ? 1 : 0;
        s[i].isColorChange = false;
        while (i + 1 < size(s) && isJumpOrChange(s[i + 1])) {
            s[i].deltaX = s[i].deltaX + s[i + 1].deltaX;
            s[i].deltaY = s[i].deltaY + s[i + 1].deltaY;
            s[i].isJumpStitch = s[i].isJumpStitch || s[i + 1].isJumpStitch;
            changes += s[i + 1].isColorChange ? 1 : 0;
            s.erase(s.begin() + i + 1);
        }
        for (int n = 0; n < changes; ++n)
            s.insert(s.begin() + i + 1 + n, HMKStitch(0, 0, false, true));
        i += changes;
        if (s[i - changes].isNullStitch()) {
            s.erase(s.begin() + (i - changes));
            --i;
        }
    }
    if (!s.empty() && s.back().isJumpStitch)
        s.pop_back();

    struct Limits {
        std::string_view type;
        float stitch, jump;
    };
    const Limits kLimits[] = {
        {"JEF", 126, 126}, {"PES", 62, 2046}, {"PEC", 62, 2046},
        {"EXP", 126, 126}, {"DST", 120, 120}, {"PCS", 1150, 1150},
    };
    float stitchLimit = 999999, jumpLimit = 999999;
    for (const Limits& limits : kLimits) {
        if (type == limits.type)
            stitchLimit = limits.stitch, jumpLimit = limits.jump;
    }

    float largest = std::numeric_limits<float>::max();
    design.setBounds(largest, largest, -largest, -largest);
    float x = 0, y = 0;
    for (Index i = 0; i < size(s); ++i) {
        float limit = s[i].isJumpStitch ? jumpLimit : stitchLimit;
        float dx = s[i].deltaX, dy = s[i].deltaY;
        float firstX = dx, firstY = dy;
        bool split = false;
        if (std::fabs(dx) > limit) {
            firstX = dx * limit / std::fabs(dx);
            firstY = (dy / dx) * firstX;
            split = true;
        }
        if (std::fabs(firstY) > limit) {
            firstY = limit * firstY / std::fabs(firstY);
            firstX = (dx / dy) * firstY;
            split = true;
        }
        if (s[i].isColorChange && !s[i].isNullStitch()) {
            firstX = 0, firstY = 0;
            split = true;
        }
        // The guard against a split without progress only matters for absurd magnitudes.
        if (split && !(dx - firstX == dx && dy - firstY == dy)) {
            HMKStitch copy = s[i];
            copy.deltaX = dx - firstX;
            copy.deltaY = dy - firstY;
            copy.isColorChange = false;
            if (i > 0 && s[i - 1].isJumpStitch)
                copy.isJumpStitch = true;
            s[i].deltaX = firstX;
            s[i].deltaY = firstY;
            s.insert(s.begin() + i + 1, copy);
        }
        x += s[i].deltaX;
        y += s[i].deltaY;
        design.widenBounds(x, y);
    }
    referenceTrimSelectedJumps(s);
    design.setDisplayRange({0, s.size()});
}

bool referenceTrimSelectedJumps(Stitches& s) {
    bool trimmed = false;
    Index i = 0;
    while (i < size(s) && !s[i].isSelected)
        ++i;
    while (i < size(s) && s[i].isSelected && isJumpOrChange(s[i])) {
        s[i].isSelected = false;
        trimmed = true;
        ++i;
    }
    Index j = size(s) - 1;
    while (j >= 0 && !s[j].isSelected)
        --j;
    while (j >= 0 && s[j].isSelected && isJumpOrChange(s[j])) {
        s[j].isSelected = false;
        trimmed = true;
        --j;
    }
    return trimmed;
}

void referenceDeleteSelection(HMKDesign& design) {
    Stitches& s = design.stitches();
    double x = 0, y = 0, runX = 0, runY = 0;
    bool inRun = false;
    for (Index i = 0; i < size(s); ++i) {
        float dx = s[i].deltaX, dy = s[i].deltaY;
        if (s[i].isSelected) {
            if (!inRun)
                runX = x, runY = y;
            inRun = true;
            if (s[i].isColorChange) {
                s[i].deltaX = 0, s[i].deltaY = 0;
            } else {
                s.erase(s.begin() + i);
                --i;
            }
        } else if (inRun) {
            i = referenceInsertJump(s, x - runX, y - runY, static_cast<std::int32_t>(i));
            inRun = false;
        }
        x += dx, y += dy;
    }

    auto& threads = design.threads();
    std::size_t thread = 0;
    for (Index i = 0; i < size(s); ++i) {
        if (!s[i].isColorChange)
            continue;
        bool empty = true;
        for (Index j = i + 1; j < size(s); ++j) {
            if (s[j].isColorChange)
                break;
            if (s[j].isJumpStitch || s[j].isNullStitch())
                continue;
            empty = false;
            break;
        }
        if (!empty) {
            ++thread;
            continue;
        }
        if (s[i].isNullStitch()) {
            s.erase(s.begin() + i);
            --i;
        } else {
            s[i].isColorChange = false;
        }
        if (thread + 1 < threads.size())
            threads.erase(threads.begin() + static_cast<Index>(thread) + 1);
    }

    Index first = 0;
    while (first < size(s) && !s[first].isColorChange)
        ++first;
    if (first < size(s)) {
        bool onlyMoves = true;
        for (Index i = 0; i < first; ++i)
            onlyMoves = onlyMoves && (s[i].isJumpStitch || s[i].isNullStitch());
        if (onlyMoves) {
            if (s[first].isNullStitch()) {
                s.erase(s.begin() + first);
            } else {
                s[first].isColorChange = false;
            }
            if (!threads.empty())
                threads.erase(threads.begin());
        }
    }

    referenceOptimizeJumpsFor(design, design.designType());
    if (s.empty()) {
        threads.clear();
        design.setBounds(-100, -100, 100, 100);
    }
}

void referenceTransformSelection(HMKDesign& design, const HMKReferenceRunRules& rules) {
    Stitches& s = design.stitches();
    HMKReferencePoint old, now;
    bool previousSelected = false;
    for (Index i = 0; i < size(s); ++i) {
        HMKReferencePoint end{old.x + s[i].deltaX, old.y + s[i].deltaY};
        if (s[i].isSelected) {
            if (!previousSelected) {
                HMKReferencePoint jump = rules.openingJump(old);
                i = referenceInsertJump(s, jump.x, jump.y, static_cast<std::int32_t>(i));
                now = rules.forward(old);
            }
            HMKReferencePoint moved = rules.forward(end);
            if (!rules.keepsDeltas) {
                s[i].deltaX = static_cast<float>(moved.x - now.x);
                s[i].deltaY = static_cast<float>(moved.y - now.y);
            }
            now = moved;
        } else {
            if (previousSelected && i > 0) {
                HMKReferencePoint jump = rules.closingJump(now);
                i = referenceInsertJump(s, jump.x, jump.y, static_cast<std::int32_t>(i));
            }
            now = end;
        }
        old = end;
        previousSelected = s[i].isSelected;
    }
    referenceOptimizeJumpsFor(design, design.designType());
}

void referenceMoveThread(HMKDesign& design, std::int32_t from, std::int32_t to) {
    auto& threads = design.threads();
    auto count = static_cast<std::int32_t>(threads.size());
    if (from < 0 || to < 0 || from >= count || to >= count || from == to)
        return;
    Stitches& s = design.stitches();
    Stitches block;
    double x = 0, y = 0, movedX = 0, movedY = 0;
    std::int32_t thread = 0;
    Index i = 0;
    while (i < size(s)) {
        thread += s[i].isColorChange ? 1 : 0;
        if (thread < from) {
            x += s[i].deltaX, y += s[i].deltaY;
            ++i;
        } else if (thread == from) {
            HMKStitch stitch = s[i];
            stitch.isColorChange = false;
            movedX += stitch.deltaX, movedY += stitch.deltaY;
            block.push_back(stitch);
            s.erase(s.begin() + i);
        } else {
            break;
        }
    }
    HMKReferencePoint start{x, y};
    HMKReferencePoint end{start.x + movedX, start.y + movedY};
    if (i < size(s)) {
        HMKReferencePoint gap = difference(end, start);
        s.insert(s.begin() + i, HMKStitch(static_cast<float>(gap.x), static_cast<float>(gap.y),
                                          true, s[i].isColorChange));
        s[i + 1].isColorChange = false;
    }
    if (!s.empty())
        s[0].isColorChange = true;
    std::int32_t landingCount = -1;
    Index landing = 0;
    HMKReferencePoint landingPoint;
    for (; landing < size(s); ++landing) {
        landingCount += s[landing].isColorChange ? 1 : 0;
        if (landingCount == to)
            break;
        landingPoint.x += s[landing].deltaX, landingPoint.y += s[landing].deltaY;
    }
    // The first block starts with a colour change only when the moved block lands before it.
    bool firstIsChange = to == 0 && from != 0;
    bool blockIsChange = !firstIsChange;
    if (!s.empty())
        s[0].isColorChange = firstIsChange;
    if (!block.empty())
        block[0].isColorChange = blockIsChange;
    HMKReferencePoint in = difference(start, landingPoint);
    HMKReferencePoint out = difference(landingPoint, end);
    block.insert(block.begin(),
                 HMKStitch(static_cast<float>(in.x), static_cast<float>(in.y), true, false));
    block.emplace_back(static_cast<float>(out.x), static_cast<float>(out.y), true, false);
    for (std::size_t n = 0; n < block.size(); ++n)
        s.insert(s.begin() + landing + static_cast<Index>(n), block[n]);
    HMKThread moved = threads[from];
    threads.erase(threads.begin() + from);
    threads.insert(threads.begin() + to, moved);
    referenceOptimizeJumpsFor(design, design.designType());
}

HMKReferenceRunRules referenceMoveRules(double dx, double dy) {
    HMKReferenceRunRules rules;
    rules.forward = [dx, dy](HMKReferencePoint p) { return HMKReferencePoint{p.x + dx, p.y + dy}; };
    rules.openingJump = [dx, dy](HMKReferencePoint) { return HMKReferencePoint{dx, dy}; };
    rules.closingJump = [dx, dy](HMKReferencePoint) { return HMKReferencePoint{-dx, -dy}; };
    rules.keepsDeltas = true;
    return rules;
}

// The rules of a transform F with inverse G: into a run from start to F(start), out of it
// from now back to G(now).
using HMKReferenceMap = std::function<HMKReferencePoint(HMKReferencePoint)>;
HMKReferenceRunRules referenceMappedRules(HMKReferenceMap forward, HMKReferenceMap inverse) {
    HMKReferenceRunRules rules;
    rules.forward = forward;
    rules.openingJump = [forward](HMKReferencePoint start) {
        return difference(forward(start), start);
    };
    rules.closingJump = [inverse](HMKReferencePoint now) { return difference(inverse(now), now); };
    return rules;
}

HMKReferenceRunRules referenceFlipRules(bool vertical, HMKReferencePoint c) {
    HMKReferenceRunRules rules = referenceMappedRules(
        [vertical, c](HMKReferencePoint p) {
            return vertical ? HMKReferencePoint{2 * c.x - p.x, p.y}
                            : HMKReferencePoint{p.x, 2 * c.y - p.y};
        },
        {});
    rules.closingJump = [vertical, c](HMKReferencePoint now) {
        return vertical ? HMKReferencePoint{2 * c.x - 2 * now.x, 0}
                        : HMKReferencePoint{0, 2 * c.y - 2 * now.y};
    };
    return rules;
}

HMKReferenceRunRules referenceRotateRules(std::int32_t degrees, HMKReferencePoint c) {
    const double a = degrees * 0.017453292519943295;
    const auto rotation = [c](float sinA, float cosA) {
        return [=](HMKReferencePoint p) {
            return HMKReferencePoint{cosA * (p.x - c.x) - sinA * (p.y - c.y) + c.x,
                                     (p.y - c.y) * cosA + (p.x - c.x) * sinA + c.y};
        };
    };
    return referenceMappedRules(
        rotation(static_cast<float>(std::sin(a)), static_cast<float>(std::cos(a))),
        rotation(static_cast<float>(std::sin(-a)), static_cast<float>(std::cos(-a))));
}

HMKReferenceRunRules referenceResizeRules(float factor, HMKReferencePoint c) {
    return referenceMappedRules(
        [=](HMKReferencePoint p) {
            return HMKReferencePoint{(p.x - c.x) * factor + c.x, (p.y - c.y) * factor + c.y};
        },
        [=](HMKReferencePoint p) {
            return HMKReferencePoint{(p.x - c.x) / factor + c.x, (p.y - c.y) / factor + c.y};
        });
}

// --- Random designs and the comparison ---------------------------------------------------
constexpr int kRandomDesigns = 3000;

const char* const kTypes[] = {"JEF", "PES", "PEC", "EXP", "DST", "PCS", "VP3", "", "dst"};

class RandomDesigns {
public:
    explicit RandomDesigns(unsigned seed) : random_(seed) {}

    HMKDesign next() {
        std::size_t count = chance(0.1) ? uniform(0, 250) : uniform(0, 30);
        std::vector<HMKStitch> stitches;
        bool selecting = chance(0.3);
        bool jumping = false;
        for (std::size_t i = 0; i < count; ++i) {
            HMKStitch stitch = randomDeltas();
            // Flags come in runs, as in real designs, with single odd ones in between.
            jumping = chance(0.3) ? !jumping : jumping;
            stitch.isJumpStitch = jumping != chance(0.05);
            stitch.isColorChange = chance(0.1);
            selecting = chance(0.25) ? !selecting : selecting;
            stitch.isSelected = selecting;
            stitches.push_back(stitch);
        }
        HMKDesign design =
            makeDesign(std::move(stitches), {}, kTypes[uniform(0, std::size(kTypes) - 1)]);
        // Now and then a thread list that does not match the colour changes.
        if (chance(0.05)) {
            design.threads().push_back(numberedThread(99));
        } else if (chance(0.05) && !design.threads().empty()) {
            design.threads().pop_back();
        }
        design.setSelectionActive(chance(0.8));
        design.setDisplayRange({1, 2});
        return design;
    }

    std::size_t uniform(std::size_t low, std::size_t high) {
        return std::uniform_int_distribution<std::size_t>(low, high)(random_);
    }
    double uniformReal(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    bool chance(double p) { return std::bernoulli_distribution(p)(random_); }

private:
    HMKStitch randomDeltas() {
        static const float kLimits[] = {62, 120, 126, 1150, 2046};
        // Zero, negative zero, small whole and fractional moves, huge ones, the format limits.
        const std::function<float()> kinds[] = {
            [] { return 0.0f; },
            [] { return -0.0f; },
            [&] { return static_cast<float>(uniform(0, 20)) - 10; },
            [&] { return static_cast<float>(uniformReal(-50, 50)); },
            [&] { return static_cast<float>(uniformReal(-3000, 3000)); },
            [&] { return (chance(0.5) ? 1 : -1) * kLimits[uniform(0, std::size(kLimits) - 1)]; },
            [&] { return static_cast<float>(uniform(0, 400)) - 200; },
        };
        auto axis = [&] { return kinds[uniform(0, 6)](); };
        if (chance(0.15)) {
            return HMKStitch(0, 0, false, false);
        }
        return HMKStitch(axis(), axis(), false, false);
    }

    std::mt19937 random_;
};

// Runs one edit both ways on kRandomDesigns designs; the edit may draw its arguments from the
// generator and returns a label for the failure message.
template <typename Edit>
void expectSameAsReference(unsigned seed, Edit edit) {
    RandomDesigns designs(seed);
    for (int n = 0; n < kRandomDesigns; ++n) {
        HMKDesign fast = designs.next();
        HMKDesign reference = fast;
        std::string label = edit(designs, fast, reference);
        ASSERT_TRUE(sameDesign(fast, reference)) << label << ", design " << n;
    }
}

TEST(EditDifferential, OptimizeJumpsMatchesStepByStepDefinition) {
    expectSameAsReference(1, [](RandomDesigns&, HMKDesign& fast, HMKDesign& reference) {
        fast.optimizeJumpsFor(fast.designType());
        referenceOptimizeJumpsFor(reference, reference.designType());
        return std::string("optimize");
    });
}

TEST(EditDifferential, DeleteSelectionMatchesStepByStepDefinition) {
    expectSameAsReference(2, [](RandomDesigns&, HMKDesign& fast, HMKDesign& reference) {
        fast.deleteSelection();
        referenceDeleteSelection(reference);
        return std::string("delete");
    });
}

TEST(EditDifferential, SelectionTransformsMatchStepByStepDefinition) {
    const std::int32_t kAngles[] = {0, 1, 45, 90, -90, 180, 360, 17, -123};
    const float kFactors[] = {1.0f, 0.5f, 2.0f, 1.3f, 0.01f, 7.77f};
    RandomDesigns designs(3);
    for (int n = 0; n < kRandomDesigns; ++n) {
        const HMKDesign original = designs.next();
        HMKRect rect = original.selectionRect();
        HMKReferencePoint center{rect.x + rect.width * 0.5, rect.y + rect.height * 0.5};
        auto expectSame = [&](const char* name, auto fastEdit, const HMKReferenceRunRules& rules) {
            HMKDesign fast = original, reference = original;
            fastEdit(fast);
            referenceTransformSelection(reference, rules);
            ASSERT_TRUE(sameDesign(fast, reference)) << name << ", design " << n;
        };
        double dx = designs.uniformReal(-500, 500), dy = designs.uniformReal(-500, 500);
        expectSame(
            "move",
            [&](HMKDesign& d) {
                d.moveSelectionByVector({dx, dy});
            },
            referenceMoveRules(dx, dy));
        bool vertical = designs.chance(0.5);
        expectSame(
            "flip", [&](HMKDesign& d) { d.flipSelection(vertical ? "V" : "H"); },
            referenceFlipRules(vertical, center));
        std::int32_t degrees = kAngles[designs.uniform(0, std::size(kAngles) - 1)];
        expectSame(
            "rotate", [&](HMKDesign& d) { d.rotateSelectionByDegrees(degrees); },
            referenceRotateRules(degrees, center));
        float factor = kFactors[designs.uniform(0, std::size(kFactors) - 1)];
        expectSame(
            "resize", [&](HMKDesign& d) { d.resizeSelectionByPercent(factor); },
            referenceResizeRules(factor, center));
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(EditDifferential, MoveThreadMatchesStepByStepDefinition) {
    expectSameAsReference(4, [](RandomDesigns& designs, HMKDesign& fast, HMKDesign& reference) {
        auto threads = static_cast<std::int32_t>(fast.threads().size());
        auto from = static_cast<std::int32_t>(designs.uniform(0, threads + 1)) - 1;
        auto to = static_cast<std::int32_t>(designs.uniform(0, threads + 1)) - 1;
        fast.moveThreadFromIndex(from, to);
        referenceMoveThread(reference, from, to);
        return "from " + std::to_string(from) + " to " + std::to_string(to);
    });
}

}  // namespace
