#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/file_io.h"

namespace {

std::atomic<int> umaskCalls = 0;

}  // namespace

// Counts the calls the code under test makes (it links against this definition first), then
// asks the kernel as the C library would.
extern "C" mode_t umask(mode_t mask) {
    ++umaskCalls;
    return static_cast<mode_t>(::syscall(SYS_umask, mask));
}

TEST(FileIo, WritesNeverTouchTheProcessUmask) {
    // Setting the umask for a moment would give files made by other threads mode 0666, so it
    // is read once at start-up and a new file still gets the usual permissions.
    const auto file =
        std::filesystem::temp_directory_path() / ("hemlark-file-io-" + std::to_string(::getpid()));
    const mode_t mask = static_cast<mode_t>(::syscall(SYS_umask, 022));
    const int callsBefore = umaskCalls;
    const std::vector<std::uint8_t> bytes = {1, 2, 3};
    ASSERT_TRUE(writeFileAtomically(file, bytes));
    EXPECT_EQ(umaskCalls, callsBefore);
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0666 & ~mask);
    std::filesystem::remove(file);
    ::syscall(SYS_umask, mask);
}

TEST(FileIo, ReadsOnlyRegularFiles) {
    // A device reads as endless or empty bytes and a FIFO waits for a writer: neither is a
    // design file, so both are refused before a byte is read.
    const std::vector<std::pair<std::filesystem::path, std::string>> cases = {
        {"/dev/null", "/dev/null: Not a regular file"},
        {"/", "/: Is a directory"},
    };
    for (const auto& [path, reason] : cases) {
        HMKError error;
        EXPECT_FALSE(readWholeFile(path, &error)) << path;
        EXPECT_EQ(error.recoverySuggestion, reason);
    }
}
