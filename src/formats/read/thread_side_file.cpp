// The thread side file: an XML property list next to a design ("rose.dst" -> "rose.threads")
// that keeps the user's thread assignments for formats that cannot carry them. Version 2 holds
// the colour as three reals; version 1 held an archived colour object, decoded here where it
// uses one of the common RGB forms.
#include <plist/plist.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "formats/file_io.h"
#include "formats/read/readers.h"
#include "model/design.h"

namespace {

constexpr const char* kThreadFileExtension = "threads";
constexpr std::int64_t kThreadFileVersion = 2;

constexpr const char* kVersionKey = "threadfileversion";
constexpr const char* kNameKey = "name";
constexpr const char* kKeyKey = "key";
constexpr const char* kPaletteKey = "palette";
constexpr const char* kPaletteNameKey = "paletteName";
constexpr const char* kRedKey = "red";
constexpr const char* kGreenKey = "green";
constexpr const char* kBlueKey = "blue";
// Version 1: the colour as a keyed archive of a platform colour object.
constexpr const char* kArchivedColorKey = "color";

// Keys inside the archived colour.
constexpr const char* kArchiveObjectsKey = "$objects";
constexpr const char* kArchiveTopKey = "$top";
constexpr const char* kArchiveRootKey = "root";
constexpr const char* kArchivedRgbKey = "NSRGB";
constexpr const char* kArchivedComponentsKey = "NSComponents";
constexpr const char* kArchivedWhiteKey = "NSWhite";

struct PlistDeleter {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPointer = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistDeleter>;

std::filesystem::path sideFilePath(const std::filesystem::path& designUrl) {
    return std::filesystem::path(designUrl).replace_extension(kThreadFileExtension);
}

PlistPointer parsePlist(std::span<const std::uint8_t> bytes) {
    if (bytes.empty() || bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
        return nullptr;
    }
    plist_t root = nullptr;
    plist_from_memory(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::uint32_t>(bytes.size()), &root);
    return PlistPointer(root);
}

std::string stringValue(plist_t dictionary, const char* key) {
    plist_t node = plist_dict_get_item(dictionary, key);
    if (!node || plist_get_node_type(node) != PLIST_STRING) {
        return {};
    }
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string(text, length) : std::string();
}

// A number read the way the platform's number accessors read it: integers, reals and numeric
// strings all give their value; anything else gives 0.
std::optional<double> numberValue(plist_t node) {
    if (!node) {
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
        case PLIST_UINT: {
            std::uint64_t value = 0;
            plist_get_uint_val(node, &value);
            return static_cast<double>(static_cast<std::int64_t>(value));
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return value;
        }
        case PLIST_STRING: {
            std::uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return text ? std::strtod(std::string(text, length).c_str(), nullptr) : 0.0;
        }
        default:
            return std::nullopt;
    }
}

double numberValue(plist_t dictionary, const char* key) {
    return numberValue(plist_dict_get_item(dictionary, key)).value_or(0);
}

// Up to three numbers from ASCII text such as "0.5 0.25 1 1" (the archived component text).
std::optional<std::array<double, 3>> threeComponents(plist_t data, bool allowGrey) {
    if (!data || plist_get_node_type(data) != PLIST_DATA) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(data, &length);
    if (!bytes) {
        return std::nullopt;
    }
    const std::string text(bytes, length);
    std::array<double, 3> components{};
    const char* cursor = text.c_str();
    std::size_t found = 0;
    for (; found < components.size(); ++found) {
        char* next = nullptr;
        components[found] = std::strtod(cursor, &next);
        if (next == cursor) {
            break;
        }
        cursor = next;
    }
    if (found == 3) {
        return components;
    }
    if (allowGrey && found >= 1) {
        return std::array<double, 3>{components[0], components[0], components[0]};
    }
    return std::nullopt;
}

// The RGB components of an archived colour object, when the archive holds one of the usual
// forms: RGB text under "NSRGB", component text under "NSComponents", or a grey "NSWhite".
std::optional<HMKColor> unarchiveColor(plist_t data) {
    if (!data || plist_get_node_type(data) != PLIST_DATA) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(data, &length);
    if (!bytes) {
        return std::nullopt;
    }
    PlistPointer archive = parsePlist(
        std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(bytes), length));
    if (!archive || plist_get_node_type(archive.get()) != PLIST_DICT) {
        return std::nullopt;
    }
    plist_t objects = plist_dict_get_item(archive.get(), kArchiveObjectsKey);
    plist_t top = plist_dict_get_item(archive.get(), kArchiveTopKey);
    if (!objects || plist_get_node_type(objects) != PLIST_ARRAY || !top ||
        plist_get_node_type(top) != PLIST_DICT) {
        return std::nullopt;
    }
    plist_t rootReference = plist_dict_get_item(top, kArchiveRootKey);
    if (!rootReference || plist_get_node_type(rootReference) != PLIST_UID) {
        return std::nullopt;
    }
    std::uint64_t rootIndex = 0;
    plist_get_uid_val(rootReference, &rootIndex);
    if (rootIndex >= plist_array_get_size(objects)) {
        return std::nullopt;
    }
    plist_t color = plist_array_get_item(objects, static_cast<std::uint32_t>(rootIndex));
    if (!color || plist_get_node_type(color) != PLIST_DICT) {
        return std::nullopt;
    }
    auto components = threeComponents(plist_dict_get_item(color, kArchivedRgbKey), false);
    if (!components) {
        components = threeComponents(plist_dict_get_item(color, kArchivedComponentsKey), false);
    }
    if (!components) {
        components = threeComponents(plist_dict_get_item(color, kArchivedWhiteKey), true);
    }
    if (!components) {
        return std::nullopt;
    }
    return HMKColor((*components)[0], (*components)[1], (*components)[2]);
}

}  // namespace

