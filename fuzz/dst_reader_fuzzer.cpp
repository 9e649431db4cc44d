// Feeds arbitrary bytes to the DST reader: it must succeed or fail with its own error, never
// crash, hang or read outside the data.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/read/readers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HMKDesign design;
    HMKError error;
    importDstDesignFromData(design, std::span<const std::uint8_t>(data, size), &error);
    return 0;
}
