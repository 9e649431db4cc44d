// Feeds arbitrary bytes to the PES reader: it must succeed or fail with its own error, never
// crash, hang or read outside the data. A successful read has one thread per colour block.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "formats/read/readers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HMKDesign design;
    HMKError error;
    if (importPesDesignFromData(design, std::span<const std::uint8_t>(data, size), &error)) {
        const auto& stitches = design.stitches();
        const auto colorChanges = std::count_if(stitches.begin(), stitches.end(),
                                                [](const HMKStitch& s) { return s.isColorChange; });
        if (design.threads().size() != static_cast<std::size_t>(colorChanges) + 1) {
            std::abort();
        }
    }
    return 0;
}
