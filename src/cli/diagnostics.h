// The design code logs diagnostic lines (an unsupported export target, a missing palette).
// The tool keeps standard error for its own messages and progress, and sends those lines to a
// log file or nowhere.
#pragma once

#include <cstdio>
#include <string>

// Appends diagnostic lines to logFile, or discards them when logFile is empty. Returns false
// when the log cannot be opened.
bool divertDiagnostics(const std::string& logFile);

// Where the tool's own messages go.
std::FILE* messageStream();
