#include "cli/conversion.h"

#include <algorithm>
#include <cctype>

#include "cli/design_json.h"
#include "cli/diagnostics.h"
#include "cli/input_files.h"
#include "formats/file_io.h"
#include "formats/read/readers.h"

bool isJsonDumpPath(const std::filesystem::path& output) {
    return lowercaseExtension(output) == "json";
}

namespace {

// An export of a design without side file removes the one beside the output, unless another
// design file of that name shares it.
void warnAboutKeptSideFile(const std::filesystem::path& output, HMKWarnings& warnings) {
    const std::filesystem::path sideFile = threadSideFilePath(output);
    std::error_code failure;
    if (std::filesystem::exists(sideFile, failure)) {
        warnings.push_back(sideFile.string() +
                           " was kept for the other design files of that name; this file will "
                           "take its threads from it as well when their number agrees");
    }
}

bool convertOrFail(const std::filesystem::path& input, const std::filesystem::path& output,
                   const HMKEditList& edits, HMKWarnings& warnings, HMKError* error) {
    HMKDesign design;
    if (!readDesignFile(input, design, warnings, error) ||
        !applyEdits(design, edits, warnings, error)) {
        return false;
    }
    design.setDesignLocation(output);
    if (!isJsonDumpPath(output)) {
        if (!design.exportDesignToURL(output, error)) {
            return false;
        }
        if (!design.useThreadFile()) {
            warnAboutKeptSideFile(output, warnings);
        }
        return true;
    }
    const std::string text = jsonText(designJson(design, true)) + "\n";
    return writeFileAtomically(
        output, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()), error);
}

}  // namespace

bool convertDesignFile(const std::filesystem::path& input, const std::filesystem::path& output,
                       const HMKEditList& edits, HMKWarnings& warnings, HMKError* error) {
    const std::size_t unmatchedBefore = unmatchedColorCount();
    HMKError failure;
    const bool converted = convertOrFail(input, output, edits, warnings, &failure);
    if (const std::size_t unmatched = unmatchedColorCount() - unmatchedBefore; unmatched > 0) {
        warnings.push_back(std::to_string(unmatched) +
                           " thread colours could not be matched because their palette is not "
                           "installed; they keep their former colours (hemlark palettes lists "
                           "the installed palettes)");
    }
    if (converted) {
        return true;
    }
    // The export reports a failed jump normalisation without an error object.
    if (failure.code == 0 && failure.message().empty()) {
        failure = toolError("Converting to " + output.string() + " failed.");
    }
    if (error) {
        *error = std::move(failure);
    }
    return false;
}
