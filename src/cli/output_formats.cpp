#include "cli/output_formats.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "formats/write/hoop_check.h"

namespace {

// The writers of the export dispatch, then the dump.
constexpr std::array<HMKOutputFormat, 7> kOutputFormats{{
    {"dst", ""},
    {"pes", ""},
    {"pec", ""},
    {"jef", kJanomeVendor},
    {"exp", ""},
    {"pcs", kPfaffVendor},
    {"json", "", true},
}};

std::string lowercase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

}  // namespace

const HMKOutputFormat* outputFormatNamed(std::string_view extension) {
    if (extension.starts_with('.')) {
        extension.remove_prefix(1);
    }
    const std::string name = lowercase(extension);
    const auto found = std::find_if(kOutputFormats.begin(), kOutputFormats.end(),
                                    [&](const HMKOutputFormat& f) { return f.extension == name; });
    return found == kOutputFormats.end() ? nullptr : &*found;
}

std::string outputFormatList() {
    std::string list;
    for (std::size_t i = 0; i < kOutputFormats.size(); ++i) {
        list += i == 0 ? "" : i + 1 == kOutputFormats.size() ? " or " : ", ";
        list += kOutputFormats[i].extension;
    }
    return list;
}

std::string formatTagNamed(std::string_view name) {
    const HMKOutputFormat* format = outputFormatNamed(name);
    if (!format || format->isDump) {
        return "";
    }
    std::string tag(format->extension);
    std::transform(tag.begin(), tag.end(), tag.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return tag;
}
