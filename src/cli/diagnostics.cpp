#include "cli/diagnostics.h"

#include <memory>

#include "model/diagnostics.h"
#include "model/error.h"

namespace {

thread_local std::size_t unmatchedColors = 0;
thread_local bool matchesUncounted = false;

// The line a failed colour match logs: the text of error 140, looked up the same way.
bool reportsMissingPalette(std::string_view line) {
    static const std::string text = makeError(140, "color palette not found").message();
    return line == text;
}

}  // namespace

bool divertDiagnostics(const std::string& logFile) {
    std::shared_ptr<std::FILE> log;
    if (!logFile.empty()) {
        log.reset(std::fopen(logFile.c_str(), "a"), [](std::FILE* file) {
            if (file)
                std::fclose(file);
        });
        if (!log) {
            return false;
        }
    }
    setDiagnosticSink([log](std::string_view line) {
        if (!matchesUncounted && reportsMissingPalette(line)) {
            ++unmatchedColors;
        }
        if (log) {
            std::fprintf(log.get(), "%.*s\n", static_cast<int>(line.size()), line.data());
            std::fflush(log.get());
        }
    });
    return true;
}

std::size_t unmatchedColorCount() {
    return unmatchedColors;
}

HMKUncountedColorMatches::HMKUncountedColorMatches(bool uncounted)
    : wasUncounted_(matchesUncounted) {
    matchesUncounted = matchesUncounted || uncounted;
}

HMKUncountedColorMatches::~HMKUncountedColorMatches() {
    matchesUncounted = wasUncounted_;
}

std::FILE* messageStream() {
    return stderr;
}
