// The single entry for writing a design to a file: refuses empty designs, names the design
// after the target, picks the writer by the target's extension, normalises the jumps for
// that format and keeps the thread side file in line with what was written.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <string>
#include <string_view>

#include "model/design.h"

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

std::string lowerCasedExtension(const std::filesystem::path& url) {
    std::string extension = url.extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);  // the dot
    }
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

std::string describe(const HMKError* error) {
    if (!error) {
        return "";
    }
    return error->domain + " " + std::to_string(error->code) + ": " + error->message();
}

}  // namespace

bool HMKDesign::exportDesignToURL(const std::filesystem::path& url, HMKError* error) {
    if (threads_.empty()) {
        return fail(error, 13, "Unable to export embroidery file (no threads found).");
    }
    if (stitches_.empty()) {
        return fail(error, 14, "Unable to export embroidery file (no stitches found).");
    }
    designName_ = url.filename().string();
    const std::string extension = lowerCasedExtension(url);

    bool written = false;
    const HMKError* produced = nullptr;
    auto format = std::find_if(kExportFormats.begin(), kExportFormats.end(),
                               [&](const HMKExportFormat& f) { return f.extension == extension; });
    if (format == kExportFormats.end()) {
        fail(error, 50, "Unsupported file format (UTI) for export.");
        produced = error;
    } else {
        bool optimized = optimizeJumpsFor(format->tag);
        // The writer always gets a place for its error; the caller gets it only on failure.
        HMKError writerError;
        bool writerSucceeded = (this->*format->writer)(url, &writerError);
        if (!writerSucceeded && error) {
            *error = writerError;
            produced = error;
        }
        written = optimized && writerSucceeded;
        if (written) {
            if (useThreadFile_) {
                exportThreadsForDesign(designLocation_);
            } else {
                deleteThreadsFromDesign(designLocation_);
            }
        }
    }
    std::fprintf(stderr, "HMKDesign:exportDesignToURL:%s\n    Error: %s, fileExtension: %s\n",
                 url.string().c_str(), describe(produced).c_str(), extension.c_str());
    return written;
}
