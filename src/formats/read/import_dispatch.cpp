// The single entry that fills a design from an embroidery file: the reader is chosen by the
// lower-cased extension alone, then the thread side file is overlaid and the result checked.
#include <algorithm>
#include <array>
#include <cctype>
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
    threads().clear();
    stitches().clear();

    const std::string extension = lowercaseExtension(url);
    const auto entry = std::find_if(kReaders.begin(), kReaders.end(), [&](const auto& entry) {
        return entry.extension == extension;
    });
    // The content is never examined to choose a reader, whatever the message says.
    if (entry == kReaders.end()) {
        return fail(error, 10, "Unknown file format (UTI).");
    }
    const bool read = (this->*(entry->reader))(url, error);
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
