// Threads built from palette keys, nearest-thread matching and the vendors' colour-index tables.
#include <cmath>

#include "model/color_list.h"
#include "model/design.h"
#include "model/diagnostics.h"
#include "model/format_text.h"
#include "model/strings.h"

namespace {

// Larger than any real distance: the starting best and the distance of excluded keys.
constexpr double kNoDistance = 32767.0;
// Keys starting with this are the vendors' pseudo-colours, not threads one can buy.
constexpr char kSpecialKeyPrefix = 'x';

constexpr std::string_view kUnknownColor = "Unknown color";
constexpr std::string_view kDefaultPaletteName = "Threadcolors";

std::string threadName(const std::string& palette, const std::string& key) {
    return localizedString(palette, key, kUnknownColor);
}

std::string paletteDisplayName(const std::string& palette) {
    return localizedString(palette, palette, kDefaultPaletteName);
}

// A weighted RGB distance on the 0..255 scale. The blue weight uses the signed red
// difference rather than the mean red; that is deliberate, as matches made so far rely on it.
double colorDistance(const HMKColor& target, const HMKColor& candidate) {
    double dR = (target.red() - candidate.red()) * 255;
    double dG = (target.green() - candidate.green()) * 255;
    double dB = (target.blue() - candidate.blue()) * 255;
    double rMean = (candidate.red() + target.red()) * 255 * 0.5;
    return std::sqrt((2 + rMean / 256) * dR * dR + 4 * dG * dG + (2 + (255 - dR) / 256) * dB * dB);
}

const std::map<std::int32_t, std::string>& janomeCodes() {
    static const std::map<std::int32_t, std::string> codes = {
        {0, "x9"},   {1, "002"},  {2, "001"},  {3, "204"},  {4, "203"},  {5, "219"},  {6, "226"},
        {7, "217"},  {8, "208"},  {9, "201"},  {10, "225"}, {11, "214"}, {12, "207"}, {13, "003"},
        {14, "205"}, {15, "209"}, {16, "210"}, {17, "211"}, {18, "212"}, {19, "213"}, {20, "215"},
        {21, "216"}, {22, "218"}, {23, "220"}, {24, "221"}, {25, "227"}, {26, "228"}, {27, "229"},
        {28, "230"}, {29, "231"}, {30, "232"}, {31, "233"}, {32, "234"}, {33, "235"}, {34, "236"},
        {35, "237"}, {36, "238"}, {37, "239"}, {38, "240"}, {39, "241"}, {40, "242"}, {41, "243"},
        {42, "244"}, {43, "245"}, {44, "246"}, {45, "247"}, {46, "248"}, {47, "249"}, {48, "250"},
        {49, "251"}, {50, "252"}, {51, "253"}, {52, "254"}, {53, "255"}, {54, "256"}, {55, "257"},
        {56, "258"}, {57, "259"}, {58, "260"}, {59, "261"}, {60, "262"}, {61, "263"}, {62, "264"},
        {63, "265"}, {64, "266"}, {65, "267"}, {66, "268"}, {67, "269"}, {68, "270"}, {69, "271"},
        {70, "272"}, {71, "273"}, {72, "274"}, {73, "275"}, {74, "202"}, {75, "206"}, {76, "222"},
        {77, "223"}, {78, "224"}};
    return codes;
}

const std::map<std::int32_t, std::string>& brotherCodes() {
    static const std::map<std::int32_t, std::string> codes = {
        {1, "007"},  {2, "405"},  {3, "534"},  {4, "070"},  {5, "800"},  {6, "337"},  {7, "620"},
        {8, "810"},  {9, "612"},  {10, "502"}, {11, "214"}, {12, "208"}, {13, "205"}, {14, "513"},
        {15, "328"}, {16, "005"}, {17, "330"}, {18, "010"}, {19, "704"}, {20, "900"}, {21, "406"},
        {22, "869"}, {23, "707"}, {24, "058"}, {25, "086"}, {26, "323"}, {27, "079"}, {28, "030"},
        {29, "001"}, {30, "613"}, {31, "542"}, {32, "019"}, {33, "126"}, {34, "812"}, {35, "348"},
        {36, "339"}, {37, "509"}, {38, "415"}, {39, "817"}, {40, "399"}, {41, "517"}, {42, "307"},
        {43, "085"}, {44, "808"}, {45, "804"}, {46, "607"}, {47, "843"}, {48, "807"}, {49, "333"},
        {50, "519"}, {51, "107"}, {52, "209"}, {53, "017"}, {54, "507"}, {55, "614"}, {56, "515"},
        {57, "124"}, {58, "206"}, {59, "420"}, {60, "202"}, {61, "027"}, {62, "x9"},  {63, "x8"},
        {64, "x7"}};
    return codes;
}

const std::map<std::int32_t, std::string>& brotherReadCodes() {
    static const std::map<std::int32_t, std::string> codes = [] {
        auto all = brotherCodes();
        // Indexes beyond 64 that some files carry; writers map them back into 1..64.
        all.insert({{66, "007"},
                    {67, "405"},
                    {69, "515"},
                    {71, "513"},
                    {75, "058"},
                    {79, "019"},
                    {92, "086"}});
        return all;
    }();
    return codes;
}

}  // namespace

