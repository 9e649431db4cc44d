#include "document/volume_cleanup.h"

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

namespace fs = std::filesystem;

namespace {

// Folders nest only so deep on a stick; deeper trees are left rather than risk running out
// of file descriptors.
constexpr int kMaximumDepth = 64;

enum class StepKind {
    // Entries at the root whose names match, removed with everything inside them.
    rootEntries,
    // Regular files anywhere whose names match.
    filesAnywhere,
};

struct Step {
    StepKind kind;
    std::vector<const char*> patterns;
};

const std::vector<Step>& cleanupSteps() {
    static const std::vector<Step> steps{
        {StepKind::rootEntries, {".Trashes"}},
        {StepKind::rootEntries, {".fseventsd"}},
        {StepKind::rootEntries, {".Spotlight-V100"}},
        {StepKind::rootEntries, {".Trash-*"}},
        // Some systems write ".DS_Store", and older notes about them ".DSStore".
        {StepKind::filesAnywhere, {".DS_Store", ".DSStore"}},
        {StepKind::filesAnywhere, {"._*"}},
    };
    return steps;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

// Opens the folder name inside parent for reading, without following a link. Each call gets
// a reading position of its own, so steps never disturb each other's listing.
Directory openDirectory(int parent, const char* name) {
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    DIR* directory = ::fdopendir(descriptor);
    if (directory == nullptr) {
        ::close(descriptor);
    }
    return Directory(directory);
}

bool isDotEntry(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// One step's work, shared with its thread so that an abandoned step can still finish safely.
struct StepRun {
    Step step;
    fs::path root;
    // The root folder, open for the step's thread (closed with the run).
    Directory rootDirectory;
    dev_t device = 0;
    std::function<void(const fs::path&)> beforeRemoving;
    std::atomic<bool> stop{false};
    std::size_t removed = 0;
    std::vector<std::string> failures;
    std::promise<void> finished;

    bool matches(const char* name) const {
        for (const char* pattern : step.patterns) {
            if (::fnmatch(pattern, name, 0) == 0) {
                return true;
            }
        }
        return false;
    }

    void fail(const fs::path& path, int error) {
        failures.push_back(path.string() + ": " + std::strerror(error));
    }

    // Removes the entry name of the folder parent (shown as path) and, for a folder on this
    // file system, everything inside it. Links are removed as links, never followed.
    bool removeEntry(int parent, const char* name, const fs::path& path, int depth) {
        struct stat status {};
        if (stop || ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return false;
        }
        const bool folder = S_ISDIR(status.st_mode);
        if (folder && !emptyFolder(parent, name, path, depth)) {
            return false;
        }
        if (beforeRemoving) {
            beforeRemoving(path);
        }
        if (stop) {
            return false;
        }
        if (::unlinkat(parent, name, folder ? AT_REMOVEDIR : 0) != 0) {
            fail(path, errno);
            return false;
        }
        ++removed;
        return true;
    }

    bool emptyFolder(int parent, const char* name, const fs::path& path, int depth) {
        Directory directory = openDirectory(parent, name);
        struct stat status {};
        if (!directory || ::fstat(::dirfd(directory.get()), &status) != 0) {
            fail(path, errno);
            return false;
        }
        // Another file system mounted inside the volume is not the volume's to clean.
        if (status.st_dev != device || depth >= kMaximumDepth) {
            fail(path, EXDEV);
            return false;
        }
        bool emptied = true;
        while (const dirent* entry = ::readdir(directory.get())) {
            if (!isDotEntry(entry->d_name)) {
                emptied = removeEntry(::dirfd(directory.get()), entry->d_name, path / entry->d_name,
                                      depth + 1) &&
                          emptied;
            }
        }
        return emptied;
    }

    // Removes the matching regular files in the folder and, on this file system, below it.
    void removeFiles(DIR* directory, const fs::path& path, int depth) {
        const int folder = ::dirfd(directory);
        while (const dirent* entry = ::readdir(directory)) {
            const char* name = entry->d_name;
            struct stat status {};
            if (stop) {
                return;
            }
            if (isDotEntry(name) || ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
                continue;
            }
            if (S_ISREG(status.st_mode) && matches(name)) {
                removeEntry(folder, name, path / name, depth);
            } else if (S_ISDIR(status.st_mode) && status.st_dev == device &&
                       depth < kMaximumDepth) {
                if (Directory child = openDirectory(folder, name)) {
                    removeFiles(child.get(), path / name, depth + 1);
                }
            }
        }
    }

    void run() {
        if (step.kind == StepKind::filesAnywhere) {
            removeFiles(rootDirectory.get(), root, 0);
            return;
        }
        const int folder = ::dirfd(rootDirectory.get());
        while (const dirent* entry = ::readdir(rootDirectory.get())) {
            struct stat status {};
            if (stop) {
                return;
            }
            // A link named like a housekeeping folder is not the folder: it stays, and what
            // it points to is never looked at.
            if (matches(entry->d_name) &&
                ::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                !S_ISLNK(status.st_mode)) {
                removeEntry(folder, entry->d_name, root / entry->d_name, 0);
            }
        }
    }
};

}  // namespace

HMKCleanupResult cleanVolume(const fs::path& root, const HMKCleanupOptions& options) {
    HMKCleanupResult result;
    // The root itself may be reached through a link (a folder given on the command line).
    Directory rootDirectory(::opendir(root.c_str()));
    struct stat rootStatus {};
    if (!rootDirectory || ::fstat(::dirfd(rootDirectory.get()), &rootStatus) != 0) {
        result.failures.push_back(root.string() + ": " + std::strerror(errno));
        return result;
    }
    for (const Step& step : cleanupSteps()) {
        auto run = std::make_shared<StepRun>();
        run->step = step;
        run->root = root;
        run->rootDirectory = openDirectory(::dirfd(rootDirectory.get()), ".");
        run->device = rootStatus.st_dev;
        run->beforeRemoving = options.beforeRemoving;
        if (!run->rootDirectory) {
            result.failures.push_back(root.string() + ": " + std::strerror(errno));
            continue;
        }
        std::future<void> finished = run->finished.get_future();
        try {
            std::thread([run] {
                run->run();
                run->finished.set_value();
            }).detach();
        } catch (const std::system_error&) {
            result.stalled = true;
            continue;
        }
        // An overrunning step keeps its thread until it notices the stop (or its blocked
        // call returns); the export goes on without it.
        if (finished.wait_for(options.stepTimeLimit) != std::future_status::ready) {
            run->stop = true;
            result.stalled = true;
            continue;
        }
        result.removedEntries += run->removed;
        result.failures.insert(result.failures.end(), run->failures.begin(), run->failures.end());
    }
    return result;
}
