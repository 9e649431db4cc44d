// The single entry that fills a design from an embroidery file: the reader is chosen by the
// lower-cased extension and, when that reader refuses the file, by the signature the file
// opens with; then the thread side file is overlaid and the result checked.
#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>
#include <string_view>

#include "formats/file_io.h"
#include "formats/format_extensions.h"
#include "formats/read/readers.h"
#include "model/design.h"

namespace {

using ReaderMethod = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);

struct ReaderEntry {
    std::string_view extension;
    ReaderMethod reader;
};

// Compared in this order; adding a format is one line here.
constexpr std::array<ReaderEntry, 13> kReaders = {{
    {"jef", &HMKDesign::importJefDesignFromURL},
    {"jef+", &HMKDesign::importJefDesignFromURL},
    {"jpx", &HMKDesign::importJpxDesignFromURL},
    {"pes", &HMKDesign::importPesDesignFromURL},
    {"pec", &HMKDesign::importPecDesignFromURL},
    {"sew", &HMKDesign::importSewDesignFromURL},
    {"exp", &HMKDesign::importExpDesignFromURL},
    {"dst", &HMKDesign::importDstDesignFromURL},
    {"vp3", &HMKDesign::importVp3DesignFromURL},
    {"ksm", &HMKDesign::importKsmDesignFromURL},
    {"pcs", &HMKDesign::importPcxDesignFromURL},
    {"pcd", &HMKDesign::importPcxDesignFromURL},
    {"pcq", &HMKDesign::importPcxDesignFromURL},
}};

struct SignatureEntry {
    std::string_view signature;
    ReaderMethod reader;
};

// The opening bytes of the formats that have them (a DST header begins with its label tag, a
// PCS-family file with 0x32 and its type). JEF, JPX, SEW, EXP and KSM files open with plain
// numbers and have none.
constexpr std::array<SignatureEntry, 8> kSignatures = {{
    {"#PES", &HMKDesign::importPesDesignFromURL},
    {"#PEC", &HMKDesign::importPecDesignFromURL},
    {"%vsm%", &HMKDesign::importVp3DesignFromURL},
    {"LA:", &HMKDesign::importDstDesignFromURL},
    {std::string_view("\x32\x00", 2), &HMKDesign::importPcxDesignFromURL},
    {std::string_view("\x32\x01", 2), &HMKDesign::importPcxDesignFromURL},
    {std::string_view("\x32\x02", 2), &HMKDesign::importPcxDesignFromURL},
    {std::string_view("\x32\x03", 2), &HMKDesign::importPcxDesignFromURL},
}};

// The reader whose signature the file opens with, if any.
std::optional<ReaderMethod> readerForContent(const std::filesystem::path& url) {
    const auto bytes = readWholeFile(url);
    if (!bytes) {
        return std::nullopt;
    }
    const std::string_view opening(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    for (const auto& entry : kSignatures) {
        if (opening.starts_with(entry.signature)) {
            return entry.reader;
        }
    }
    return std::nullopt;
}

}  // namespace

std::vector<std::string> importableExtensions() {
    std::vector<std::string> extensions;
    for (const ReaderEntry& entry : kReaders) {
        extensions.emplace_back(entry.extension);
    }
    return extensions;
}

bool HMKDesign::importDesignFromURL(const std::filesystem::path& url, HMKError* error) {
    setDesignName(url.filename().string());
    setDesignLocation(url);
    setExtensionMismatch(false);
    threads().clear();
    stitches().clear();

    const std::string extension = lowercaseExtension(url);
    const auto entry = std::find_if(kReaders.begin(), kReaders.end(), [&](const auto& entry) {
        return entry.extension == extension;
    });
    // An unknown extension is refused without looking at the content.
    if (entry == kReaders.end()) {
        return fail(error, 10, "Unknown file format (UTI).");
    }
    // Cheap: the lists are empty. A second reader starts from this state too.
    const HMKDesign unread = *this;
    bool read = (this->*(entry->reader))(url, error);
    // Files travel under the wrong extension (a PES file saved as .pec). When the extension's
    // reader refuses one, the reader its signature names gets a try; if that one refuses it
    // too, the first reader's outcome stands.
    if (!read) {
        const auto contentReader = readerForContent(url);
        if (contentReader && *contentReader != entry->reader) {
            HMKDesign byContent = unread;
            if ((byContent.*(*contentReader))(url, nullptr)) {
                *this = std::move(byContent);
                setExtensionMismatch(true);
                read = true;
                if (error) {
                    *error = HMKError();
                }
            }
        }
    }
    // The side file is applied whatever the reader's outcome.
    setUseThreadFile(importThreadsForDesign(designLocation()));
    if (!read) {
        return false;
    }
    if (stitches().empty()) {
        return fail(error, 11, "File holds no stitches.");
    }
    if (threads().empty()) {
        return fail(error, 12, "File holds no threads.");
    }
    setDisplayRange(HMKRange{0, stitches().size()});
    return true;
}
