#include "cli/palette_names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <vector>

#include "model/color_list.h"

namespace {

std::string lowercase(const std::string& text) {
    std::string result = text;
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

// Edits (insert, delete, replace) that turn one text into the other.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min(
                {row[j] + 1, row[j - 1] + 1, diagonal + (from[i - 1] == to[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[to.size()];
}

std::vector<std::string> installedPaletteNames() {
    std::vector<std::string> names;
    for (const std::string& name : HMKColorList::shippedPaletteNames()) {
        if (HMKColorList::named(name)) {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace

std::optional<std::string> installedPaletteNamed(const std::string& name) {
    if (HMKColorList::named(name)) {
        return name;
    }
    for (const std::string& installed : installedPaletteNames()) {
        if (lowercase(installed) == lowercase(name)) {
            return installed;
        }
    }
    return std::nullopt;
}

std::optional<std::string> nearestPaletteName(const std::string& name) {
    // A name is near when a third of it or less is mistyped.
    std::optional<std::string> nearest;
    std::size_t best = name.size() / 3 + 1;
    for (const std::string& installed : installedPaletteNames()) {
        const std::size_t distance = editDistance(lowercase(name), lowercase(installed));
        if (distance < best) {
            best = distance;
            nearest = installed;
        }
    }
    return nearest;
}

std::string unknownPaletteMessage(const std::string& name) {
    const std::string message = "no palette named \"" + name + "\" is installed";
    if (auto nearest = nearestPaletteName(name)) {
        return message + "; did you mean \"" + *nearest + "\"?";
    }
    return message + " (hemlark palettes lists them)";
}
