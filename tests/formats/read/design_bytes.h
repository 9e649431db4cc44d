// Helpers for the reader tests: build a file byte by byte, write it to a temporary path and
// read it through one of HMKDesign's import...FromURL methods.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"

// A file's bytes, appended field by field in the order the format lays them out.
class DesignBytes {
  public:
    DesignBytes& bytes(std::initializer_list<int> values) {
        for (int value : values)
            data_.push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    DesignBytes& bytes(const std::vector<std::uint8_t>& values) {
        data_.insert(data_.end(), values.begin(), values.end());
        return *this;
    }
    DesignBytes& zeros(std::size_t count) {
        data_.insert(data_.end(), count, 0);
        return *this;
    }
    // Zeros up to (not including) offset.
    DesignBytes& padTo(std::size_t offset) {
        if (data_.size() < offset)
            zeros(offset - data_.size());
        return *this;
    }
    DesignBytes& text(std::string_view value) {
        data_.insert(data_.end(), value.begin(), value.end());
        return *this;
    }
    DesignBytes& u16le(std::uint32_t value) { return littleEndian(value, 2); }
    DesignBytes& u24le(std::uint32_t value) { return littleEndian(value, 3); }
    DesignBytes& u16be(std::uint32_t value) { return bigEndian(value, 2); }
    DesignBytes& u32be(std::uint32_t value) { return bigEndian(value, 4); }

    // Overwrites four bytes at offset with a big-endian value (lengths known only at the end).
    DesignBytes& patchU32be(std::size_t offset, std::uint32_t value) {
        for (int i = 0; i < 4; ++i) {
            data_.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * (3 - i)));
        }
        return *this;
    }

    // Drops everything from offset on (files cut short).
    DesignBytes& truncate(std::size_t offset) {
        data_.resize(offset);
        return *this;
    }

    std::size_t size() const { return data_.size(); }
    const std::vector<std::uint8_t>& data() const { return data_; }

  private:
    DesignBytes& littleEndian(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            data_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        return *this;
    }
    DesignBytes& bigEndian(std::uint32_t value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            data_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
        return *this;
    }

    std::vector<std::uint8_t> data_;
};

// A file in the temporary folder that is removed again when the test is done with it.
class TemporaryDesignFile {
  public:
    TemporaryDesignFile(const std::vector<std::uint8_t>& data, std::string_view extension) {
        static int counter = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("hemlark-read-test-" + std::to_string(::getpid()) + "-" +
                 std::to_string(counter++) + "." + std::string(extension));
        std::ofstream out(path_, std::ios::binary);
        out.write(reinterpret_cast<const char*>(data.data()),
                  static_cast<std::streamsize>(data.size()));
    }
    ~TemporaryDesignFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryDesignFile(const TemporaryDesignFile&) = delete;
    TemporaryDesignFile& operator=(const TemporaryDesignFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

using DesignReader = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);

// The outcome of reading one file into a fresh design.
struct ReadOutcome {
    bool succeeded = false;
    HMKDesign design;
    HMKError error;
};

inline ReadOutcome readDesign(DesignReader reader, const std::vector<std::uint8_t>& data,
                              std::string_view extension) {
    TemporaryDesignFile file(data, extension);
    ReadOutcome outcome;
    outcome.succeeded = (outcome.design.*reader)(file.path(), &outcome.error);
    return outcome;
}

inline ReadOutcome readDesign(DesignReader reader, const DesignBytes& bytes,
                              std::string_view extension) {
    return readDesign(reader, bytes.data(), extension);
}
