#include "gui/stitch_out_animation.h"

namespace {

constexpr int kFrameMilliseconds = 16;

}  // namespace

HMKStitchOutAnimation::HMKStitchOutAnimation(HMKSettings& settings, QObject* parent)
    : QObject(parent), settings_(settings) {
    player_.setSpeed(settings_.value(HMKSettings::stitchSpeed));
    frameTimer_.setInterval(kFrameMilliseconds);
    frameTimer_.setTimerType(Qt::PreciseTimer);
    connect(&frameTimer_, &QTimer::timeout, this, &HMKStitchOutAnimation::frame);
    connect(&settings_, &HMKSettings::changed, this, [this](const QString& key) {
        if (key == HMKSettings::stitchSpeed.name) {
            player_.setSpeed(settings_.value(HMKSettings::stitchSpeed));
            emit changed();
        }
    });
}

void HMKStitchOutAnimation::setDesign(std::shared_ptr<const HMKDesign> design) {
    player_.setDesign(std::move(design));
    afterCommand();
}

void HMKStitchOutAnimation::setActive(bool active) {
    if (active == active_) {
        return;
    }
    active_ = active;
    player_.pause();
    player_.seek(active ? 0 : player_.recordCount());
    emit activeChanged(active);
    afterCommand();
}

void HMKStitchOutAnimation::play() {
    if (!active_) {
        setActive(true);
    }
    player_.play();
    afterCommand();
}

void HMKStitchOutAnimation::pause() {
    player_.pause();
    afterCommand();
}

void HMKStitchOutAnimation::togglePlaying() {
    player_.isPlaying() ? pause() : play();
}

void HMKStitchOutAnimation::stepForward() {
    player_.stepForward();
    afterCommand();
}

void HMKStitchOutAnimation::stepBackward() {
    player_.stepBackward();
    afterCommand();
}

void HMKStitchOutAnimation::nextBlock() {
    player_.nextBlock();
    afterCommand();
}

void HMKStitchOutAnimation::previousBlock() {
    player_.previousBlock();
    afterCommand();
}

void HMKStitchOutAnimation::seek(std::uint64_t position) {
    player_.seek(position);
    afterCommand();
}

void HMKStitchOutAnimation::setSpeed(double stitchesPerSecond) {
    player_.setSpeed(stitchesPerSecond);
    // Stored as whole stitches per second; the settings' signal then reaches every window.
    settings_.setValue(HMKSettings::stitchSpeed, static_cast<int>(player_.speed()));
    emit changed();
}

void HMKStitchOutAnimation::afterCommand() {
    if (player_.isPlaying() && !frameTimer_.isActive()) {
        clock_.start();
        frameTimer_.start();
    } else if (!player_.isPlaying()) {
        frameTimer_.stop();
    }
    emit changed();
}

void HMKStitchOutAnimation::advanceFrame(double seconds) {
    const std::uint64_t sewn = player_.advance(seconds);
    if (sewn > 0) {
        emit stitchesSewn(sewn);
    }
    if (sewn > 0 || !player_.isPlaying()) {
        afterCommand();
    }
}

void HMKStitchOutAnimation::frame() {
    advanceFrame(static_cast<double>(clock_.nsecsElapsed()) / 1e9);
    clock_.restart();
}
