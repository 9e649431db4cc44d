// One colour block of a design: its colour, the thread's name and manufacturer key inside a
// palette, length, tension and visibility. Threads are plain values; copying one copies its
// colour, which is itself an immutable value.
#pragma once

#include <cstdint>
#include <string>

#include "model/color.h"

// The palette id of threads that belong to no palette (an individual colour).
inline constexpr const char* kNoPalette = "";
// The palette id of the placeholder threads made by formats that carry no colours.
inline constexpr const char* kUndefinedPalette = "Undefined";

struct HMKThread {
    HMKColor color;
    std::string name;
    std::string key;
    std::string palette;
    std::string paletteName;
    float length = 0;
    std::int32_t tension = 13;
    bool isShown = true;

    HMKThread() = default;
    HMKThread(HMKColor color, std::string name, std::string key, std::string palette,
              std::string paletteName)
        : color(color),
          name(std::move(name)),
          key(std::move(key)),
          palette(std::move(palette)),
          paletteName(std::move(paletteName)) {}

    // The thread for a key of a palette (colour, name and palette display name from the
    // palette's files); grey and "Individual color (...)" when palette or key is unknown.
    // The key and palette are kept as given either way.
    static HMKThread fromPaletteKey(const std::string& key, const std::string& palette);

    // Turns the thread into the palette's nearest thread to target (the empty palette makes
    // an individual colour). Returns false and leaves the thread unchanged when the palette
    // cannot be loaded.
    bool changeToColor(const HMKColor& target, const std::string& palette);

    void addLength(float amount) { length += amount; }

    std::string description() const;

    friend bool operator==(const HMKThread&, const HMKThread&) = default;
};
