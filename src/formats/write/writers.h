// The in-memory encoders of the writable formats, one per format family file. Each checks the
// format's own limits and builds the whole file; none touches the disk. The export dispatcher
// (exportDesignToURL) runs the checks every writer relies on before them, writes the bytes
// atomically once, and then makes the design match what the file holds. Fuzzers and
// benchmarks call the encoders directly.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"

struct HMKEncodedDesign {
    std::vector<std::uint8_t> bytes;
    // The threads as the file holds them (placeholders, a vendor's palette, bare colours),
    // which the design takes after the write; none when the design keeps its own threads
    // because a thread side file holds them.
    std::optional<std::vector<HMKThread>> threads;
};

// fail() for the encoders: fills *error (when given) and returns no file.
inline std::optional<HMKEncodedDesign> refuse(HMKError* error, int code, std::string_view text) {
    fail(error, code, text);
    return std::nullopt;
}

// Each is given a design that has stitches, whose moves optimizeJumpsFor has kept within the
// format's reach, and that has one thread per colour block. The hoop-bound formats (JEF, PCS)
// leave the hoop their check chose in the design, as the written file names it.
std::optional<HMKEncodedDesign> encodeDstDesign(HMKDesign& design, HMKError* error);
std::optional<HMKEncodedDesign> encodePesDesign(HMKDesign& design, HMKError* error);
std::optional<HMKEncodedDesign> encodePecDesign(HMKDesign& design, HMKError* error);
std::optional<HMKEncodedDesign> encodeJefDesign(HMKDesign& design, HMKError* error);
std::optional<HMKEncodedDesign> encodeExpDesign(HMKDesign& design, HMKError* error);
std::optional<HMKEncodedDesign> encodePcsDesign(HMKDesign& design, HMKError* error);
