// Bounds-checked reading of a file's bytes, the only way readers look at file contents.
// Every read says whether it fitted; a read past the end yields nothing, never a crash.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

class HMKByteReader {
public:
    explicit HMKByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_.size(); }
    std::span<const std::uint8_t> bytes() const { return bytes_; }

    // True when count bytes starting at offset lie inside the data (overflow-safe).
    bool contains(std::size_t offset, std::size_t count) const {
        return offset <= bytes_.size() && count <= bytes_.size() - offset;
    }

    std::optional<std::uint8_t> u8(std::size_t offset) const {
        if (!contains(offset, 1))
            return std::nullopt;
        return bytes_[offset];
    }
    std::optional<std::int8_t> s8(std::size_t offset) const {
        auto value = u8(offset);
        if (!value)
            return std::nullopt;
        return static_cast<std::int8_t>(*value);
    }
    std::optional<std::uint16_t> u16le(std::size_t offset) const {
        return unsignedValue<std::uint16_t>(offset, 2, false);
    }
    std::optional<std::int16_t> s16le(std::size_t offset) const {
        auto value = u16le(offset);
        if (!value)
            return std::nullopt;
        return static_cast<std::int16_t>(*value);
    }
    std::optional<std::uint16_t> u16be(std::size_t offset) const {
        return unsignedValue<std::uint16_t>(offset, 2, true);
    }
    std::optional<std::int16_t> s16be(std::size_t offset) const {
        auto value = u16be(offset);
        if (!value)
            return std::nullopt;
        return static_cast<std::int16_t>(*value);
    }
    // Unsigned 24-bit little-endian.
    std::optional<std::uint32_t> u24le(std::size_t offset) const {
        return unsignedValue<std::uint32_t>(offset, 3, false);
    }
    std::optional<std::uint32_t> u32le(std::size_t offset) const {
        return unsignedValue<std::uint32_t>(offset, 4, false);
    }
    std::optional<std::int32_t> s32le(std::size_t offset) const {
        auto value = u32le(offset);
        if (!value)
            return std::nullopt;
        return static_cast<std::int32_t>(*value);
    }
    std::optional<std::uint32_t> u32be(std::size_t offset) const {
        return unsignedValue<std::uint32_t>(offset, 4, true);
    }
    std::optional<std::int32_t> s32be(std::size_t offset) const {
        auto value = u32be(offset);
        if (!value)
            return std::nullopt;
        return static_cast<std::int32_t>(*value);
    }

    // count bytes from offset, or none when they do not all lie inside the data.
    std::optional<std::span<const std::uint8_t>> slice(std::size_t offset,
                                                       std::size_t count) const {
        if (!contains(offset, count))
            return std::nullopt;
        return bytes_.subspan(offset, count);
    }
    // The same bytes as Latin-1 text (one character per byte).
    std::optional<std::string_view> text(std::size_t offset, std::size_t count) const {
        auto bytes = slice(offset, count);
        if (!bytes)
            return std::nullopt;
        return std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    }
    // The whole data as Latin-1 text.
    std::string_view allText() const {
        return std::string_view(reinterpret_cast<const char*>(bytes_.data()), bytes_.size());
    }

private:
    template <class T>
    std::optional<T> unsignedValue(std::size_t offset, std::size_t count, bool bigEndian) const {
        if (!contains(offset, count))
            return std::nullopt;
        T value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            std::size_t index = bigEndian ? offset + i : offset + count - 1 - i;
            value = static_cast<T>((value << 8) | bytes_[index]);
        }
        return value;
    }

    std::span<const std::uint8_t> bytes_;
};
