// The design code logs diagnostic lines (an unsupported export target, a missing palette).
// The tool keeps standard error for its own messages and progress, and sends those lines to a
// log file or nowhere; the one line a user must hear about, a colour that could not be matched
// because its palette is not installed, is also counted so it can become a warning.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

// Appends diagnostic lines to logFile, or discards them when logFile is empty. Returns false
// when the log cannot be opened.
bool divertDiagnostics(const std::string& logFile);

// How many colours the calling thread has failed to match into a palette so far (each
// conversion runs on one thread, so a difference before and after counts that conversion's).
std::size_t unmatchedColorCount();

// While one lives, failed matches on its thread are not counted: a design of placeholder
// threads (a DST without side file) has no palette to match pasted or added threads into, so
// they keep their colours and nothing is lost.
class HMKUncountedColorMatches {
public:
    explicit HMKUncountedColorMatches(bool uncounted);
    ~HMKUncountedColorMatches();
    HMKUncountedColorMatches(const HMKUncountedColorMatches&) = delete;
    HMKUncountedColorMatches& operator=(const HMKUncountedColorMatches&) = delete;

private:
    bool wasUncounted_;
};

// Where the tool's own messages go.
std::FILE* messageStream();
