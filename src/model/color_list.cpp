#include "model/color_list.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <mutex>
#include <system_error>

#include "model/resources.h"

namespace {

// Characters skipped between the values of a palette line; a comma separates like a blank.
constexpr std::string_view kPaletteSeparators = "\n\r\t ,";
// Palette files live in a folder of their own name: "palettes/<P>.clr/<P>.clr".
constexpr std::string_view kPaletteFolder = "palettes/";
constexpr std::string_view kPaletteExtension = ".clr";

bool isSeparator(char c) {
    return kPaletteSeparators.find(c) != std::string_view::npos;
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads the values of one palette line in order, skipping separators before each value the
// way the files have always been scanned: a value that does not parse fails the whole line.
class LineScanner {
public:
    explicit LineScanner(std::string_view line) : line_(line) {}

    bool scanInteger() {
        skipSeparators();
        std::size_t pos = pos_;
        if (pos < line_.size() && (line_[pos] == '+' || line_[pos] == '-')) {
            ++pos;
        }
        std::size_t digits = countDigits(pos);
        if (digits == 0) {
            return false;
        }
        pos_ = pos + digits;
        return true;
    }

    // Sign, digits with an optional decimal point, and an optional exponent; no hex, no
    // infinities, so a line can never smuggle in a NaN.
    bool scanDecimal(double& value) {
        skipSeparators();
        std::size_t pos = pos_;
        bool negative = false;
        if (pos < line_.size() && (line_[pos] == '+' || line_[pos] == '-')) {
            negative = line_[pos] == '-';
            ++pos;
        }
        const std::size_t numberStart = pos;
        std::size_t mantissaDigits = countDigits(pos);
        pos += mantissaDigits;
        if (pos < line_.size() && line_[pos] == '.') {
            std::size_t fractionDigits = countDigits(pos + 1);
            mantissaDigits += fractionDigits;
            pos += 1 + fractionDigits;
        }
        if (mantissaDigits == 0) {
            return false;
        }
        if (pos < line_.size() && (line_[pos] == 'e' || line_[pos] == 'E')) {
            std::size_t exponent = pos + 1;
            if (exponent < line_.size() && (line_[exponent] == '+' || line_[exponent] == '-')) {
                ++exponent;
            }
            std::size_t exponentDigits = countDigits(exponent);
            if (exponentDigits > 0) {
                pos = exponent + exponentDigits;
            }
        }
        double magnitude = 0;
        auto result = std::from_chars(line_.data() + numberStart, line_.data() + pos, magnitude);
        if (result.ec != std::errc() || result.ptr != line_.data() + pos) {
            return false;
        }
        value = negative ? -magnitude : magnitude;
        pos_ = pos;
        return true;
    }

    // The run of characters up to the next separator (at least one).
    bool scanKey(std::string& key) {
        skipSeparators();
        std::size_t end = pos_;
        while (end < line_.size() && !isSeparator(line_[end])) {
            ++end;
        }
        if (end == pos_) {
            return false;
        }
        key.assign(line_.substr(pos_, end - pos_));
        pos_ = end;
        return true;
    }

private:
    void skipSeparators() {
        while (pos_ < line_.size() && isSeparator(line_[pos_])) {
            ++pos_;
        }
    }
    std::size_t countDigits(std::size_t from) const {
        std::size_t end = from;
        while (end < line_.size() && isDigit(line_[end])) {
            ++end;
        }
        return end - from;
    }

    std::string_view line_;
    std::size_t pos_ = 0;
};

}  // namespace

std::optional<HMKColorList> HMKColorList::fromFile(std::string name,
                                                   const std::filesystem::path& file) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) {
        return std::nullopt;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) {
        return std::nullopt;
    }
    return fromText(std::move(name), text);
}

HMKColorList HMKColorList::fromText(std::string name, std::string_view text) {
    HMKColorList list(std::move(name));
    std::size_t lineStart = text.find('\n');
    // The first line is a header, skipped even when it would parse as a colour.
    while (lineStart != std::string_view::npos) {
        ++lineStart;
        std::size_t lineEnd = text.find('\n', lineStart);
        std::string_view line =
            text.substr(lineStart, lineEnd == std::string_view::npos ? std::string_view::npos
                                                                     : lineEnd - lineStart);
        lineStart = lineEnd;

        LineScanner scanner(line);
        double red = 0, green = 0, blue = 0, unused = 0;
        std::string key;
        // Running number, red, green, blue, a value nobody uses, then the key.
        if (scanner.scanInteger() && scanner.scanDecimal(red) && scanner.scanDecimal(green) &&
            scanner.scanDecimal(blue) && scanner.scanDecimal(unused) && scanner.scanKey(key)) {
            list.add(std::move(key), HMKColor(red, green, blue));
        }
    }
    return list;
}

void HMKColorList::add(std::string key, HMKColor color) {
    orderedKeys_.push_back(key);
    auto found = indexOfKey_.find(key);
    if (found != indexOfKey_.end()) {
        // A repeated key keeps its first place but takes the colour of its last line.
        entries_[found->second].second = color;
        return;
    }
    indexOfKey_.emplace(key, entries_.size());
    entries_.emplace_back(std::move(key), color);
}

std::vector<std::string> HMKColorList::allKeys() const {
    std::vector<std::string> keys;
    keys.reserve(entries_.size());
    for (const auto& entry : entries_) {
        keys.push_back(entry.first);
    }
    return keys;
}

std::optional<HMKColor> HMKColorList::colorWithKey(std::string_view key) const {
    auto found = indexOfKey_.find(key);
    if (found == indexOfKey_.end()) {
        return std::nullopt;
    }
    return entries_[found->second].second;
}

std::shared_ptr<const HMKColorList> HMKColorList::named(const std::string& palette) {
    // Recolouring a design converts every thread into the same palette, so each file is
    // parsed once per process. Missing palettes are remembered too (readers ask for the
    // placeholder palette at every colour change); a change of resource folders starts over.
    static std::mutex mutex;
    static std::map<std::string, std::shared_ptr<const HMKColorList>, std::less<>> cache;
    static std::uint64_t cachedGeneration = resourceGeneration();
    std::lock_guard lock(mutex);
    if (cachedGeneration != resourceGeneration()) {
        cache.clear();
        cachedGeneration = resourceGeneration();
    }
    auto found = cache.find(palette);
    if (found != cache.end()) {
        return found->second;
    }
    // A name that could leave the palettes folder is no palette.
    if (palette.empty() || palette.find('/') != std::string::npos || palette == "." ||
        palette == "..") {
        return nullptr;
    }
    std::string file = std::string(kPaletteFolder) + palette + std::string(kPaletteExtension) +
                       "/" + palette + std::string(kPaletteExtension);
    auto path = findResource(file);
    auto list = path ? fromFile(palette, *path) : std::nullopt;
    if (!list) {
        cache.emplace(palette, nullptr);
        return nullptr;
    }
    auto shared = std::make_shared<const HMKColorList>(std::move(*list));
    cache.emplace(palette, shared);
    return shared;
}

std::vector<std::string> HMKColorList::shippedPaletteNames() {
    return {"WonderFil Splendor", "Sulky Rayon",    "Robison-Anton Poly",
            "Poly-X40 Polyester", "Marathon Rayon", "Madeira Rayon",
            "Madeira Polyneon",   "Janome",         "Fufu Rayon",
            "Floriani Polyester", "Coats Trilobal", "Coats Rayon",
            "Brother Country",    "Brother",        "Ackermann Isacord"};
}
