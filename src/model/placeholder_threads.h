// The placeholder threads of formats that carry no thread colours (DST, EXP, KSM, ...): thread
// i is key (i mod 20) + 1 of the "Undefined" palette. Readers make them at every colour change
// and writers put them back after writing such a format, so the design matches the file.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "model/design.h"

inline constexpr std::size_t kPlaceholderThreadCycle = 20;

// Builds each of the 20 threads once: a file may change colour on every record, and every
// build looks the palette up.
class HMKPlaceholderThreads {
public:
    // The placeholder for thread index i.
    const HMKThread& thread(std::size_t index) {
        auto& thread = threads_[index % kPlaceholderThreadCycle];
        if (!thread) {
            thread = HMKThread::fromPaletteKey(std::to_string(index % kPlaceholderThreadCycle + 1),
                                               kUndefinedPalette);
        }
        return *thread;
    }
    // Appends the placeholder that follows the design's current threads.
    void appendTo(HMKDesign& design) {
        design.threads().push_back(thread(design.threads().size()));
    }

private:
    std::array<std::optional<HMKThread>, kPlaceholderThreadCycle> threads_;
};
