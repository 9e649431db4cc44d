// Progress of a batch conversion on standard error: a bar redrawn in place on a terminal,
// one plain line per file otherwise (logs, pipes). Safe to call from several workers.
#pragma once

#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>

#include "model/error.h"

class HMKProgress {
public:
    // A bar when stream is a terminal, plain lines otherwise.
    HMKProgress(std::size_t total, std::FILE* stream);
    HMKProgress(std::size_t total, std::FILE* stream, bool drawBar);

    void succeeded(const std::string& input, const std::string& output);
    // The failure is printed at once, above the bar, so it is never lost in the redraws.
    void failed(const std::string& input, const HMKError& error);
    // Ends the bar's line.
    void finish();

    std::size_t failures() const;

private:
    void drawBarLocked(const std::string& label);

    mutable std::mutex mutex_;
    std::size_t total_;
    std::size_t done_ = 0;
    std::size_t failures_ = 0;
    std::FILE* stream_;
    bool drawBar_;
};
