#include "model/thread.h"

#include "model/format_text.h"

std::string HMKThread::description() const {
    return formatText(
        "Embroidery Thread: color=%@ of palette %@, name=%@, key=%@, length=%1.1f, tension=%i",
        {color.description(), paletteName, name, key, length, tension});
}
