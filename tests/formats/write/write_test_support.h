// Shared helpers of the writer tests: a scratch folder per test, small designs built stitch
// by stitch, and byte-level helpers for golden files.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "formats/file_io.h"
#include "model/design.h"
#include "model/resources.h"

using Bytes = std::vector<std::uint8_t>;

inline Bytes bytesOf(std::initializer_list<int> values) {
    return Bytes(values.begin(), values.end());
}
inline Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}
inline void append(Bytes& to, const Bytes& more) {
    to.insert(to.end(), more.begin(), more.end());
}
inline Bytes slice(const Bytes& bytes, std::size_t offset, std::size_t length) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                 bytes.begin() + static_cast<std::ptrdiff_t>(offset + length));
}
inline std::int32_t le32At(const Bytes& bytes, std::size_t offset) {
    return static_cast<std::int32_t>(bytes[offset] | bytes[offset + 1] << 8 |
                                     bytes[offset + 2] << 16 |
                                     static_cast<std::uint32_t>(bytes[offset + 3]) << 24);
}

inline HMKThread makeThread(const std::string& key, const std::string& palette,
                            HMKColor color = HMKColor()) {
    return HMKThread(color, "Thread " + key, key, palette, palette);
}
inline std::vector<HMKThread> placeholderThreads(std::size_t count) {
    return std::vector<HMKThread>(count, makeThread("1", "Undefined"));
}

// A design of the given stitches and threads with its bounds computed from the stitches.
inline HMKDesign makeDesign(std::vector<HMKStitch> stitches, std::vector<HMKThread> threads,
                            const std::string& name = "Test.dst") {
    HMKDesign design;
    design.setStitches(std::move(stitches));
    design.setThreads(std::move(threads));
    design.setDesignName(name);
    design.recomputeBounds();
    return design;
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

// The writer refused with the design error of that code and text.
inline void expectRefusal(const HMKError& error, int code, std::string_view text) {
    EXPECT_EQ(error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(error.code, code);
    EXPECT_EQ(error.message(), text);
}

// A fresh scratch folder per test, removed afterwards.
class WriterTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "hemlark-write-XXXXXX");
        folder_ = ::mkdtemp(pattern.data());
    }
    void TearDown() override {
        if (palettesInstalled_) {
            setResourceOverrideDirectory(std::nullopt);
        }
        std::filesystem::remove_all(folder_);
    }

    std::filesystem::path file(const std::string& name) const { return folder_ / name; }
    static Bytes read(const std::filesystem::path& path) {
        return readWholeFile(path).value_or(Bytes{});
    }
    static void writeExisting(const std::filesystem::path& path, const Bytes& bytes) {
        ASSERT_TRUE(writeFileAtomically(path, bytes));
    }
    // The names in the scratch folder, to show that no temporary file was left behind.
    std::vector<std::string> folderContents() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // Installs small "Brother" and "Janome" palettes (three threads each, distinct reds) in the
    // scratch folder for the rest of the test, so thread conversion has something to match.
    void installTestPalettes() {
        const auto root = folder_ / "resources";
        for (const auto& [palette, keys] :
             {std::pair<std::string, std::vector<std::string>>{"Brother", {"005", "620", "007"}},
              {"Janome", {"001", "208", "220"}}}) {
            const auto dir = root / "palettes" / (palette + ".clr");
            std::filesystem::create_directories(dir);
            std::string text = "header\n";
            for (std::size_t i = 0; i < keys.size(); ++i) {
                text += std::to_string(i + 1) + " 0." + std::to_string(i + 1) + " 0.5 0.5 0 " +
                        keys[i] + "\n";
            }
            writeExisting(dir / (palette + ".clr"), Bytes(text.begin(), text.end()));
        }
        setResourceOverrideDirectory(root);
        palettesInstalled_ = true;
    }

    std::filesystem::path folder_;
    bool palettesInstalled_ = false;
};
