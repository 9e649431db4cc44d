// The stitch-out player's engine: which records of a design are sewn, stepping by stitch and
// by colour block, seeking, and playing at a speed in stitches per second on a clock the
// caller advances once per frame. The player panel and the canvas's stitch-out animation run
// on it; it has no timers of its own, so it is tested and benchmarked without a window.
//
// The position counts the records sewn, from 0 (nothing) to recordCount() (the whole design);
// displayRange() turns it into the design's display range for partial drawing.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "model/design.h"
#include "model/geometry.h"
#include "model/sewing_time.h"

class HMKStitchOutPlayer {
public:
    // Slowest and fastest playing speeds, in stitches per second.
    static constexpr double kMinimumSpeed = 1;
    static constexpr double kMaximumSpeed = 20000;
    // A longer pause between frames (a stalled machine, a debugger) plays no faster than this.
    static constexpr double kLongestFrameSeconds = 0.25;

    HMKStitchOutPlayer() = default;
    // Starts at the end, showing the whole design, paused.
    explicit HMKStitchOutPlayer(std::shared_ptr<const HMKDesign> design);
    // Takes a changed design, keeping the position where the design still reaches it.
    void setDesign(std::shared_ptr<const HMKDesign> design);
    const std::shared_ptr<const HMKDesign>& design() const { return design_; }

    // --- Position ------------------------------------------------------------------------
    std::uint64_t position() const { return position_; }
    std::uint64_t recordCount() const { return timeline_.recordCount(); }
    bool atEnd() const { return position_ >= recordCount(); }
    // Moves to a position (clamped); seeking never changes whether the player plays.
    void seek(std::uint64_t position);
    void stepForward();
    void stepBackward();
    // To the end of the current colour block (the next block's start), or the design's end.
    void nextBlock();
    // To the start of the current colour block, or of the one before when already there.
    void previousBlock();

    // --- Playing -------------------------------------------------------------------------
    bool isPlaying() const { return playing_; }
    // Plays from the start again when at the end.
    void play();
    void pause();
    // Stitches per second, clamped to the range above; takes effect at the next frame.
    double speed() const { return speed_; }
    void setSpeed(double stitchesPerSecond);
    // Moves the clock on by the seconds since the last frame: sews speed × seconds records
    // (the fraction carried to the next frame, so many stitches or none per frame) and stops
    // at the end of the design. Returns the number of records sewn.
    std::uint64_t advance(double seconds);

    // --- What the position means -----------------------------------------------------------
    // The design's display range that draws exactly the sewn records; nothing is sewn at
    // position 0, which no range expresses (showsNothing()).
    HMKRange displayRange() const;
    bool showsNothing() const { return position_ == 0; }
    // The thread the last sewn record belongs to (0 before the first).
    std::int32_t currentThread() const;
    // The stitches sewn, counted as numberOfStitches() counts them (colour changes are not).
    std::uint64_t stitchNumber() const;
    std::uint64_t stitchCount() const;
    // Where the needle stands (design units).
    HMKPoint needlePosition() const;
    double elapsedSeconds(const HMKSewingTimeSettings& settings) const;
    double remainingSeconds(const HMKSewingTimeSettings& settings) const;

private:
    std::shared_ptr<const HMKDesign> design_;
    HMKSewingTimeline timeline_;
    // The needle position after every kCheckpointSpacing-th record, so that a position is
    // found without walking the whole design.
    std::vector<HMKPoint> checkpoints_;
    std::uint64_t position_ = 0;
    bool playing_ = false;
    double speed_ = 100;
    double carry_ = 0;
};
