#include "cli/outcome.h"

#include <iostream>

HMKError toolError(std::string message) {
    HMKError error;
    error.domain = "hemlark";
    error.code = kToolErrorCode;
    error.recoverySuggestion = std::move(message);
    return error;
}

void printError(const HMKError& error, std::string_view file) {
    std::cerr << "hemlark: ";
    if (!file.empty()) {
        std::cerr << file << ": ";
    }
    std::cerr << "error " << error.code << ": " << error.message() << '\n';
}
