// Readers that decode a file's bytes already in memory. Each importXxxDesignFromURL reads the
// whole file and hands its bytes to the function here; fuzzers and benchmarks call these
// directly so that decoding needs no file I/O. A file that cannot be read arrives as no bytes
// and fails with the reader's own "too short" error.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"
#include "model/placeholder_threads.h"

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

// --- Helpers shared by the readers ---------------------------------------------------------
// The bytes of a whole-file read; none when the file could not be read.
inline std::span<const std::uint8_t> bytesOrNone(
    const std::optional<std::vector<std::uint8_t>>& file) {
    return file ? std::span<const std::uint8_t>(*file) : std::span<const std::uint8_t>();
}

// --- Byte-stream formats: EXP, SEW, KSM -----------------------------------------------------
bool importExpDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);
bool importSewDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);
bool importKsmDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);

// --- VP3 (colour sections with their own thread colours and a custom hoop) -----------------
bool importVp3DesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);

// --- PCS, PCD and PCQ (absolute positions in 1/6 mm) ---------------------------------------
bool importPcxDesignFromData(HMKDesign& design, std::span<const std::uint8_t> data,
                             HMKError* error = nullptr);

// --- Shared by the readers ---------------------------------------------------------------

// Appends decoded stitches while keeping the running needle position, summed in single
// precision like the bounds, and widening the bounds after every record: jumps and colour
// changes move the needle too, and the start point itself is not part of the bounds.
class HMKStitchAppender {
public:
    explicit HMKStitchAppender(HMKDesign& design) : design_(design) {}

    void append(const HMKStitch& stitch) {
        design_.stitches().push_back(stitch);
        x_ += stitch.deltaX;
        y_ += stitch.deltaY;
        design_.widenBounds(x_, y_);
    }
    void append(float dx, float dy, bool isJump, bool isColorChange) {
        append(HMKStitch(dx, dy, isJump, isColorChange));
    }
    // The needle position after the last appended stitch.
    float x() const { return x_; }
    float y() const { return y_; }

private:
    HMKDesign& design_;
    float x_ = 0;
    float y_ = 0;
};

// --- Side files ----------------------------------------------------------------------------
// The thread side file that belongs to a design file ("rose.dst" -> "rose.threads"), and so
// to every design file of that name in the folder.
std::filesystem::path threadSideFilePath(const std::filesystem::path& design);
