// The one-pass edits against their literal step-by-step references on thousands of random
// designs: every stitch, thread, bound and flag must come out identical.
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
        auto axis = [&]() -> float {
            switch (uniform(0, 6)) {
                case 0:
                    return 0.0f;
                case 1:
                    return -0.0f;
                case 2:
                    return static_cast<float>(uniform(0, 20)) - 10;
                case 3:
                    return static_cast<float>(uniformReal(-50, 50));
                case 4:
                    return static_cast<float>(uniformReal(-3000, 3000));
                case 5:
                    return (chance(0.5) ? 1 : -1) * kLimits[uniform(0, std::size(kLimits) - 1)];
                default:
                    return static_cast<float>(uniform(0, 400)) - 200;
            }
        };
        if (chance(0.15)) {
            return HMKStitch(0, 0, false, false);
        }
        return HMKStitch(axis(), axis(), false, false);
    }

    std::mt19937 random_;
};

TEST(EditDifferential, OptimizeJumpsMatchesStepByStepDefinition) {
    RandomDesigns designs(1);
    for (int n = 0; n < kRandomDesigns; ++n) {
        HMKDesign fast = designs.next();
        HMKDesign reference = fast;
        fast.optimizeJumpsFor(fast.designType());
        referenceOptimizeJumpsFor(reference, reference.designType());
        ASSERT_TRUE(sameDesign(fast, reference)) << "design " << n;
    }
}

TEST(EditDifferential, DeleteSelectionMatchesStepByStepDefinition) {
    RandomDesigns designs(2);
    for (int n = 0; n < kRandomDesigns; ++n) {
        HMKDesign fast = designs.next();
        HMKDesign reference = fast;
        fast.deleteSelection();
        referenceDeleteSelection(reference);
        ASSERT_TRUE(sameDesign(fast, reference)) << "design " << n;
    }
}

HMKReferencePoint selectionCenter(const HMKDesign& design) {
    HMKRect rect = design.selectionRect();
    return {rect.x + rect.width * 0.5, rect.y + rect.height * 0.5};
}

TEST(EditDifferential, SelectionTransformsMatchStepByStepDefinition) {
    RandomDesigns designs(3);
    const std::int32_t kAngles[] = {0, 1, 45, 90, -90, 180, 360, 17, -123};
    const float kFactors[] = {1.0f, 0.5f, 2.0f, 1.3f, 0.01f, 7.77f};
    for (int n = 0; n < kRandomDesigns; ++n) {
        HMKDesign original = designs.next();
        HMKReferencePoint center = selectionCenter(original);

        HMKDesign fast = original, reference = original;
        double dx = designs.uniformReal(-500, 500), dy = designs.uniformReal(-500, 500);
        fast.moveSelectionByVector({dx, dy});
        referenceTransformSelection(reference, referenceMoveRules(dx, dy));
        ASSERT_TRUE(sameDesign(fast, reference)) << "move, design " << n;

        bool vertical = designs.chance(0.5);
        fast = original, reference = original;
        fast.flipSelection(vertical ? "V" : "H");
        referenceTransformSelection(reference, referenceFlipRules(vertical, center));
        ASSERT_TRUE(sameDesign(fast, reference)) << "flip, design " << n;

        std::int32_t degrees = kAngles[designs.uniform(0, std::size(kAngles) - 1)];
        fast = original, reference = original;
        fast.rotateSelectionByDegrees(degrees);
        referenceTransformSelection(reference, referenceRotateRules(degrees, center));
        ASSERT_TRUE(sameDesign(fast, reference)) << "rotate, design " << n;

        float factor = kFactors[designs.uniform(0, std::size(kFactors) - 1)];
        fast = original, reference = original;
        fast.resizeSelectionByPercent(factor);
        referenceTransformSelection(reference, referenceResizeRules(factor, center));
        ASSERT_TRUE(sameDesign(fast, reference)) << "resize, design " << n;
    }
}

TEST(EditDifferential, MoveThreadMatchesStepByStepDefinition) {
    RandomDesigns designs(4);
    for (int n = 0; n < kRandomDesigns; ++n) {
        HMKDesign fast = designs.next();
        HMKDesign reference = fast;
        auto threads = static_cast<std::int32_t>(fast.threads().size());
        auto from = static_cast<std::int32_t>(designs.uniform(0, threads + 1)) - 1;
        auto to = static_cast<std::int32_t>(designs.uniform(0, threads + 1)) - 1;
        fast.moveThreadFromIndex(from, to);
        referenceMoveThread(reference, from, to);
        ASSERT_TRUE(sameDesign(fast, reference))
            << "design " << n << " from " << from << " to " << to;
    }
}

}  // namespace
