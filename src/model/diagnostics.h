// Diagnostic lines of the design code (an unsupported export target, a missing palette): a
// log for developers, not messages for users. They go to standard error unless the program
// installs a sink of its own (the command-line tool sends them to a log file or nowhere).
#pragma once

#include <functional>
#include <string_view>

void logDiagnostic(std::string_view line);

// Replaces where diagnostic lines go; an empty function restores standard error.
void setDiagnosticSink(std::function<void(std::string_view)> sink);
