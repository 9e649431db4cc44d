#include "cli/diagnostics.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

namespace {

std::FILE* stream = stderr;

}  // namespace

bool divertDiagnostics(const std::string& logFile) {
    const int log = open(logFile.empty() ? "/dev/null" : logFile.c_str(),
                         O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (log < 0) {
        return false;
    }
    std::cerr.flush();
    std::fflush(stderr);
    const int terminal = dup(STDERR_FILENO);
    std::FILE* messages = terminal < 0 ? nullptr : fdopen(terminal, "w");
    if (!messages) {
        close(log);
        return false;
    }
    // Unbuffered like standard error, so messages and progress appear at once.
    std::setvbuf(messages, nullptr, _IONBF, 0);
    dup2(log, STDERR_FILENO);
    close(log);
    stream = messages;
    return true;
}

std::FILE* messageStream() {
    return stream;
}
