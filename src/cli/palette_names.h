// Palette names as users type them: matched to an installed palette whatever their case, and
// answered with the nearest installed name when none matches.
#pragma once

#include <optional>
#include <string>

// The installed palette the name means ("madeira rayon" -> "Madeira Rayon"); none when no
// installed palette has that name in any case.
std::optional<std::string> installedPaletteNamed(const std::string& name);

// The installed palette whose name is nearest to a mistyped one; none when none is near.
std::optional<std::string> nearestPaletteName(const std::string& name);

// "No palette named X is installed; did you mean Y?" (the question only when one is near).
std::string unknownPaletteMessage(const std::string& name);
