// How the hemlark commands end: the exit codes, the tool's own errors (for the few checks the
// design operations leave to their callers), warnings, and the one way all of them are printed.
// Three kinds of failure are kept apart in what the user reads:
//   design errors and the tool's checks   "hemlark: [FILE: ]error N: message"  (exit 1)
//   operating-system errors               "hemlark: PATH: reason"              (exit 1)
//   command-line mistakes                 "hemlark: [FILE: ]message"           (exit 2)
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/error.h"

inline constexpr int kExitSuccess = 0;
// A design operation, a file access or one of the tool's own checks failed.
inline constexpr int kExitFailure = 1;
// The command line itself was wrong.
inline constexpr int kExitUsage = 2;

// Design errors use codes from 10 up; the tool's own checks use this one.
inline constexpr int kToolErrorCode = 1;

// A check of the tool's own ("error 1").
HMKError toolError(std::string message);
// A command-line mistake that shows only once a design is read (a thread index beyond the
// design's threads); it ends the command with kExitUsage like any other.
HMKError usageError(std::string message);

bool isSystemError(const HMKError& error);
bool isUsageError(const HMKError& error);
int exitCodeFor(const HMKError& error);

// The line printError prints, newline included. The file names the design the error is
// about; operating-system errors name their own path and leave it out.
std::string errorLine(const HMKError& error, std::string_view file = {});
void printError(const HMKError& error, std::string_view file = {});

// Things the user should know although the command succeeded (a file cut short, an edit that
// had nothing to work on), one sentence each.
using HMKWarnings = std::vector<std::string>;

// "hemlark: FILE: warning: text", newline included.
std::string warningLine(std::string_view file, std::string_view text);
void printWarnings(std::string_view file, const HMKWarnings& warnings);