HMKThread HMKThread::fromPaletteKey(const std::string& key, const std::string& palette) {
    HMKColor color;
    std::string name = formatText(
        localizedString(kDesignStringTable, "COLOR_INDIVIDUAL", "Individual color (%i, %i, %i)"),
        {color.red() * 255, color.green() * 255, color.blue() * 255});
    std::string paletteName;
    if (auto list = HMKColorList::named(palette)) {
        if (auto found = list->colorWithKey(key)) {
            color = *found;
            name = threadName(palette, key);
            paletteName = paletteDisplayName(palette);
        }
    }
    // Key and palette stay as given even when unknown, so a file's colour number survives.
    return HMKThread(color, name, key, palette, paletteName);
}

bool HMKThread::changeToColor(const HMKColor& target, const std::string& newPalette) {
    if (newPalette.empty()) {
        color = target;
        palette = "";
        paletteName = localizedString(kDesignStringTable, "PATTERN_PALETTE", kDefaultPaletteName);
        key = "";
        name = formatText(localizedString(kDesignStringTable, "COLOR_INDIVIDUAL",
                                          "Individual color (%1.0f, %1.0f, %1.0f)"),
                          {target.red() * 255, target.green() * 255, target.blue() * 255});
        return true;
    }

    auto list = HMKColorList::named(newPalette);
    if (!list) {
        // Logged, not raised: the caller only learns that the thread stayed as it was.
        logDiagnostic(localizedString(kDesignStringTable, "ERROR_140", "color palette not found"));
        return false;
    }

    // Pseudo-colours may be kept within their own palette, but never chosen from another.
    const bool excludeSpecialKeys = newPalette != palette;
    double bestDistance = kNoDistance;
    const std::pair<std::string, HMKColor>* best = nullptr;
    for (const auto& entry : list->entries()) {
        const auto& [candidateKey, candidateColor] = entry;
        double distance = kNoDistance;
        if (!(excludeSpecialKeys && candidateKey.starts_with(kSpecialKeyPrefix))) {
            distance = colorDistance(target, candidateColor);
        }
        // Strictly smaller, so the first of equally near threads wins.
        if (distance < bestDistance) {
            bestDistance = distance;
            best = &entry;
        }
        if (distance == 0) {
            break;
        }
    }

    color = best ? best->second : HMKColor();
    palette = newPalette;
    paletteName = paletteDisplayName(newPalette);
    key = best ? best->first : "";
    name = best ? threadName(newPalette, best->first) : "";
    return true;
}

bool HMKDesign::changeThread(std::int32_t index, const HMKColor& color,
                             const std::string& palette) {
    if (index < 0 || static_cast<std::size_t>(index) >= threads_.size()) {
        return false;
    }
    return threads_[index].changeToColor(color, palette);
}

std::map<std::int32_t, std::string> HMKDesign::janomeColorCodes() {
    return janomeCodes();
}

std::map<std::int32_t, std::string> HMKDesign::brotherColorCodes() {
    return brotherCodes();
}

std::map<std::int32_t, std::string> HMKDesign::brotherReadColorCodes() {
    return brotherReadCodes();
}
