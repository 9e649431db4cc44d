// The one-pass edits against their literal step-by-step references on thousands of random
// designs: every stitch, thread, bound and flag must come out identical.
#include <functional>
#include <random>

#include "edit/edit_test_support.h"
#include "edit/reference_edits.h"

namespace {

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
            makeDesign(std::move(stitches), kTypes[uniform(0, std::size(kTypes) - 1)]);
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
