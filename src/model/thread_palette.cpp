// Stand-in until palettes land: no palette files are known, so threads stay individual colours.
#include "model/design.h"
#include "model/format_text.h"
#include "model/strings.h"

HMKThread HMKThread::fromPaletteKey(const std::string& key, const std::string& palette) {
    HMKColor grey;
    std::string name = formatText(
        localizedString(kDesignStringTable, "COLOR_INDIVIDUAL", "Individual color (%i, %i, %i)"),
        {grey.red() * 255, grey.green() * 255, grey.blue() * 255});
    return HMKThread(grey, name, key, palette, "");
}

bool HMKThread::changeToColor(const HMKColor& target, const std::string& newPalette) {
    if (!newPalette.empty()) {
        return false;
    }
    color = target;
    palette = "";
    paletteName = localizedString(kDesignStringTable, "PATTERN_PALETTE", "Threadcolors");
    key = "";
    name = formatText(localizedString(kDesignStringTable, "COLOR_INDIVIDUAL",
                                      "Individual color (%1.0f, %1.0f, %1.0f)"),
                      {target.red() * 255, target.green() * 255, target.blue() * 255});
    return true;
}

bool HMKDesign::changeThread(std::int32_t index, const HMKColor& color,
                             const std::string& palette) {
    return threads_[index].changeToColor(color, palette);
}

// Stand-in until palettes land: the JEF colour index table, so the SEW reader links.
std::map<std::int32_t, std::string> HMKDesign::janomeColorCodes() {
    return {
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
}
