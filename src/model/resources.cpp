#include "model/resources.h"

#include <mutex>
#include <system_error>
#include <vector>

namespace {

std::mutex& overrideMutex() {
    static std::mutex mutex;
    return mutex;
}

std::optional<std::filesystem::path>& overrideDirectory() {
    static std::optional<std::filesystem::path> dir;
    return dir;
}

std::uint64_t generation = 0;

std::vector<std::filesystem::path> searchDirectories() {
    std::vector<std::filesystem::path> dirs;
    {
        std::lock_guard lock(overrideMutex());
        if (overrideDirectory()) {
            dirs.push_back(*overrideDirectory());
        }
    }
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        auto prefix = exe.parent_path().parent_path();
        dirs.push_back(prefix / HEMLARK_INSTALL_RESOURCE_DIR);
    }
    dirs.emplace_back(HEMLARK_SOURCE_RESOURCE_DIR);
    return dirs;
}

}  // namespace

std::optional<std::filesystem::path> findResource(std::string_view relativePath) {
    for (const auto& dir : searchDirectories()) {
        std::error_code ec;
        auto candidate = dir / relativePath;
        if (std::filesystem::exists(candidate, ec)) {
            return candidate;
        }
    }
    return std::nullopt;
}

void setResourceOverrideDirectory(std::optional<std::filesystem::path> dir) {
    std::lock_guard lock(overrideMutex());
    overrideDirectory() = std::move(dir);
    ++generation;
}

std::uint64_t resourceGeneration() {
    std::lock_guard lock(overrideMutex());
    return generation;
}
