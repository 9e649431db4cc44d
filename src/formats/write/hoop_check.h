// The hoop check of the writers for hoop-bound formats (JEF with "Janome", PCS with "Pfaff"):
// it picks the vendor's hoop, refuses designs that do not fit it, and hands back the hoop
// whose code goes into the file header.
#pragma once

#include <optional>
#include <string_view>

#include "model/design.h"
#include "model/error.h"
#include "model/hoop.h"

inline constexpr std::string_view kJanomeVendor = "Janome";
inline constexpr std::string_view kPfaffVendor = "Pfaff";

// The default texts of codes 60 and 51, which differ between the writers.
struct HMKHoopCheckTexts {
    std::string_view exceedsCurrentHoop;
    std::string_view unsupportedHoop;
};

// Gives the design the vendor's hoop (keeping its own when it is of that vendor) and checks
// it: 63 no hoop, 60 too large, 62 stitches outside, 51 not writable, in that order. On a
// refusal the design's former hoop is put back and none is returned.
std::optional<HMKHoop> checkHoopForWriting(HMKDesign& design, std::string_view vendor,
                                           const HMKHoopCheckTexts& texts, HMKError* error);
