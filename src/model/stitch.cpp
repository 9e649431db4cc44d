#include "model/stitch.h"

#include "model/format_text.h"

std::string HMKStitch::description() const {
    return formatText(
        "Embroidery Stitch (deltaX=%1.2f, deltaY=%1.2f, Jump-Stitch=%i, Color-Change=%i), "
        "selected=%i",
        {deltaX, deltaY, isJumpStitch, isColorChange, isSelected});
}
