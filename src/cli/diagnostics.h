// The design code writes its diagnostic lines (export summaries, missing palettes) to the
// process's standard error, as a log. The tool keeps the terminal's standard error for its
// own messages and progress, and sends those lines to a log file or nowhere.
#pragma once

#include <cstdio>
#include <string>

// Moves the process's standard error to logFile (appended; /dev/null when empty). Returns
// false when the log cannot be opened; standard error then stays as it was.
bool divertDiagnostics(const std::string& logFile);

// Where the tool's own messages go: the original standard error.
std::FILE* messageStream();
