#include "model/sewing_time.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr double kSecondsPerMinute = 60;

bool isTravel(const HMKStitch& stitch) {
    return stitch.isJumpStitch && !stitch.isColorChange;
}

std::uint64_t countBelow(const std::vector<std::uint64_t>& ascending, std::uint64_t end) {
    return static_cast<std::uint64_t>(std::lower_bound(ascending.begin(), ascending.end(), end) -
                                      ascending.begin());
}

}  // namespace

double sewingSeconds(const HMKSewingCounts& counts, const HMKSewingTimeSettings& settings) {
    const double perStitch =
        settings.stitchesPerMinute > 0 ? kSecondsPerMinute / settings.stitchesPerMinute : 0;
    return static_cast<double>(counts.moves) * perStitch +
           static_cast<double>(counts.colorChanges) * settings.secondsPerColorChange +
           static_cast<double>(counts.trims) * settings.secondsPerTrim;
}

double sewingSecondsOf(std::span<const HMKStitch> stitches, const HMKSewingTimeSettings& settings) {
    const HMKSewingTimeline timeline(stitches);
    return sewingSeconds(timeline.countsBefore(timeline.recordCount()), settings);
}

std::string sewingTimeText(double seconds) {
    const long long total = std::isfinite(seconds) && seconds > 0 ? std::llround(seconds) : 0;
    char text[48];
    if (total >= 3600) {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", total / 3600, total / 60 % 60,
                      total % 60);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld", total / 60, total % 60);
    }
    return text;
}

HMKSewingTimeline::HMKSewingTimeline(std::span<const HMKStitch> stitches)
    : recordCount_(stitches.size()) {
    bool previousWasTravel = false;
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        if (stitches[i].isColorChange) {
            colorChanges_.push_back(i);
        }
        if (isTravel(stitches[i]) && !previousWasTravel) {
            trimStarts_.push_back(i);
        }
        previousWasTravel = isTravel(stitches[i]);
    }
}

std::uint64_t HMKSewingTimeline::colorChangesBefore(std::uint64_t end) const {
    return countBelow(colorChanges_, end);
}

HMKSewingCounts HMKSewingTimeline::countsBefore(std::uint64_t end) const {
    end = std::min(end, recordCount_);
    HMKSewingCounts counts;
    counts.colorChanges = colorChangesBefore(end);
    counts.trims = countBelow(trimStarts_, end);
    counts.moves = end - counts.colorChanges;
    return counts;
}
