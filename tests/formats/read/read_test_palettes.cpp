// Small "Brother" and "Janome" palettes for the whole reader test run, so that colour codes
// found in the code tables give palette threads and missing ones fall back as in real files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "model/resources.h"

namespace {

class ReaderTestPalettes : public ::testing::Environment {
public:
    void SetUp() override {
        root_ = std::filesystem::temp_directory_path() /
                ("hemlark-read-palettes-" + std::to_string(std::random_device()()));
        writePalette("Brother", {"005", "007", "086"});
        writePalette("Janome", {"002", "220", "224"});
        setResourceOverrideDirectory(root_);
    }
    void TearDown() override {
        setResourceOverrideDirectory(std::nullopt);
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

private:
    void writePalette(const std::string& palette, std::initializer_list<const char*> keys) {
        const auto folder = root_ / "palettes" / (palette + ".clr");
        std::filesystem::create_directories(folder);
        std::ofstream file(folder / (palette + ".clr"), std::ios::binary);
        file << "header\n";
        int number = 1;
        for (const char* key : keys) {
            file << number << " 0." << number << " 0.5 0.5 0 " << key << "\n";
            ++number;
        }
    }

    std::filesystem::path root_;
};

const auto* const kPalettes = ::testing::AddGlobalTestEnvironment(new ReaderTestPalettes);

}  // namespace
