#include "model/error.h"

#include <cstring>

#include "model/strings.h"

HMKError makeError(int code, std::string_view defaultText) {
    HMKError error;
    error.domain = std::string(kHMKDesignErrorDomain);
    error.code = code;
    error.recoverySuggestion =
        localizedString(kDesignStringTable, "ERROR_" + std::to_string(code), defaultText);
    return error;
}

bool fail(HMKError* error, int code, std::string_view defaultText) {
    if (error) {
        *error = makeError(code, defaultText);
    }
    return false;
}

HMKError makePosixError(int errorNumber, std::string_view context) {
    HMKError error;
    error.domain = std::string(kHMKPosixErrorDomain);
    error.code = errorNumber;
    error.recoverySuggestion = std::string(context);
    if (!context.empty()) {
        error.recoverySuggestion += ": ";
    }
    error.recoverySuggestion += std::strerror(errorNumber);
    return error;
}
