#include "cli/outcome.h"

#include <cstdio>

#include "cli/diagnostics.h"

HMKError toolError(std::string message) {
    HMKError error;
    error.domain = "hemlark";
    error.code = kToolErrorCode;
    error.recoverySuggestion = std::move(message);
    return error;
}

void printError(const HMKError& error, std::string_view file) {
    std::string line = "hemlark: ";
    if (!file.empty()) {
        line.append(file).append(": ");
    }
    line += "error " + std::to_string(error.code) + ": " + error.message() + "\n";
    std::fputs(line.c_str(), messageStream());
}
