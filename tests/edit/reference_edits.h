// Literal reference versions of the edits that the design rebuilds in one pass: each inserts
// into and erases from the stitch vector one record at a time, exactly in the order the edit
// is defined, which is obviously right and quadratic. The differential tests run them beside
// the fast code on random designs and require identical results.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "model/design.h"

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

std::int32_t referenceInsertJump(std::vector<HMKStitch>& stitches, double dx, double dy,
                                 std::int32_t index);
void referenceOptimizeJumpsFor(HMKDesign& design, std::string_view type);
bool referenceTrimSelectedJumps(std::vector<HMKStitch>& stitches);
void referenceDeleteSelection(HMKDesign& design);
void referenceTransformSelection(HMKDesign& design, const HMKReferenceRunRules& rules);
void referenceMoveThread(HMKDesign& design, std::int32_t from, std::int32_t to);

// The run rules of each transform, written from their definitions (F and its inverse G).
HMKReferenceRunRules referenceMoveRules(double dx, double dy);
HMKReferenceRunRules referenceFlipRules(bool vertical, HMKReferencePoint center);
HMKReferenceRunRules referenceRotateRules(std::int32_t degrees, HMKReferencePoint center);
HMKReferenceRunRules referenceResizeRules(float factor, HMKReferencePoint center);
