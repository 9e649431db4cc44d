#include "model/color.h"

#include "model/format_text.h"

std::uint64_t HMKColor::hash() const {
    return static_cast<std::uint64_t>(blue_ * 255.0 + green_ * 255.0 * 1000.0 +
                                      red_ * 255.0 * 1000000.0);
}

std::string HMKColor::description() const {
    return formatText("RGB color (%1.0f / %1.0f / %1.0f)",
                      {red_ * 255.0, green_ * 255.0, blue_ * 255.0});
}
