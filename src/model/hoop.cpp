#include "model/hoop.h"

#include "model/design.h"
#include "model/format_text.h"
#include "model/units.h"

std::string HMKHoop::sizeString() const {
    if (isRounded_) {
        return formatText("⌀ %@", {HMKValueTransformer::transformedValue(width_)});
    }
    return formatText("%@ x %@", {HMKValueTransformer::transformedValue(width_),
                                  HMKValueTransformer::transformedValue(height_)});
}

std::string HMKHoop::description() const {
    if (name_.empty() || vendor_.empty()) {
        return sizeString();
    }
    return formatText("%@ %@ (%@)", {vendor_, name_, sizeString()});
}

std::vector<HMKHoop> HMKDesign::hoops() {
    // Not sorted by size on purpose: the small special hoops (T6 onward) follow the main
    // ones, so the automatic choice prefers hoops 1 to 10.
    return {
        {"C/FA/M3", "Janome", 1, 50, 50, false, false, true},
        {"A", "Janome", 0, 110, 110, false, false, true},
        {"A(F)/ST/M2", "Janome", 3, 126, 110, false, false, true},
        {"B/RE", "Janome", 2, 140, 200, false, false, true},
        {"RE20a", "Janome", 32, 170, 200, false, false, true},
        {"SQ", "Janome", 4, 200, 200, false, false, true},
        {"SQ23", "Janome", 28, 230, 230, false, false, true},
        {"MA", "Janome", 5, 200, 280, true, false, false},
        {"M1", "Janome", 6, 240, 200, false, false, true},
        {"GR", "Janome", 29, 230, 300, false, false, true},
        {"T1", "Janome", 8, 34, 34, false, true, false},
        {"T2", "Janome", 9, 54, 54, false, true, false},
        {"T3", "Janome", 10, 84, 84, false, true, false},
        {"T4", "Janome", 11, 112, 112, false, true, false},
        {"T5", "Janome", 12, 142, 142, false, true, false},
        {"T6", "Janome", 13, 78, 168, false, false, true},
        {"FA10/~a", "Janome", 30, 100, 40, false, false, true},
        {"H1", "Janome", 14, 100, 90, false, false, true},
        {"200/SQ14/~a", "Janome", 15, 140, 140, false, false, true},
        {"S1", "Janome", 16, 37, 59, false, false, true},
        {"S2", "Janome", 17, 28, 50, false, false, true},
        {"J1", "Janome", 18, 30, 30, false, true, false},
        {"J2", "Janome", 19, 24, 54, false, false, true},
        {"J3", "Janome", 20, 64, 28, false, false, true},
        {"J4", "Janome", 21, 42, 67, false, false, true},
        {"J5", "Janome", 22, 46, 46, false, false, true},
        {"J6", "Janome", 23, 66, 66, false, false, true},
        {"J7", "Janome", 24, 110, 95, false, false, true},
        {"J8", "Janome", 25, 120, 121, false, false, true},
        {"AQ", "Janome", 26, 120, 180, false, false, true},
        {"ASQ", "Janome", 27, 180, 180, false, false, true},
        {"ASQ22", "Janome", 31, 220, 220, false, false, true},
        {"S", "Pfaff", 2, 80, 80, false, false, true},
        {"L", "Pfaff", 3, 120, 115, false, false, true},
    };
}

std::optional<std::vector<HMKHoop>> HMKDesign::allHoopsFromVendor(std::string_view vendor) {
    std::vector<HMKHoop> matching;
    for (auto& hoop : hoops()) {
        if (hoop.vendor() == vendor) {
            matching.push_back(std::move(hoop));
        }
    }
    if (matching.empty()) {
        return std::nullopt;
    }
    return matching;
}

bool HMKDesign::setHoopFromVendor(std::string_view vendor, std::int32_t code) {
    if (code == -1) {
        designHoop_.reset();
    }
    if (auto vendorHoops = allHoopsFromVendor(vendor)) {
        for (auto& hoop : *vendorHoops) {
            if (hoop.code() == code) {
                designHoop_ = std::move(hoop);
                return true;
            }
        }
    }
    return false;
}

std::optional<HMKHoop> HMKDesign::findHoopFromVendor(std::string_view vendor) const {
    if (auto vendorHoops = allHoopsFromVendor(vendor)) {
        for (auto& hoop : *vendorHoops) {
            if (hoop.isWritable() && designFitsInHoop(hoop)) {
                return std::move(hoop);
            }
        }
    }
    return std::nullopt;
}

bool HMKDesign::designFitsInHoop(const HMKHoop& hoop) const {
    return designWidth() <= hoop.width() * 10 && designHeight() <= hoop.height() * 10;
}

bool HMKDesign::stitchesOutsideOfHoop(const HMKHoop& hoop) const {
    // Halved before scaling on purpose: an odd width loses half a millimetre.
    const float halfWidth = static_cast<float>((hoop.width() / 2) * 10);
    const float halfHeight = static_cast<float>((hoop.height() / 2) * 10);
    // Strict comparisons: a stitch exactly on the edge counts as outside.
    const bool inside =
        halfWidth > -xMin_ && halfWidth > xMax_ && halfHeight > -yMin_ && halfHeight > yMax_;
    return !inside;
}

std::string HMKDesign::hoopName() const {
    return designHoop_ ? designHoop_->description() : "";
}

std::int32_t HMKDesign::hoopWidth() const {
    return designHoop_ ? designHoop_->width() : 0;
}

std::int32_t HMKDesign::hoopHeight() const {
    return designHoop_ ? designHoop_->height() : 0;
}

std::int32_t HMKDesign::hoopCode() const {
    return designHoop_ ? designHoop_->code() : -1;
}

std::string HMKDesign::hoopVendor() const {
    return designHoop_ ? designHoop_->vendor() : "";
}

bool HMKDesign::hoopIsRound() const {
    return designHoop_ && designHoop_->isRounded();
}
