// How long a machine takes to sew a design, for the information panel, the stitch-out player,
// the worksheet and `hemlark info`. The estimate counts what the machine does:
//
//     seconds = moves × 60 / stitchesPerMinute
//             + colour changes × secondsPerColorChange
//             + trims × secondsPerTrim
//
// where a move is every record but a colour change (sewn stitches and jumps both take one
// turn of the main shaft), and a trim is each run of consecutive jump records (the machine
// stops, cuts and travels once per run, however many records the travel was split into).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "model/stitch.h"

struct HMKSewingTimeSettings {
    // The machine speed ("MachineSpeed" in the preferences).
    double stitchesPerMinute = 700;
    // Stopping, changing the thread (or needle) and starting again.
    double secondsPerColorChange = 30;
    // Trimming the thread and travelling to the next run.
    double secondsPerTrim = 5;
};

// What the machine does over some records.
struct HMKSewingCounts {
    std::uint64_t moves = 0;
    std::uint64_t colorChanges = 0;
    std::uint64_t trims = 0;
    friend bool operator==(const HMKSewingCounts&, const HMKSewingCounts&) = default;
};

double sewingSeconds(const HMKSewingCounts& counts, const HMKSewingTimeSettings& settings = {});
// The whole design's estimate.
double sewingSecondsOf(std::span<const HMKStitch> stitches,
                       const HMKSewingTimeSettings& settings = {});
// "0:42" below an hour, "1:05:09" from an hour on (rounded to whole seconds).
std::string sewingTimeText(double seconds);

// The counts before any record, in logarithmic time after one linear pass: the stitch-out
// player asks for them at every frame of a design of millions of records.
class HMKSewingTimeline {
public:
    HMKSewingTimeline() = default;
    explicit HMKSewingTimeline(std::span<const HMKStitch> stitches);

    std::uint64_t recordCount() const { return recordCount_; }
    // The counts of records [0, end); end is clamped to the record count.
    HMKSewingCounts countsBefore(std::uint64_t end) const;
    // The indices of the colour-change records, ascending: thread t + 1 begins at the t-th.
    const std::vector<std::uint64_t>& colorChangeIndices() const { return colorChanges_; }
    // The colour-change records among [0, end).
    std::uint64_t colorChangesBefore(std::uint64_t end) const;

private:
    std::uint64_t recordCount_ = 0;
    std::vector<std::uint64_t> colorChanges_;
    // The first record of every run of jumps, ascending.
    std::vector<std::uint64_t> trimStarts_;
};