bool HMKDesign::importThreadsForDesign(const std::filesystem::path& url) {
    const auto bytes = readWholeFile(sideFilePath(url));
    if (!bytes) {
        return false;
    }
    PlistPointer root = parsePlist(*bytes);
    if (!root || plist_get_node_type(root.get()) != PLIST_ARRAY) {
        return false;
    }
    const std::uint32_t count = plist_array_get_size(root.get());
    // A side file for a different number of colour blocks is ignored as a whole, so there is
    // no need to decode it.
    if (count != threads().size()) {
        return false;
    }
    std::vector<HMKThread> sideThreads;
    sideThreads.reserve(count);
    for (std::uint32_t index = 0; index < count; ++index) {
        plist_t entry = plist_array_get_item(root.get(), index);
        if (!entry || plist_get_node_type(entry) != PLIST_DICT) {
            return false;
        }
        std::optional<HMKColor> color;
        if (numberValue(plist_dict_get_item(entry, kVersionKey)).value_or(0) ==
            kThreadFileVersion) {
            color = HMKColor(numberValue(entry, kRedKey), numberValue(entry, kGreenKey),
                             numberValue(entry, kBlueKey));
        } else {
            color = unarchiveColor(plist_dict_get_item(entry, kArchivedColorKey));
        }
        if (!color) {
            return false;
        }
        sideThreads.emplace_back(*color, stringValue(entry, kNameKey), stringValue(entry, kKeyKey),
                                 stringValue(entry, kPaletteKey),
                                 stringValue(entry, kPaletteNameKey));
    }
    setThreads(std::move(sideThreads));
    return true;
}

bool HMKDesign::exportThreadsForDesign(const std::filesystem::path& url) const {
    PlistPointer root(plist_new_array());
    for (const auto& thread : threads()) {
        plist_t entry = plist_new_dict();
        plist_dict_set_item(entry, kVersionKey, plist_new_uint(kThreadFileVersion));
        plist_dict_set_item(entry, kNameKey, plist_new_string(thread.name.c_str()));
        plist_dict_set_item(entry, kKeyKey, plist_new_string(thread.key.c_str()));
        plist_dict_set_item(entry, kPaletteKey, plist_new_string(thread.palette.c_str()));
        plist_dict_set_item(entry, kPaletteNameKey, plist_new_string(thread.paletteName.c_str()));
        // The components are stored at single precision.
        plist_dict_set_item(entry, kRedKey, plist_new_real(static_cast<float>(thread.color.red())));
        plist_dict_set_item(entry, kGreenKey,
                            plist_new_real(static_cast<float>(thread.color.green())));
        plist_dict_set_item(entry, kBlueKey,
                            plist_new_real(static_cast<float>(thread.color.blue())));
        plist_array_append_item(root.get(), entry);
    }
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    if (xml) {
        // A failed write is not reported: the side file is a convenience.
        writeFileAtomically(
            sideFilePath(url),
            std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(xml), length));
        plist_to_xml_free(xml);
    }
    return true;
}

bool HMKDesign::deleteThreadsFromDesign(const std::filesystem::path& url) const {
    const std::filesystem::path path = sideFilePath(url);
    std::error_code status;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, status))) {
        return true;
    }
    std::error_code removal;
    return std::filesystem::remove(path, removal) && !removal;
}

std::filesystem::path threadSideFilePath(const std::filesystem::path& design) {
    return sideFilePath(design);
}
