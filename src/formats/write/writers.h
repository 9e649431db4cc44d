// The in-memory encoders of the writable formats, one per format family file. Each checks the
// format's own limits and builds the whole file; none touches the disk. The export dispatcher
// (exportDesignToURL) runs the checks every writer relies on before them, writes the bytes
// atomically once, and then makes the design match what the file holds. Fuzzers and
// benchmarks call the encoders directly.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"

struct HMKEncodedDesign {
    std::vector<std::uint8_t> bytes;
    // Turns the design's threads into those the file holds (placeholders, a vendor's palette,
    // bare colours) once the file is written; none when the design keeps its own threads
    // because a thread side file holds them.
    std::function<void(std::vector<HMKThread>&)> threadsAsWritten;
};

// The file exportDesignToURL writes, without writing it: the design is normalised for the
// format of a writable extension ("dst", "pes", ...), checked as every writer needs it and
// encoded. Fails as the export does: 50 for another extension, 15 when cutting the long moves
// would make too many stitches, 14 when no stitch is left, 16 when the threads do not match
// the colour blocks, then with the format's own errors.
std::optional<HMKEncodedDesign> encodeDesignForExtension(HMKDesign& design,
                                                         std::string_view extension,
                                                         HMKError* error);

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
