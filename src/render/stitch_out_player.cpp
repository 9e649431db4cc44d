#include "render/stitch_out_player.h"

#include <algorithm>
#include <cmath>

#include "model/stitch_walk.h"

namespace {

constexpr std::uint64_t kCheckpointSpacing = 1024;

}  // namespace

HMKStitchOutPlayer::HMKStitchOutPlayer(std::shared_ptr<const HMKDesign> design) {
    setDesign(std::move(design));
    position_ = recordCount();
}

void HMKStitchOutPlayer::setDesign(std::shared_ptr<const HMKDesign> design) {
    design_ = std::move(design);
    static const std::vector<HMKStitch> kNoStitches;
    const std::vector<HMKStitch>& stitches = design_ ? design_->stitches() : kNoStitches;
    timeline_ = HMKSewingTimeline(stitches);
    checkpoints_.assign(1, HMKPoint{});
    walkStitches<double>(stitches, [&](std::size_t i, const HMKStitch&, const auto&,
                                       const HMKPosition<double>& end) {
        if ((i + 1) % kCheckpointSpacing == 0) {
            checkpoints_.push_back({end.x, end.y});
        }
    });
    position_ = std::min(position_, recordCount());
    carry_ = 0;
    if (atEnd()) {
        playing_ = false;
    }
}

void HMKStitchOutPlayer::seek(std::uint64_t position) {
    position_ = std::min(position, recordCount());
    carry_ = 0;
    if (atEnd()) {
        playing_ = false;
    }
}

void HMKStitchOutPlayer::stepForward() {
    seek(position_ + 1);
}

void HMKStitchOutPlayer::stepBackward() {
    seek(position_ > 0 ? position_ - 1 : 0);
}

void HMKStitchOutPlayer::nextBlock() {
    const std::vector<std::uint64_t>& starts = timeline_.colorChangeIndices();
    const auto next = std::upper_bound(starts.begin(), starts.end(), position_);
    seek(next == starts.end() ? recordCount() : *next);
}

void HMKStitchOutPlayer::previousBlock() {
    const std::vector<std::uint64_t>& starts = timeline_.colorChangeIndices();
    const auto at = std::lower_bound(starts.begin(), starts.end(), position_);
    seek(at == starts.begin() ? 0 : *std::prev(at));
}

void HMKStitchOutPlayer::play() {
    if (recordCount() == 0) {
        return;
    }
    if (atEnd()) {
        position_ = 0;
    }
    carry_ = 0;
    playing_ = true;
}

void HMKStitchOutPlayer::pause() {
    playing_ = false;
}

void HMKStitchOutPlayer::setSpeed(double stitchesPerSecond) {
    speed_ = std::isfinite(stitchesPerSecond)
                 ? std::clamp(stitchesPerSecond, kMinimumSpeed, kMaximumSpeed)
                 : kMinimumSpeed;
}

std::uint64_t HMKStitchOutPlayer::advance(double seconds) {
    if (!playing_ || !(seconds > 0)) {
        return 0;
    }
    carry_ += std::min(seconds, kLongestFrameSeconds) * speed_;
    const double whole = std::floor(carry_);
    carry_ -= whole;
    const std::uint64_t before = position_;
    position_ = std::min(position_ + static_cast<std::uint64_t>(whole), recordCount());
    if (atEnd()) {
        playing_ = false;
        carry_ = 0;
    }
    return position_ - before;
}

HMKRange HMKStitchOutPlayer::displayRange() const {
    // The renderer draws records location through location + length inclusive.
    return HMKRange{0, position_ > 0 ? position_ - 1 : 0};
}

std::int32_t HMKStitchOutPlayer::currentThread() const {
    const std::uint64_t sewn = position_ > 0 ? position_ - 1 : 0;
    const std::uint64_t thread = timeline_.colorChangesBefore(sewn + 1);
    const std::uint64_t threads = design_ ? design_->threads().size() : 0;
    return static_cast<std::int32_t>(threads > 0 ? std::min(thread, threads - 1) : 0);
}

std::uint64_t HMKStitchOutPlayer::stitchNumber() const {
    return position_ - timeline_.colorChangesBefore(position_);
}

std::uint64_t HMKStitchOutPlayer::stitchCount() const {
    return recordCount() - timeline_.colorChangeIndices().size();
}

HMKPoint HMKStitchOutPlayer::needlePosition() const {
    const std::uint64_t checkpoint = position_ / kCheckpointSpacing;
    HMKPoint point = checkpoints_[checkpoint];
    if (position_ == checkpoint * kCheckpointSpacing) {
        return point;
    }
    const std::vector<HMKStitch>& stitches = design_->stitches();
    for (std::uint64_t i = checkpoint * kCheckpointSpacing; i < position_; ++i) {
        point.x += static_cast<double>(stitches[i].deltaX);
        point.y += static_cast<double>(stitches[i].deltaY);
    }
    return point;
}

double HMKStitchOutPlayer::elapsedSeconds(const HMKSewingTimeSettings& settings) const {
    return sewingSeconds(timeline_.countsBefore(position_), settings);
}

double HMKStitchOutPlayer::remainingSeconds(const HMKSewingTimeSettings& settings) const {
    return sewingSeconds(timeline_.countsBefore(recordCount()), settings) -
           elapsedSeconds(settings);
}
