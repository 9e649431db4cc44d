// Progress of a batch conversion on standard error: a bar redrawn in place on a terminal,
// one plain line per file otherwise (logs, pipes). Safe to call from several workers.
#pragma once

#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>

#include "cli/outcome.h"
#include "model/error.h"

class HMKProgress {
public:
    // A bar when stream is a terminal, plain lines otherwise.
    HMKProgress(std::size_t total, std::FILE* stream);
    HMKProgress(std::size_t total, std::FILE* stream, bool drawBar);

    void succeeded(const std::string& input, const std::string& output);
    // The failure is printed at once, above the bar, so it is never lost in the redraws.
    void failed(const std::string& input, const HMKError& error);
    // Warnings about one file, printed above the bar like failures (the file still counts
    // when it succeeds or fails afterwards).
    void warned(const std::string& input, const HMKWarnings& warnings);
    // Ends the bar's line.
    void finish();

    std::size_t failures() const;
    // The exit code the failures call for: kExitUsage when any was a command-line mistake.
    int exitCode() const;

private:
    void drawBarLocked(const std::string& label);
    // Prints a line above the bar (or as its own line without a bar).
    void printAboveBarLocked(const std::string& line, const std::string& label);

    mutable std::mutex mutex_;
    std::size_t total_;
    std::size_t done_ = 0;
    std::size_t failures_ = 0;
    int exitCode_ = kExitSuccess;
    std::FILE* stream_;
    bool drawBar_;
};
