#include "cli/conversion.h"

#include <algorithm>
#include <cctype>

#include "cli/design_json.h"
#include "cli/outcome.h"
#include "formats/file_io.h"

bool isJsonDumpPath(const std::filesystem::path& output) {
    std::string extension = output.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".json";
}

namespace {

bool convertOrFail(const std::filesystem::path& input, const std::filesystem::path& output,
                   const HMKEditList& edits, HMKError* error) {
    HMKDesign design;
    if (!design.importDesignFromURL(input, error) || !applyEdits(design, edits, error)) {
        return false;
    }
    design.setDesignLocation(output);
    if (!isJsonDumpPath(output)) {
        return design.exportDesignToURL(output, error);
    }
    const std::string text = designJson(design, true).dump() + "\n";
    return writeFileAtomically(
        output, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()), error);
}

}  // namespace

bool convertDesignFile(const std::filesystem::path& input, const std::filesystem::path& output,
                       const HMKEditList& edits, HMKError* error) {
    HMKError failure;
    if (convertOrFail(input, output, edits, &failure)) {
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
