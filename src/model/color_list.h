// HMKColorList: one manufacturer's thread palette, read from its ".clr" text resource. Readers
// build threads from palette keys, and colour matching walks a palette in search of the
// nearest thread; both go through the process-wide cache of HMKColorList::named().
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/color.h"

class HMKColorList {
public:
    // --- Loading ---------------------------------------------------------------------------
    // Parses a palette file; none when the file cannot be read. Malformed lines are skipped,
    // so a readable file without valid lines gives an empty palette.
    static std::optional<HMKColorList> fromFile(std::string name,
                                                const std::filesystem::path& file);
    // Parses palette text as it would be read from a file.
    static HMKColorList fromText(std::string name, std::string_view text);
    // The installed palette of that name ("palettes/<name>.clr/<name>.clr" among the
    // resources), each file parsed once per process; null when it is not installed.
    static std::shared_ptr<const HMKColorList> named(const std::string& palette);
    // The palettes the application offers, in the order they are offered to the user.
    static std::vector<std::string> shippedPaletteNames();

    // --- Contents --------------------------------------------------------------------------
    const std::string& name() const { return name_; }
    // Every key once, in the order of its first line; this order decides ties in matching.
    std::vector<std::string> allKeys() const;
    // Every accepted line's key in file order, repeats included.
    const std::vector<std::string>& allSortedKeys() const { return orderedKeys_; }
    // The colour of the last line with that key, if any.
    std::optional<HMKColor> colorWithKey(std::string_view key) const;
    // (key, colour) for every key in allKeys() order, for walking the palette quickly.
    const std::vector<std::pair<std::string, HMKColor>>& entries() const { return entries_; }

private:
    explicit HMKColorList(std::string name) : name_(std::move(name)) {}
    void add(std::string key, HMKColor color);

    std::string name_;
    std::vector<std::string> orderedKeys_;
    std::vector<std::pair<std::string, HMKColor>> entries_;
    std::map<std::string, std::size_t, std::less<>> indexOfKey_;
};
