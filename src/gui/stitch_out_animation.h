// HMKStitchOutAnimation: the design canvas's stitch-out animation. It runs the player's
// engine (HMKStitchOutPlayer) on a frame clock: about sixty frames a second, each sewing as
// many stitches as the speed and the time since the last frame give, so that thousands of
// stitches a second cost no more frames than ten. While active, the canvas shows only the
// sewn part of the design; the player panel drives it and shows where it is.
#pragma once

#include <cstdint>
#include <memory>

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include "platform/settings.h"
#include "render/stitch_out_player.h"

class HMKStitchOutAnimation : public QObject {
    Q_OBJECT
public:
    // The speed comes from "StitchSpeed" and is written back when changed here.
    explicit HMKStitchOutAnimation(HMKSettings& settings, QObject* parent = nullptr);

    const HMKStitchOutPlayer& player() const { return player_; }
    // The design being sewn (the canvas's copy of each design state).
    void setDesign(std::shared_ptr<const HMKDesign> design);

    // --- Showing ----------------------------------------------------------------------------
    // While active, the canvas draws only the sewn records; inactive, the whole design.
    bool isActive() const { return active_; }
    // Activating starts at the beginning of the design, paused; deactivating stops playing.
    void setActive(bool active);

    // --- Commands ---------------------------------------------------------------------------
    void play();
    void pause();
    void togglePlaying();
    void stepForward();
    void stepBackward();
    void nextBlock();
    void previousBlock();
    void seek(std::uint64_t position);
    void setSpeed(double stitchesPerSecond);
    // One frame of the clock (the timer calls it; tests and benchmarks call it directly).
    void advanceFrame(double seconds);

signals:
    void activeChanged(bool active);
    // Position, playing state or speed changed.
    void changed();
    // A frame sewed this many records (the needle sound clicks for them).
    void stitchesSewn(std::uint64_t records);

private:
    void afterCommand();
    void frame();

    HMKSettings& settings_;
    HMKStitchOutPlayer player_;
    bool active_ = false;
    QTimer frameTimer_;
    QElapsedTimer clock_;
};
