// The in-memory file every writer builds before its one atomic write: appends of bytes,
// text and little-endian integers, and patches of fields whose value is known only at the
// end (counts, offsets, lengths). Used by all writers in formats/write/.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

class HMKByteWriter {
public:
    explicit HMKByteWriter(std::size_t expectedSize = 0) { bytes_.reserve(expectedSize); }

    // --- Appending -----------------------------------------------------------------------
    void byte(std::uint8_t value) { bytes_.push_back(value); }
    void bytes(std::initializer_list<std::uint8_t> values) {
        bytes_.insert(bytes_.end(), values.begin(), values.end());
    }
    void repeat(std::uint8_t value, std::size_t count) {
        bytes_.insert(bytes_.end(), count, value);
    }
    // One byte per character; callers convert the text to the file's one-byte encoding first.
    void text(std::string_view characters) {
        bytes_.insert(bytes_.end(), characters.begin(), characters.end());
    }
    void le16(std::int32_t value) { appendLittleEndian(static_cast<std::uint32_t>(value), 2); }
    void le24(std::uint32_t value) { appendLittleEndian(value, 3); }
    void le32(std::int32_t value) { appendLittleEndian(static_cast<std::uint32_t>(value), 4); }
    void leFloat(float value);

    // --- Patching fields written earlier ---------------------------------------------------
    void patchLe16(std::size_t offset, std::int32_t value) {
        patchLittleEndian(offset, static_cast<std::uint32_t>(value), 2);
    }
    void patchLe24(std::size_t offset, std::uint32_t value) { patchLittleEndian(offset, value, 3); }
    void patchLe32(std::size_t offset, std::int32_t value) {
        patchLittleEndian(offset, static_cast<std::uint32_t>(value), 4);
    }
    void patchText(std::size_t offset, std::string_view characters) {
        for (std::size_t i = 0; i < characters.size(); ++i) {
            bytes_[offset + i] = static_cast<std::uint8_t>(characters[i]);
        }
    }

    std::size_t size() const { return bytes_.size(); }
    const std::vector<std::uint8_t>& data() const { return bytes_; }
    std::vector<std::uint8_t> take() { return std::move(bytes_); }

private:
    void appendLittleEndian(std::uint32_t value, int width) {
        for (int i = 0; i < width; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    }
    void patchLittleEndian(std::size_t offset, std::uint32_t value, int width) {
        for (int i = 0; i < width; ++i) {
            bytes_[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }

    std::vector<std::uint8_t> bytes_;
};

inline void HMKByteWriter::leFloat(float value) {
    appendLittleEndian(std::bit_cast<std::uint32_t>(value), 4);
}
