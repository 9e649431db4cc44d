// Builders for the small files the reader tests decode, laid out byte by byte from the format
// tables, a scratch folder for tests that go through the file system, and short ways to state
// what a reader should have made of a file.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"

using Bytes = std::vector<std::uint8_t>;
using Stitches = std::vector<HMKStitch>;
using Bounds = std::array<float, 4>;  // xMin, yMin, xMax, yMax

inline void PrintTo(const HMKStitch& stitch, std::ostream* out) {
    *out << stitch.description();
}

inline HMKStitch plain(float dx, float dy) {
    return HMKStitch(dx, dy, false, false);
}
inline HMKStitch jump(float dx, float dy) {
    return HMKStitch(dx, dy, true, false);
}
inline HMKStitch change(float dx, float dy, bool isJump = false) {
    return HMKStitch(dx, dy, isJump, true);
}

// One letter per stitch: S(titch), J(ump), C(olour change), X (colour change flagged as jump).
inline std::string kindsOf(const Stitches& stitches) {
    std::string kinds;
    for (const auto& stitch : stitches)
        kinds += "SJCX"[stitch.isJumpStitch + 2 * stitch.isColorChange];
    return kinds;
}

inline Bounds boundsOf(const HMKDesign& design) {
    return {design.xMin(), design.yMin(), design.xMax(), design.yMax()};
}

// --- Bytes -----------------------------------------------------------------------------------
inline void appendBytes(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
    bytes.insert(bytes.end(), more);
}
inline void putLe(Bytes& bytes, std::size_t offset, std::int64_t value, std::size_t width = 4) {
    for (std::size_t i = 0; i < width; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> 8 * i);
}

// A file's bytes, appended field by field in the order the format lays them out.
class DesignBytes {
public:
    DesignBytes& bytes(const Bytes& values) {
        data_.insert(data_.end(), values.begin(), values.end());
        return *this;
    }
    DesignBytes& zeros(std::size_t count) { return bytes(Bytes(count, 0)); }
    DesignBytes& padTo(std::size_t offset) { return zeros(offset - std::min(offset, size())); }
    DesignBytes& text(std::string_view value) { return bytes(Bytes(value.begin(), value.end())); }
    DesignBytes& u16le(std::uint32_t value) { return number(value, 2, false); }
    DesignBytes& u24le(std::uint32_t value) { return number(value, 3, false); }
    DesignBytes& u16be(std::uint32_t value) { return number(value, 2, true); }
    DesignBytes& u32be(std::uint32_t value) { return number(value, 4, true); }
    // Lengths known only at the end.
    DesignBytes& patchU32be(std::size_t offset, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            data_.at(offset + i) = static_cast<std::uint8_t>(value >> 8 * (3 - i));
        return *this;
    }
    DesignBytes& truncate(std::size_t size) {
        data_.resize(size);
        return *this;
    }
    std::size_t size() const { return data_.size(); }
    operator const Bytes&() const { return data_; }

private:
    DesignBytes& number(std::uint32_t value, std::size_t width, bool bigEndian) {
        for (std::size_t i = 0; i < width; ++i)
            data_.push_back(
                static_cast<std::uint8_t>(value >> 8 * (bigEndian ? width - 1 - i : i)));
        return *this;
    }
    Bytes data_;
};

// --- DST -------------------------------------------------------------------------------------
inline constexpr std::string_view kDstAllTags =
    "LA:rose            \rST:      1\rCO:  0\r+X:    0\r-X:    0\r+Y:    0\r-Y:    0\r"
    "AX:+    0\rAY:+    0\r";

// A 512-byte header holding headerText, padded with blanks.
inline Bytes dstHeader(std::string_view headerText = kDstAllTags) {
    Bytes bytes(512, ' ');
    std::copy(headerText.begin(), headerText.end(), bytes.begin());
    return bytes;
}

