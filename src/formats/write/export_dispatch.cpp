// The single entry for writing a design to a file: refuses empty designs, names the design
// after the target, picks the writer by the target's extension, normalises the jumps for
// that format and keeps the thread side file in line with what was written.
#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

#include "formats/file_io.h"
#include "formats/format_extensions.h"
#include "model/design.h"
#include "model/diagnostics.h"
#include "model/format_text.h"

namespace {

using HMKWriter = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);

struct HMKExportFormat {
    std::string_view extension;  // lower-case, matched exactly
    std::string_view tag;        // passed to optimizeJumpsFor
    HMKWriter writer;
};

// Searched in this order; the first match decides.
constexpr std::array<HMKExportFormat, 6> kExportFormats{{
    {"jef", "JEF", &HMKDesign::exportJefDesignToURL},
    {"pes", "PES", &HMKDesign::exportPesDesignToURL},
    {"pec", "PEC", &HMKDesign::exportPecDesignToURL},
    {"exp", "EXP", &HMKDesign::exportExpDesignToURL},
    {"dst", "DST", &HMKDesign::exportDstDesignToURL},
    {"pcs", "PCS", &HMKDesign::exportPcsDesignToURL},
}};

std::string describe(const HMKError* error) {
    if (!error) {
        return "";
    }
    return error->domain + " " + std::to_string(error->code) + ": " + error->message();
}

}  // namespace

std::vector<std::string> exportableExtensions() {
    std::vector<std::string> extensions;
    for (const HMKExportFormat& format : kExportFormats) {
        extensions.emplace_back(format.extension);
    }
    return extensions;
}

bool HMKDesign::exportDesignToURL(const std::filesystem::path& url, HMKError* error) {
    if (threads_.empty()) {
        return fail(error, 13, "Unable to export embroidery file (no threads found).");
    }
    if (stitches_.empty()) {
        return fail(error, 14, "Unable to export embroidery file (no stitches found).");
    }
    designName_ = url.filename().string();
    const std::string extension = lowercaseExtension(url);

    auto format = std::find_if(kExportFormats.begin(), kExportFormats.end(),
                               [&](const HMKExportFormat& f) { return f.extension == extension; });
    if (format == kExportFormats.end()) {
        fail(error, 50, "Unsupported file format (UTI) for export.");
        // Logged whether or not the caller asked for the error.
        logDiagnostic(formatText("HMKDesign:exportDesignToURL:%@\n    Error: %@, fileExtension: %@",
                                 {url.string(), describe(error), extension}));
        return false;
    }
    const bool optimized = optimizeJumpsFor(format->tag);
    // The writer always gets a place for its error; the caller gets it only on failure.
    HMKError writerError;
    const bool writerSucceeded = (this->*format->writer)(url, &writerError);
    if (!writerSucceeded && error) {
        *error = writerError;
    }
    if (!optimized || !writerSucceeded) {
        return false;
    }
    if (useThreadFile_) {
        exportThreadsForDesign(designLocation_);
    } else {
        deleteThreadsFromDesign(designLocation_);
    }
    return true;
}
