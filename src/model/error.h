// The one error value of the design model. Fallible operations return bool and fill an
// HMKError only when the caller passed a place for it; makeError is the single place that
// gives an error its domain and its localised recovery text.
#pragma once

#include <string>
#include <string_view>

inline constexpr std::string_view kHMKDesignErrorDomain = "org.hemlark.Hemlark.ErrorDomain";
inline constexpr std::string_view kHMKPosixErrorDomain = "POSIX";

struct HMKError {
    std::string domain;
    int code = 0;
    // The text shown to the user (the recovery suggestion of the error).
    std::string recoverySuggestion;
    // Used instead of the recovery suggestion by the few errors that carry a failure reason.
    std::string failureReason;

    // Whichever text the error carries, for presenting it.
    const std::string& message() const {
        return recoverySuggestion.empty() ? failureReason : recoverySuggestion;
    }
};

// A design error: the text is looked up as "ERROR_<code>" in the "HMKDesign" string table
// with defaultText as fallback (the same key may carry different defaults at different places).
HMKError makeError(int code, std::string_view defaultText);

// Fills *error (when given) with makeError(code, defaultText) and returns false, so a
// failing operation can end with `return fail(error, 111, "...");`.
bool fail(HMKError* error, int code, std::string_view defaultText);

// A file-system error from errno, passed on unchanged by readers and writers.
HMKError makePosixError(int errorNumber, std::string_view context);
