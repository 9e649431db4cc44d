#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <set>
#include <thread>

#include "document/volume_cleanup.h"
#include "support/test_support.h"

namespace fs = std::filesystem;

namespace {

class VolumeCleanupTest : public ::testing::Test {
protected:
    void file(const fs::path& path) {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path) << "x";
    }
    // Every entry below the root, links as links.
    std::set<std::string> entries() const {
        std::set<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(root_)) {
            names.insert(entry.path().lexically_relative(root_).string());
        }
        return names;
    }

    ScratchFolder folder_;
    const fs::path top_ = folder_.path();
    const fs::path root_ = top_ / "STICK";
    const fs::path outside_ = top_ / "HOME";
};

}  // namespace

TEST_F(VolumeCleanupTest, RemovesHousekeepingFilesButNothingElseAndNoLinkTarget) {
    for (const char* junk :
         {".Trashes/501/old.jef", ".fseventsd/0000000012345", ".DS_Store",
          ".Spotlight-V100/Store-V2/index", ".Trash-1000/files/y.jef", "EMB/.DS_Store",
          "EMB/EmbF/.DSStore", "EMB/EmbF/._rose.jef", "._EMB"}) {
        file(junk);
    }
    for (const char* kept : {"EMB/EmbF/rose.jef", "EMB/._folder/keep.jef", "EMB/Trashes"}) {
        file(kept);
    }
    fs::create_directories(outside_ / ".Trash-1000");
    std::ofstream(outside_ / "._keep") << "x";
    std::ofstream(outside_ / ".DS_Store") << "x";
    // Links named like housekeeping entries, and one to a folder holding such files.
    fs::create_directory_symlink(outside_, root_ / ".Trash-999");
    fs::create_symlink(outside_ / "._keep", root_ / "EMB" / "._link");
    fs::create_directory_symlink(outside_, root_ / "EMB" / "home");

    const HMKCleanupResult result = cleanVolume(root_);
    EXPECT_FALSE(result.stalled);
    EXPECT_TRUE(result.failures.empty());
    EXPECT_EQ(result.removedEntries, 16u);
    EXPECT_EQ(entries(), (std::set<std::string>{
                             ".Trash-999", "EMB", "EMB/EmbF", "EMB/EmbF/rose.jef", "EMB/._folder",
                             "EMB/._folder/keep.jef", "EMB/Trashes", "EMB/._link", "EMB/home"}));
    for (const char* name : {".Trash-1000", "._keep", ".DS_Store"}) {
        EXPECT_TRUE(fs::exists(outside_ / name)) << name;
    }
}

TEST_F(VolumeCleanupTest, AnOverrunningStepIsAbandonedAndTheRestStillRuns) {
    file(".fseventsd/slow");
    file("EMB/.DS_Store");
    HMKCleanupOptions options;
    options.stepTimeLimit = std::chrono::milliseconds(50);
    options.beforeRemoving = [](const fs::path& entry) {
        if (entry.filename() == "slow") {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
    };
    const HMKCleanupResult result = cleanVolume(root_, options);
    EXPECT_TRUE(result.stalled);
    EXPECT_FALSE(fs::exists(root_ / "EMB/.DS_Store"));
    // The abandoned step wakes up later and stops without removing anything.
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_TRUE(fs::exists(root_ / ".fseventsd/slow"));
}

TEST_F(VolumeCleanupTest, AMissingVolumeIsAFailureNotAStall) {
    const HMKCleanupResult result = cleanVolume(root_ / "gone");
    EXPECT_FALSE(result.stalled);
    EXPECT_EQ(result.failures.size(), 1u);
}
