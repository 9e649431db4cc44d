// Builders for the small files the reader tests decode, laid out byte by byte from the format
// tables, and a scratch folder for tests that go through the file system.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "model/design.h"

using Bytes = std::vector<std::uint8_t>;

inline void appendBytes(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
    bytes.insert(bytes.end(), more);
}
inline void appendBytes(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}
inline void appendText(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}
inline void putLe16(Bytes& bytes, std::size_t offset, std::int32_t value) {
    bytes[offset] = static_cast<std::uint8_t>(value);
    bytes[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}
inline void putLe24(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 3; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
}
inline void putLe32(Bytes& bytes, std::size_t offset, std::int32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[offset + i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> 8 * i);
    }
}

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

// --- PEC / PES -------------------------------------------------------------------------------
struct PecSegmentLayout {
    std::vector<std::uint8_t> colorIndexes = {20};
    std::int16_t width = 0;
    std::int16_t height = 0;
    // Start position as two long-form coordinates (x then y).
    Bytes start = {0x90, 0x00, 0x90, 0x00};
    // Stitch records after the start position, including the end byte 0xFF when wanted.
    Bytes stitches = {0xFF};
    std::size_t stitchOffset = 525;
    // Bytes after the stitch data (the thumbnails).
    std::size_t thumbnailSize = 4;
};

// A segment as it follows "LA:": label, colour list, graphic header, stitch data, thumbnails.
// The thumbnail offset points right after the stitch data.
inline Bytes pecSegment(const PecSegmentLayout& layout) {
    Bytes bytes(layout.stitchOffset, 0x20);
    const std::string_view label = "rose            ";
    std::copy(label.begin(), label.end(), bytes.begin());
    bytes[45] = static_cast<std::uint8_t>(layout.colorIndexes.size() - 1);
    for (std::size_t i = 0; i < layout.colorIndexes.size(); ++i) {
        bytes[46 + i] = layout.colorIndexes[i];
    }
    for (std::size_t offset = 509; offset < layout.stitchOffset; ++offset)
        bytes[offset] = 0;
    putLe16(bytes, 517, layout.width);
    putLe16(bytes, 519, layout.height);
    appendBytes(bytes, layout.start);
    appendBytes(bytes, layout.stitches);
    putLe24(bytes, 511, static_cast<std::uint32_t>(bytes.size() - 509));
    bytes.resize(bytes.size() + layout.thumbnailSize, 0x00);
    return bytes;
}

inline Bytes pecFile(const Bytes& segment, std::string_view magicAndVersion = "#PEC0001") {
    Bytes bytes;
    appendText(bytes, magicAndVersion);
    appendText(bytes, "LA:");
    appendBytes(bytes, segment);
    return bytes;
}

// "#PES", the version digits, a small PES header (the PEC offset, then headerRest), then the
// PEC section.
inline Bytes pesFile(const Bytes& segment, std::string_view versionDigits = "0001",
                     const Bytes& headerRest = {0x01, 0x00, 0x00, 0x00}) {
    Bytes bytes;
    appendText(bytes, "#PES");
    appendText(bytes, versionDigits);
    appendBytes(bytes, {0x00, 0x00, 0x00, 0x00});
    appendBytes(bytes, headerRest);
    putLe32(bytes, 8, static_cast<std::int32_t>(bytes.size()));
    appendText(bytes, "LA:");
    appendBytes(bytes, segment);
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

// JEF: stitch offset at 0, version at 4, n at 24, hoop at 32, codes at 116, tensions after.
inline Bytes jefFile(const JanomeFileLayout& layout) {
    const std::size_t n = layout.colorCodes.size();
    Bytes bytes(116 + 4 * n + 4 * layout.tensions.size(), 0);
    putLe32(bytes, 0, static_cast<std::int32_t>(bytes.size()));
    bytes[4] = static_cast<std::uint8_t>(layout.version);
    putLe32(bytes, 24, static_cast<std::int32_t>(n));
    putLe32(bytes, 32, layout.hoopCode);
    for (std::size_t i = 0; i < n; ++i)
        putLe32(bytes, 116 + 4 * i, layout.colorCodes[i]);
    for (std::size_t i = 0; i < layout.tensions.size(); ++i) {
        putLe32(bytes, 116 + 4 * n + 4 * i, layout.tensions[i]);
    }
    appendBytes(bytes, layout.stitches);
    return bytes;
}

// JPX: stitch offset at 0, version at 4, n at 32, hoop at 40, codes at 60, tensions after; the
// stitch data starts no earlier than byte 120 so that the file has its meta data.
inline Bytes jpxFile(const JanomeFileLayout& layout) {
    const std::size_t n = layout.colorCodes.size();
    Bytes bytes(std::max<std::size_t>(120, 60 + 4 * n + 4 * layout.tensions.size()), 0);
    putLe32(bytes, 0, static_cast<std::int32_t>(bytes.size()));
    bytes[4] = static_cast<std::uint8_t>(layout.version);
    putLe32(bytes, 32, static_cast<std::int32_t>(n));
    putLe32(bytes, 40, layout.hoopCode);
    for (std::size_t i = 0; i < n; ++i)
        putLe32(bytes, 60 + 4 * i, layout.colorCodes[i]);
    for (std::size_t i = 0; i < layout.tensions.size(); ++i) {
        putLe32(bytes, 60 + 4 * n + 4 * i, layout.tensions[i]);
    }
    appendBytes(bytes, layout.stitches);
    return bytes;
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

    std::filesystem::path write(std::string_view name, const Bytes& bytes) const {
        const auto path = file(name);
        std::ofstream stream(path, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(bytes.data()),
                     static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    std::filesystem::path write(std::string_view name, std::string_view text) const {
        return write(name, Bytes(text.begin(), text.end()));
    }

  private:
    std::filesystem::path path_;
};
