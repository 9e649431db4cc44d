#include "model/design.h"

#include <limits>
#include <unordered_set>

#include "model/format_text.h"
#include "model/stitch_walk.h"
#include "model/strings.h"
#include "model/units.h"

namespace {

// The design types that have a writer.
bool hasWriter(const std::string& type) {
    return type == "JEF" || type == "PES" || type == "PEC" || type == "DST" || type == "EXP" ||
           type == "PCS";
}

// An extent in whole units, truncated: the inverted bounds of an empty design have none, and
// an extent beyond the integer range ends at its limit.
std::int32_t wholeExtent(float low, float high) {
    const float extent = high - low;
    if (!(extent > 0)) {
        return 0;
    }
    constexpr auto kLargest = std::numeric_limits<std::int32_t>::max();
    return extent >= static_cast<float>(kLargest) ? kLargest : static_cast<std::int32_t>(extent);
}

}  // namespace

void HMKDesign::recomputeBounds() {
    resetBounds();
    walkStitches<float>(stitches_, [this](std::size_t, const HMKStitch&, auto, auto end) {
        widenBounds(end.x, end.y);
    });
}

std::int32_t HMKDesign::numberOfStitches() const {
    return static_cast<std::int32_t>(stitches_.size()) + 1 -
           static_cast<std::int32_t>(threads_.size());
}

std::int32_t HMKDesign::numberOfJumps() const {
    std::int32_t jumps = 0;
    for (const auto& stitch : stitches_) {
        jumps += stitch.isJumpStitch && !stitch.isColorChange;
    }
    return jumps;
}

std::size_t HMKDesign::numberOfDifferentColors() const {
    std::unordered_set<HMKColor> colors;
    for (const auto& thread : threads_) {
        colors.insert(thread.color);
    }
    return colors.size();
}

std::int32_t HMKDesign::designWidth() const {
    return wholeExtent(xMin_, xMax_);
}

std::int32_t HMKDesign::designHeight() const {
    return wholeExtent(yMin_, yMax_);
}

HMKPoint HMKDesign::centerOfDesign() const {
    // Computed in single precision, as the bounds themselves.
    float x = (xMin_ + xMax_) * 0.5f;
    float y = (yMin_ + yMax_) * 0.5f;
    return {x, y};
}

HMKPoint HMKDesign::firstStitch() const {
    float x = 0, y = 0;
    for (const auto& stitch : stitches_) {
        if (!stitch.isJumpStitch) {
            break;
        }
        x += stitch.deltaX;
        y += stitch.deltaY;
    }
    return {x, y};
}

HMKPoint HMKDesign::lastStitch() const {
    float x = 0, y = 0;
    for (const auto& stitch : stitches_) {
        x += stitch.deltaX;
        y += stitch.deltaY;
    }
    return {x, y};
}

bool HMKDesign::isShownOfAllThreads() const {
    for (const auto& thread : threads_) {
        if (!thread.isShown) {
            return false;
        }
    }
    return true;
}

std::int64_t HMKDesign::indexOfShownThread() const {
    for (std::size_t i = 0; i < threads_.size(); ++i) {
        if (threads_[i].isShown) {
            return static_cast<std::int64_t>(i);
        }
    }
    return kThreadNotFound;
}

std::string HMKDesign::designPalette() const {
    if (threads_.empty()) {
        return "";
    }
    for (const auto& thread : threads_) {
        if (thread.palette != threads_.front().palette) {
            return "";
        }
    }
    return threads_.front().palette;
}

std::string HMKDesign::designPaletteName() const {
    bool shared = !threads_.empty();
    for (const auto& thread : threads_) {
        shared = shared && thread.paletteName == threads_.front().paletteName;
    }
    if (shared) {
        return threads_.front().paletteName;
    }
    return localizedString(kDesignStringTable, "PATTERN_PALETTE", "Threadcolors");
}

bool HMKDesign::isWritable() const {
    if (!hasWriter(designType_)) {
        return false;
    }
    // The PES writer produces version 1.0 only; other PES versions must not be saved over.
    return designType_ != "PES" || designVersion_ == 10;
}

std::string HMKDesign::description() const {
    std::string width =
        HMKValueTransformer::transformedValue(static_cast<float>(designWidth()) / 10.0f);
    std::string height =
        HMKValueTransformer::transformedValue(static_cast<float>(designHeight()) / 10.0f);
    std::string text;
    if (designHoop_) {
        text = formatText(
            localizedString(kDesignStringTable, "DESCRIPTION_WITH_HOOP",
                            "%@ (%@ Version %1.1f)\nsize: %@ x %@, hoop %@\n%i stitches including "
                            "%i jumps\n%i color changes with %i different colors"),
            {designName_, designType_, designVersion_ / 10.0, width, height, hoopName(),
             numberOfStitches(), numberOfJumps(), numberOfThreads(), numberOfDifferentColors()});
    } else {
        text = formatText(
            localizedString(kDesignStringTable, "DESCRIPTION_WITHOUT_HOOP",
                            "%@ (%@ Version %1.1f)\nsize: %@ x %@\n%i stitches including %i "
                            "jumps\n%i color changes with %i different colors"),
            {designName_, designType_, designVersion_ / 10.0, width, height, numberOfStitches(),
             numberOfJumps(), numberOfThreads(), numberOfDifferentColors()});
    }
    for (std::size_t i = 0; i < threads_.size(); ++i) {
        text += formatText("\n%i. %@", {i + 1, threads_[i].name});
        if (!threads_[i].palette.empty() && threads_[i].palette != kUndefinedPalette) {
            text += formatText(", %@", {threads_[i].palette});
        }
    }
    return text;
}
