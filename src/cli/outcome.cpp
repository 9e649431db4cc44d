#include "cli/outcome.h"

#include <cstdio>

#include "cli/diagnostics.h"

namespace {

constexpr std::string_view kToolErrorDomain = "hemlark";
constexpr std::string_view kUsageErrorDomain = "hemlark usage";

HMKError errorIn(std::string_view domain, int code, std::string message) {
    HMKError error;
    error.domain = std::string(domain);
    error.code = code;
    error.recoverySuggestion = std::move(message);
    return error;
}

}  // namespace

HMKError toolError(std::string message) {
    return errorIn(kToolErrorDomain, kToolErrorCode, std::move(message));
}

HMKError usageError(std::string message) {
    return errorIn(kUsageErrorDomain, kExitUsage, std::move(message));
}

bool isSystemError(const HMKError& error) {
    return error.domain == kHMKPosixErrorDomain;
}

bool isUsageError(const HMKError& error) {
    return error.domain == kUsageErrorDomain;
}

int exitCodeFor(const HMKError& error) {
    return isUsageError(error) ? kExitUsage : kExitFailure;
}

std::string errorLine(const HMKError& error, std::string_view file) {
    std::string line = "hemlark: ";
    if (!file.empty() && !isSystemError(error)) {
        line.append(file).append(": ");
    }
    if (!isSystemError(error) && !isUsageError(error)) {
        line += "error " + std::to_string(error.code) + ": ";
    }
    return line + error.message() + "\n";
}

void printError(const HMKError& error, std::string_view file) {
    std::fputs(errorLine(error, file).c_str(), messageStream());
}

std::string warningLine(std::string_view file, std::string_view text) {
    std::string line = "hemlark: ";
    if (!file.empty()) {
        line.append(file).append(": ");
    }
    return line.append("warning: ").append(text).append("\n");
}

void printWarnings(std::string_view file, const HMKWarnings& warnings) {
    for (const std::string& warning : warnings) {
        std::fputs(warningLine(file, warning).c_str(), messageStream());
    }
}
