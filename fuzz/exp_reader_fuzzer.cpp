// Feeds arbitrary bytes to the EXP reader: it must end in success or in one of its own
// errors, never crash, hang or read outside the data.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/read/readers.h"

namespace {

bool isOwnError(int code) {
    return code == 100;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HMKDesign design;
    HMKError error;
    if (!importExpDesignFromData(design, std::span<const std::uint8_t>(data, size), &error) &&
        !isOwnError(error.code)) {
        __builtin_trap();
    }
    return 0;
}
