#include "formats/write/hoop_check.h"

std::optional<HMKHoop> checkHoopForWriting(HMKDesign& design, std::string_view vendor,
                                           const HMKHoopCheckTexts& texts, HMKError* error) {
    std::optional<HMKHoop> formerHoop = design.designHoop();
    if (!formerHoop || formerHoop->vendor() != vendor) {
        design.setDesignHoop(design.findHoopFromVendor(vendor));
    }
    std::optional<HMKHoop> hoop = design.designHoop();
    auto refuse = [&](int code, std::string_view text) -> std::optional<HMKHoop> {
        design.setDesignHoop(formerHoop);
        fail(error, code, text);
        return std::nullopt;
    };
    if (!hoop) {
        return refuse(63, "Design exceeds all hoop sizes.");
    }
    if (!design.designFitsInHoop(*hoop)) {
        return refuse(60, texts.exceedsCurrentHoop);
    }
    if (design.stitchesOutsideOfHoop(*hoop)) {
        return refuse(62, "Stitches ouside the current hoop.");
    }
    if (!hoop->isWritable()) {
        return refuse(51, texts.unsupportedHoop);
    }
    return hoop;
}
