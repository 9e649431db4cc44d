// Readers that decode a file's bytes already in memory. Each importXxxDesignFromURL reads the
// whole file and hands its bytes to the function here; fuzzers and benchmarks call these
// directly so that decoding needs no file I/O. A file that cannot be read arrives as no bytes
// and fails with the reader's own "too short" error.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"

// Tajima DST.
bool importDstDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error = nullptr);

// Brother PES and PEC.
bool importPesDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error = nullptr);
bool importPecDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error = nullptr);

// Janome JEF and JPX. The JEF design type and version depend on the file's extension
// ("jef" or "jef+", lower-cased, without the dot).
bool importJefDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             std::string_view extension, HMKError* error = nullptr);
bool importJpxDesignFromData(HMKDesign& design, std::span<const std::uint8_t> bytes,
                             HMKError* error = nullptr);

// The bytes of a whole-file read; none when the file could not be read.
inline std::span<const std::uint8_t> bytesOrNone(
    const std::optional<std::vector<std::uint8_t>>& file) {
    return file ? std::span<const std::uint8_t>(*file) : std::span<const std::uint8_t>();
}