// Header, the records as given, then the end record and the usual 0x1A trailer.
inline Bytes dstFile(std::initializer_list<std::initializer_list<std::uint8_t>> records) {
    Bytes bytes = dstHeader();
    for (auto record : records)
        appendBytes(bytes, record);
    appendBytes(bytes, {0x00, 0x00, 0xF3, 0x1A});
    return bytes;
}

// --- JEF / JPX -------------------------------------------------------------------------------
struct JanomeFileLayout {
    std::vector<std::int32_t> colorCodes = {2};
    std::vector<std::int32_t> tensions = {13};
    Bytes stitches = {0x80, 0x10};
    std::int8_t version = 1;
    std::int32_t hoopCode = 0;
};

// Stitch offset at 0 and version at 4 in both; JEF keeps the colour count at 24, the hoop at 32
// and the codes (then tensions) at 116, JPX at 32, 40 and 60, with stitch data from byte 120 on.
inline Bytes janomeFile(const JanomeFileLayout& layout, bool jpx) {
    const std::size_t n = layout.colorCodes.size();
    const std::size_t codesAt = jpx ? 60 : 116;
    Bytes bytes(std::max<std::size_t>(jpx ? 120 : 0, codesAt + 4 * (n + layout.tensions.size())));
    putLe(bytes, 0, static_cast<std::int64_t>(bytes.size()));
    bytes[4] = static_cast<std::uint8_t>(layout.version);
    putLe(bytes, jpx ? 32 : 24, static_cast<std::int64_t>(n));
    putLe(bytes, jpx ? 40 : 32, layout.hoopCode);
    for (std::size_t i = 0; i < n; ++i)
        putLe(bytes, codesAt + 4 * i, layout.colorCodes[i]);
    for (std::size_t i = 0; i < layout.tensions.size(); ++i)
        putLe(bytes, codesAt + 4 * (n + i), layout.tensions[i]);
    bytes.insert(bytes.end(), layout.stitches.begin(), layout.stitches.end());
    return bytes;
}
inline Bytes jefFile(const JanomeFileLayout& layout) {
    return janomeFile(layout, false);
}
inline Bytes jpxFile(const JanomeFileLayout& layout) {
    return janomeFile(layout, true);
}

// --- Files -----------------------------------------------------------------------------------
// A fresh folder under the system's temporary folder, removed with everything in it.
class ScratchFolder {
public:
    ScratchFolder() {
        std::random_device random;
        path_ = std::filesystem::temp_directory_path() /
                ("hemlark-read-test-" + std::to_string(random()) + std::to_string(random()));
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path file(std::string_view name) const { return path_ / name; }
    std::filesystem::path write(std::string_view name, std::string_view bytes) const {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }
    std::filesystem::path write(std::string_view name, const Bytes& bytes) const {
        return write(name,
                     std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

private:
    std::filesystem::path path_;
};

// The outcome of reading one file into a fresh design.
struct ReadOutcome {
    bool ok = false;
    HMKDesign design;
    HMKError error;
};

// The reader failed with the design error of that code and text.
inline void expectFailure(const ReadOutcome& read, int code, std::string_view text) {
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(read.error.code, code);
    EXPECT_EQ(read.error.recoverySuggestion, text);
}

// Reads through a reader that takes the bytes (...FromData) or, given an extension, through one
// that takes a file (...FromURL).
template <typename Reader>
ReadOutcome readWith(Reader reader, const Bytes& bytes) {
    ReadOutcome outcome;
    outcome.ok = reader(outcome.design, bytes, &outcome.error);
    return outcome;
}
using DesignReader = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);
inline ReadOutcome readFile(DesignReader reader, const Bytes& bytes, std::string_view extension) {
    ScratchFolder folder;
    ReadOutcome outcome;
    const auto path = folder.write("design." + std::string(extension), bytes);
    outcome.ok = (outcome.design.*reader)(path, &outcome.error);
    return outcome;
}
