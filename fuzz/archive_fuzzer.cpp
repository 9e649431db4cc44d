// Documents, pasted data and restored state are decoded from bytes that may be anything:
// unarchiving must refuse them cleanly, never crash, hang or allocate without bound.
#include <cstddef>
#include <cstdint>
#include <span>

#include "model/archive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto design = unarchiveDesign(std::span(data, size));
    if (design) {
        // Whatever decodes must archive again.
        archiveDesign(*design);
    }
    return 0;
}
