// The whole pipeline on bytes that may be anything: the first byte picks a reader (or the
// design archive), the rest is read, and a design that comes out is archived and encoded in
// memory for every writable format, as the export does. Nothing may crash, hang, read out of
// bounds, overflow or allocate without bound; a reader fails only with its own errors, and
// the formats that list their threads have one per colour block.
// Seeds (fuzz/seeds/pipeline/) are the reader's index byte followed by a file; the order of
// kReaders is therefore fixed.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>

#include "formats/read/readers.h"
#include "formats/write/writers.h"
#include "model/archive.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

struct FuzzedReader {
    bool (*read)(HMKDesign&, Bytes, HMKError*);
    // The reader's own error codes, as ranges; any other code is a fault.
    std::initializer_list<std::pair<int, int>> codes;
    bool hasThreadPerBlock;
};

const std::array<FuzzedReader, 12> kReaders{{
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importDstDesignFromData(d, b, e); },
     {{110, 119}, {123, 123}},
     false},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importPesDesignFromData(d, b, e); },
     {{30, 33}, {190, 192}},
     true},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importPecDesignFromData(d, b, e); },
     {{30, 33}, {190, 192}},
     true},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importJefDesignFromData(d, b, "jef", e); },
     {{20, 24}},
     true},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importJpxDesignFromData(d, b, e); },
     {{210, 212}},
     false},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importExpDesignFromData(d, b, e); },
     {{100, 100}},
     false},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importSewDesignFromData(d, b, e); },
     {{90, 91}},
     false},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importKsmDesignFromData(d, b, e); },
     {{170, 171}},
     false},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importVp3DesignFromData(d, b, e); },
     {{150, 154}},
     true},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importPcxDesignFromData(d, b, e); },
     {{160, 165}},
     false},
    {[](HMKDesign& d, Bytes b, HMKError* e) { return importJefDesignFromData(d, b, "jef+", e); },
     {{20, 24}},
     true},
    // Documents, pasted data and restored state.
    {[](HMKDesign& d, Bytes b, HMKError* e) {
         auto design = unarchiveDesign(b, e);
         if (design) {
             d = std::move(*design);
         }
         return design.has_value();
     },
     {{kHMKArchiveNotAnArchive, kHMKArchiveNotAnArchive}, {kHMKArchiveDamaged, kHMKArchiveDamaged}},
     false},
}};

constexpr std::array<std::string_view, 6> kWritableExtensions{"dst", "exp", "jef",
                                                              "pcs", "pes", "pec"};

bool isOwnError(const FuzzedReader& reader, int code) {
    return std::any_of(reader.codes.begin(), reader.codes.end(), [code](const auto& range) {
        return code >= range.first && code <= range.second;
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const FuzzedReader& reader = kReaders[data[0] % kReaders.size()];
    HMKDesign design;
    HMKError error;
    if (!reader.read(design, Bytes(data + 1, size - 1), &error)) {
        if (!isOwnError(reader, error.code)) {
            __builtin_trap();
        }
        return 0;
    }
    const auto& stitches = design.stitches();
    const auto colorChanges = std::count_if(stitches.begin(), stitches.end(),
                                            [](const HMKStitch& s) { return s.isColorChange; });
    if (reader.hasThreadPerBlock &&
        design.threads().size() != static_cast<std::size_t>(colorChanges) + 1) {
        __builtin_trap();
    }
    archiveDesign(design);
    for (std::string_view extension : kWritableExtensions) {
        HMKDesign copy = design;
        encodeDesignForExtension(copy, extension, nullptr);
    }
    return 0;
}
