// The EXP, SEW, KSM, VP3 and PCS-family readers working on file bytes already in memory.
// HMKDesign's import...FromURL methods read the whole file and call these; the fuzz harnesses
// and benchmarks call them directly so that no file I/O stands between them and the decoders.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "model/design.h"
#include "model/error.h"

// --- Byte-stream formats: EXP, SEW, KSM -----------------------------------------------------
bool importExpDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);
bool importSewDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);
bool importKsmDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);

// --- VP3 (colour sections with their own thread colours and a custom hoop) -----------------
bool importVp3DesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);

// --- PCS, PCD and PCQ (absolute positions in 1/6 mm) ---------------------------------------
bool importPcxDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);

// --- Shared by the readers ---------------------------------------------------------------
// Formats that carry no thread colours cycle through placeholder threads "1" to "20" of the
// "Undefined" palette: each new thread is keyed (thread count modulo 20) + 1. Each of the 20
// is built once per read, since a file may change colour on every record and every build
// looks the palette up.
inline constexpr std::size_t kPlaceholderThreadCycle = 20;

class HMKPlaceholderThreads {
public:
    void appendTo(HMKDesign& design) {
        auto& thread = threads_[design.threads().size() % kPlaceholderThreadCycle];
        if (!thread) {
            std::size_t key = design.threads().size() % kPlaceholderThreadCycle + 1;
            thread = HMKThread::fromPaletteKey(std::to_string(key), kUndefinedPalette);
        }
        design.threads().push_back(*thread);
    }

private:
    std::array<std::optional<HMKThread>, kPlaceholderThreadCycle> threads_;
};
