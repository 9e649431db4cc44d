#include "model/diagnostics.h"

#include <cstdio>
#include <mutex>
#include <string>

namespace {

std::mutex sinkMutex;
std::function<void(std::string_view)> installedSink;

}  // namespace

void logDiagnostic(std::string_view line) {
    // Lines may come from several conversion threads at once; keep them whole.
    std::lock_guard lock(sinkMutex);
    if (installedSink) {
        installedSink(line);
        return;
    }
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

void setDiagnosticSink(std::function<void(std::string_view)> sink) {
    std::lock_guard lock(sinkMutex);
    installedSink = std::move(sink);
}
