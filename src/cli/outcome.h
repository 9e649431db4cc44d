// How the hemlark commands end: the exit codes, the tool's own errors (for the few checks the
// design operations leave to their callers) and the one way failures are printed.
#pragma once

#include <string>
#include <string_view>

#include "model/error.h"

inline constexpr int kExitSuccess = 0;
// A design operation (or one of the tool's own checks) failed.
inline constexpr int kExitFailure = 1;
// The command line itself was wrong.
inline constexpr int kExitUsage = 2;

// Design errors use codes from 10 up; the tool's own checks use this one.
inline constexpr int kToolErrorCode = 1;

HMKError toolError(std::string message);

// "hemlark: error N: message" on standard error; with a file, "hemlark: FILE: error N: ...".
void printError(const HMKError& error, std::string_view file = {});
