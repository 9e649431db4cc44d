#include "platform/platform_info.h"

#include <QtGlobal>

std::string qtRuntimeVersion() {
    return qVersion();
}
