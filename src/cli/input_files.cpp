#include "cli/input_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "formats/dst_records.h"
#include "formats/file_io.h"
#include "formats/format_extensions.h"

namespace {

// A DST header holds "ST:" and the number of records that follow it, the end record included
// (files from some machines count one more). The reader never needs the number; the tool only
// compares it with the records the file holds.
constexpr std::string_view kDstRecordCountTag = "ST:";
constexpr std::size_t kDstCountTolerance = 1;

std::optional<std::size_t> dstDeclaredRecords(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string header(kDstHeaderSize, '\0');
    file.read(header.data(), static_cast<std::streamsize>(header.size()));
    header.resize(static_cast<std::size_t>(file.gcount()));
    std::size_t position = header.find(kDstRecordCountTag);
    if (position == std::string::npos) {
        return std::nullopt;
    }
    position = header.find_first_not_of(' ', position + kDstRecordCountTag.size());
    std::size_t count = 0;
    const char* begin = header.data() + std::min(position, header.size());
    if (std::from_chars(begin, header.data() + header.size(), count).ec != std::errc()) {
        return std::nullopt;
    }
    return count;
}

std::optional<std::string> dstShortfallWarning(const std::filesystem::path& path) {
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    const std::optional<std::size_t> declared = dstDeclaredRecords(path);
    if (failure || size < kDstHeaderSize || !declared) {
        return std::nullopt;
    }
    const std::size_t present = (size - kDstHeaderSize) / kDstRecordSize;
    if (*declared <= present + kDstCountTolerance) {
        return std::nullopt;
    }
    return "the header announces " + std::to_string(*declared) + " stitch records, the file " +
           "holds " + std::to_string(present) + "; the design is cut short and was read as far " +
           "as it goes";
}

std::optional<std::pair<dev_t, ino_t>> identityOf(const std::filesystem::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return std::nullopt;
    }
    return std::pair(info.st_dev, info.st_ino);
}

}  // namespace

bool readDesignFile(const std::filesystem::path& path, HMKDesign& design, HMKWarnings& warnings,
                    HMKError* error) {
    if (!checkReadableFile(path, error)) {
        return false;
    }
    const std::string extension = lowercaseExtension(path);
    if (std::ranges::count(importableExtensions(), extension) == 0) {
        // The design code's own text for this code names the platform's type identifiers.
        if (error) {
            *error = makeError(10, "");
            error->recoverySuggestion =
                "Unknown file format: " +
                (extension.empty() ? std::string("the name has no extension")
                                   : "." + extension + " is not a design format") +
                ".";
        }
        return false;
    }
    if (!design.importDesignFromURL(path, error)) {
        return false;
    }
    if (extension == "dst") {
        if (auto warning = dstShortfallWarning(path)) {
            warnings.push_back(*warning);
        }
    }
    return true;
}

std::optional<std::string> implausibleSizeWarning(const HMKDesign& design) {
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        if (design.designFitsInHoop(hoop)) {
            return std::nullopt;
        }
    }
    char size[96];
    std::snprintf(size, sizeof size, "%.1f mm x %.1f mm", (design.xMax() - design.xMin()) / 10.0,
                  (design.yMax() - design.yMin()) / 10.0);
    return std::string("the design measures ") + size +
           ", more than any hoop holds; the file may not be a design at all";
}

void HMKInputFiles::add(const std::filesystem::path& input) {
    if (auto identity = identityOf(input)) {
        identities_.insert(*identity);
    }
}

bool HMKInputFiles::mayWrite(const std::filesystem::path& output,
                             const std::filesystem::path& input, bool inPlace,
                             HMKError* error) const {
    const auto identity = identityOf(output);
    if (!identity || !identities_.contains(*identity)) {
        return true;
    }
    const bool ownInput = identity == identityOf(input);
    if (ownInput && inPlace) {
        return true;
    }
    if (error) {
        *error = usageError(
            ownInput ? output.string() + " is the input itself; give --in-place to rewrite it"
                     : output.string() + " is one of the inputs and is not replaced");
    }
    return false;
}
