// The single entry for writing a design to a file: refuses empty designs, names the design
// after the target, picks the format by the target's extension, normalises the jumps for
// that format, checks what every writer relies on, lets the format's encoder build the file,
// writes it atomically once, makes the design match what was written and keeps the thread
// side file in line with it.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "formats/file_io.h"
#include "formats/format_extensions.h"
#include "formats/write/writers.h"
#include "model/design.h"
#include "model/diagnostics.h"
#include "model/format_text.h"

namespace {

using HMKEncoder = std::optional<HMKEncodedDesign> (*)(HMKDesign&, HMKError*);

struct HMKExportFormat {
    std::string_view extension;  // lower-case, matched exactly
    std::string_view tag;        // passed to optimizeJumpsFor, the design's type once written
    HMKEncoder encode;
    std::int32_t version;  // the design's version once written
    // JEF and PCS files name the hoop their check chose, which stays in the design; the
    // other formats hold none.
    bool keepsHoop;
};

// Searched in this order; the first match decides.
constexpr std::array<HMKExportFormat, 6> kExportFormats{{
    {"jef", "JEF", &encodeJefDesign, 10, true},
    {"pes", "PES", &encodePesDesign, 10, false},
    {"pec", "PEC", &encodePecDesign, 10, false},
    {"exp", "EXP", &encodeExpDesign, 10, false},
    {"dst", "DST", &encodeDstDesign, 10, false},
    {"pcs", "PCS", &encodePcsDesign, 20, true},
}};

const HMKExportFormat* formatOfExtension(std::string_view extension) {
    auto format = std::find_if(kExportFormats.begin(), kExportFormats.end(),
                               [&](const HMKExportFormat& f) { return f.extension == extension; });
    return format == kExportFormats.end() ? nullptr : &*format;
}

std::string describe(const HMKError* error) {
    if (!error) {
        return "";
    }
    return error->domain + " " + std::to_string(error->code) + ": " + error->message();
}

bool refuseEmpty(const HMKDesign& design, HMKError* error) {
    if (design.threads().empty()) {
        return fail(error, 13, "Unable to export embroidery file (no threads found).");
    }
    if (design.stitches().empty()) {
        return fail(error, 14, "Unable to export embroidery file (no stitches found).");
    }
    return true;
}

// What every encoder relies on: stitches to write, which normalising may have taken away
// (a design of jumps only loses them all), and one thread for every colour block, which
// every format's colour table and colour changes are built from.
std::optional<HMKEncodedDesign> checkedEncoding(HMKDesign& design, const HMKExportFormat& format,
                                                HMKError* error) {
    if (!refuseEmpty(design, error)) {
        return std::nullopt;
    }
    const auto colorChanges = std::count_if(design.stitches().begin(), design.stitches().end(),
                                            [](const HMKStitch& s) { return s.isColorChange; });
    if (static_cast<std::size_t>(colorChanges) + 1 != design.threads().size()) {
        return refuse(error, 16,
                      "Unable to export embroidery file (the threads do not match the colour "
                      "blocks).");
    }
    return format.encode(design, error);
}

// A design the format cannot hold once its long moves are cut is not encoded at all: nothing
// is cut, and no encoder sees moves beyond the format's reach.
std::optional<HMKEncodedDesign> normalisedEncoding(HMKDesign& design, const HMKExportFormat& format,
                                                   HMKError* error) {
    if (!design.optimizeJumpsFor(format.tag)) {
        return refuse(error, 15,
                      "Unable to export embroidery file (cutting its long moves for the format "
                      "would make too many stitches).");
    }
    return checkedEncoding(design, format, error);
}

// Writes the encoded file atomically and, only once it is written, gives the design the type,
// version, hoop and threads the file holds.
bool writeEncoded(HMKDesign& design, const HMKExportFormat& format,
                  std::optional<HMKEncodedDesign> encoded, const std::filesystem::path& url,
                  HMKError* error) {
    if (!encoded || !writeFileAtomically(url, encoded->bytes, error)) {
        return false;
    }
    if (encoded->threadsAsWritten) {
        encoded->threadsAsWritten(design.threads());
    }
    design.setDesignType(std::string(format.tag));
    design.setDesignVersion(format.version);
    if (!format.keepsHoop) {
        design.setDesignHoop(std::nullopt);
    }
    return true;
}

// One format on its own, without the dispatcher's naming, normalising and side file.
bool writeFormatAlone(HMKDesign& design, std::string_view extension,
                      const std::filesystem::path& url, HMKError* error) {
    const HMKExportFormat& format = *formatOfExtension(extension);
    return writeEncoded(design, format, checkedEncoding(design, format, error), url, error);
}

}  // namespace

std::vector<std::string> exportableExtensions() {
    std::vector<std::string> extensions;
    for (const HMKExportFormat& format : kExportFormats) {
        extensions.emplace_back(format.extension);
    }
    return extensions;
}

std::optional<HMKEncodedDesign> encodeDesignForExtension(HMKDesign& design,
                                                         std::string_view extension,
                                                         HMKError* error) {
    const HMKExportFormat* format = formatOfExtension(extension);
    if (!format) {
        return refuse(error, 50, "Unsupported file format (UTI) for export.");
    }
    return normalisedEncoding(design, *format, error);
}

bool HMKDesign::exportDesignToURL(const std::filesystem::path& url, HMKError* error) {
    if (!refuseEmpty(*this, error)) {
        return false;
    }
    designName_ = url.filename().string();
    const std::string extension = lowercaseExtension(url);
    const HMKExportFormat* format = formatOfExtension(extension);
    if (!format) {
        fail(error, 50, "Unsupported file format (UTI) for export.");
        // Logged whether or not the caller asked for the error.
        logDiagnostic(formatText("HMKDesign:exportDesignToURL:%@\n    Error: %@, fileExtension: %@",
                                 {url.string(), describe(error), extension}));
        return false;
    }
    // The writer always gets a place for its error; the caller gets it only on failure.
    HMKError writerError;
    if (!writeEncoded(*this, *format, normalisedEncoding(*this, *format, &writerError), url,
                      &writerError)) {
        if (error) {
            *error = writerError;
        }
        return false;
    }
    if (useThreadFile_) {
        exportThreadsForDesign(designLocation_);
    } else {
        deleteThreadsFromDesign(designLocation_);
    }
    return true;
}

bool HMKDesign::exportDstDesignToURL(const std::filesystem::path& url, HMKError* error) {
    return writeFormatAlone(*this, "dst", url, error);
}
bool HMKDesign::exportPesDesignToURL(const std::filesystem::path& url, HMKError* error) {
    return writeFormatAlone(*this, "pes", url, error);
}
bool HMKDesign::exportPecDesignToURL(const std::filesystem::path& url, HMKError* error) {
    return writeFormatAlone(*this, "pec", url, error);
}
bool HMKDesign::exportJefDesignToURL(const std::filesystem::path& url, HMKError* error) {
    return writeFormatAlone(*this, "jef", url, error);
}
bool HMKDesign::exportExpDesignToURL(const std::filesystem::path& url, HMKError* error) {
    return writeFormatAlone(*this, "exp", url, error);
}
bool HMKDesign::exportPcsDesignToURL(const std::filesystem::path& url, HMKError* error) {
    return writeFormatAlone(*this, "pcs", url, error);
}
