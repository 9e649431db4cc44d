#include "cli/diagnostics.h"

#include <memory>

#include "model/diagnostics.h"

bool divertDiagnostics(const std::string& logFile) {
    if (logFile.empty()) {
        setDiagnosticSink([](std::string_view) {});
        return true;
    }
    std::shared_ptr<std::FILE> log(std::fopen(logFile.c_str(), "a"), [](std::FILE* file) {
        if (file)
            std::fclose(file);
    });
    if (!log) {
        return false;
    }
    setDiagnosticSink([log](std::string_view line) {
        std::fprintf(log.get(), "%.*s\n", static_cast<int>(line.size()), line.data());
        std::fflush(log.get());
    });
    return true;
}

std::FILE* messageStream() {
    return stderr;
}
