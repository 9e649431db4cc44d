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

bool HMKDesign::changeThread(std::int32_t index, const HMKColor& color, const std::string& palette) {
    return threads_[index].changeToColor(color, palette);
}
