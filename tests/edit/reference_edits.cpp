#include "edit/reference_edits.h"

#include <cmath>
#include <limits>

namespace {

using Stitches = std::vector<HMKStitch>;
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

}  // namespace

std::int32_t referenceInsertJump(Stitches& stitches, double dx, double dy, std::int32_t index) {
    if (index < 0 || index >= size(stitches)) {
        return index;
    }
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

void referenceOptimizeJumpsFor(HMKDesign& design, std::string_view type) {
    Stitches& s = design.stitches();
    for (Index i = 0; i < size(s); ++i) {
        if (!isJumpOrChange(s[i])) {
            continue;
        }
        int changes = s[i].isColorChange ? 1 : 0;
        s[i].isColorChange = false;
        while (i + 1 < size(s) && isJumpOrChange(s[i + 1])) {
            s[i].deltaX = s[i].deltaX + s[i + 1].deltaX;
            s[i].deltaY = s[i].deltaY + s[i + 1].deltaY;
            s[i].isJumpStitch = s[i].isJumpStitch || s[i + 1].isJumpStitch;
            changes += s[i + 1].isColorChange ? 1 : 0;
            s.erase(s.begin() + i + 1);
        }
        for (int n = 0; n < changes; ++n) {
            s.insert(s.begin() + i + 1 + n, HMKStitch(0, 0, false, true));
        }
        i += changes;
        if (s[i - changes].isNullStitch()) {
            s.erase(s.begin() + (i - changes));
            --i;
        }
    }
    if (!s.empty() && s.back().isJumpStitch) {
        s.pop_back();
    }

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
        if (type == limits.type) {
            stitchLimit = limits.stitch, jumpLimit = limits.jump;
        }
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
            if (i > 0 && s[i - 1].isJumpStitch) {
                copy.isJumpStitch = true;
            }
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
    while (i < size(s) && !s[i].isSelected) {
        ++i;
    }
    while (i < size(s) && s[i].isSelected && isJumpOrChange(s[i])) {
        s[i].isSelected = false;
        trimmed = true;
        ++i;
    }
    Index j = size(s) - 1;
    while (j >= 0 && !s[j].isSelected) {
        --j;
    }
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
            if (!inRun) {
                runX = x, runY = y;
            }
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
        if (!s[i].isColorChange) {
            continue;
        }
        bool empty = true;
        for (Index j = i + 1; j < size(s); ++j) {
            if (s[j].isColorChange) {
                break;
            }
            if (s[j].isJumpStitch || s[j].isNullStitch()) {
                continue;
            }
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
        if (thread + 1 < threads.size()) {
            threads.erase(threads.begin() + static_cast<Index>(thread) + 1);
        }
    }

    Index first = 0;
    while (first < size(s) && !s[first].isColorChange) {
        ++first;
    }
    if (first < size(s)) {
        bool onlyMoves = true;
        for (Index i = 0; i < first; ++i) {
            onlyMoves = onlyMoves && (s[i].isJumpStitch || s[i].isNullStitch());
        }
        if (onlyMoves) {
            if (s[first].isNullStitch()) {
                s.erase(s.begin() + first);
            } else {
                s[first].isColorChange = false;
            }
            if (!threads.empty()) {
                threads.erase(threads.begin());
            }
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
    if (from < 0 || to < 0 || from >= count || to >= count || from == to) {
        return;
    }
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
    if (!s.empty()) {
        s[0].isColorChange = true;
    }
    std::int32_t landingCount = -1;
    Index landing = 0;
    HMKReferencePoint landingPoint;
    for (; landing < size(s); ++landing) {
        landingCount += s[landing].isColorChange ? 1 : 0;
        if (landingCount == to) {
            break;
        }
        landingPoint.x += s[landing].deltaX, landingPoint.y += s[landing].deltaY;
    }
    // The first block starts with a colour change only when the moved block lands before it.
    bool firstIsChange = to == 0 && from != 0;
    bool blockIsChange = !firstIsChange;
    if (!s.empty()) {
        s[0].isColorChange = firstIsChange;
    }
    if (!block.empty()) {
        block[0].isColorChange = blockIsChange;
    }
    HMKReferencePoint in = difference(start, landingPoint);
    HMKReferencePoint out = difference(landingPoint, end);
    block.insert(block.begin(),
                 HMKStitch(static_cast<float>(in.x), static_cast<float>(in.y), true, false));
    block.emplace_back(static_cast<float>(out.x), static_cast<float>(out.y), true, false);
    for (std::size_t n = 0; n < block.size(); ++n) {
        s.insert(s.begin() + landing + static_cast<Index>(n), block[n]);
    }
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

HMKReferenceRunRules referenceFlipRules(bool vertical, HMKReferencePoint c) {
    HMKReferenceRunRules rules;
    rules.forward = [vertical, c](HMKReferencePoint p) {
        return vertical ? HMKReferencePoint{2 * c.x - p.x, p.y}
                        : HMKReferencePoint{p.x, 2 * c.y - p.y};
    };
    rules.openingJump = [forward = rules.forward](HMKReferencePoint start) {
        return difference(forward(start), start);
    };
    rules.closingJump = [vertical, c](HMKReferencePoint now) {
        return vertical ? HMKReferencePoint{2 * c.x - 2 * now.x, 0}
                        : HMKReferencePoint{0, 2 * c.y - 2 * now.y};
    };
    return rules;
}

HMKReferenceRunRules referenceRotateRules(std::int32_t degrees, HMKReferencePoint c) {
    double a = degrees * 0.017453292519943295;
    float sinA = static_cast<float>(std::sin(a)), cosA = static_cast<float>(std::cos(a));
    float sinB = static_cast<float>(std::sin(-a)), cosB = static_cast<float>(std::cos(-a));
    HMKReferenceRunRules rules;
    rules.forward = [=](HMKReferencePoint p) {
        return HMKReferencePoint{cosA * (p.x - c.x) - sinA * (p.y - c.y) + c.x,
                                 (p.y - c.y) * cosA + (p.x - c.x) * sinA + c.y};
    };
    auto inverse = [=](HMKReferencePoint p) {
        return HMKReferencePoint{cosB * (p.x - c.x) - sinB * (p.y - c.y) + c.x,
                                 (p.y - c.y) * cosB + (p.x - c.x) * sinB + c.y};
    };
    rules.openingJump = [forward = rules.forward](HMKReferencePoint start) {
        return difference(forward(start), start);
    };
    rules.closingJump = [inverse](HMKReferencePoint now) { return difference(inverse(now), now); };
    return rules;
}

HMKReferenceRunRules referenceResizeRules(float factor, HMKReferencePoint c) {
    HMKReferenceRunRules rules;
    rules.forward = [=](HMKReferencePoint p) {
        return HMKReferencePoint{(p.x - c.x) * factor + c.x, (p.y - c.y) * factor + c.y};
    };
    auto inverse = [=](HMKReferencePoint p) {
        return HMKReferencePoint{(p.x - c.x) / factor + c.x, (p.y - c.y) / factor + c.y};
    };
    rules.openingJump = [forward = rules.forward](HMKReferencePoint start) {
        return difference(forward(start), start);
    };
    rules.closingJump = [inverse](HMKReferencePoint now) { return difference(inverse(now), now); };
    return rules;
}
