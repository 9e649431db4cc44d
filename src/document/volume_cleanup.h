// The clean-up of a machine's volume after an export: other systems leave housekeeping files
// on sticks (".Trashes", ".fseventsd", ".Spotlight-V100", ".DS_Store" and "._name" files,
// Linux desktops' ".Trash-1000" folders) that machines list as junk designs or count against
// their folder limits. The machine export removes them before ejecting.
//
// Each step runs in a thread of its own under a time limit: a stick that hangs must not hang
// the export, so a step that overruns is abandoned and the volume is reported as not cleaned
// (and is then not ejected). Removal never follows a symbolic link and never leaves the
// volume's file system; nothing outside the root is touched.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

struct HMKCleanupOptions {
    // How long one step may take before it is abandoned.
    std::chrono::milliseconds stepTimeLimit{2000};
    // Runs in the step's thread before each entry is removed (tests slow a step down with it).
    std::function<void(const std::filesystem::path& entry)> beforeRemoving;
};

struct HMKCleanupResult {
    // A step overran its time limit and was abandoned; housekeeping files may remain.
    bool stalled = false;
    // Files, links and folders removed by the steps that finished.
    std::size_t removedEntries = 0;
    // Entries the finished steps could not remove, with the reason.
    std::vector<std::string> failures;
};

// Removes the housekeeping files from the volume (or folder) at root. The steps, in order:
// the folders ".Trashes", ".fseventsd", ".Spotlight-V100" and ".Trash-*" at the root, then
// the files ".DS_Store" and ".DSStore" anywhere, then the files "._*" anywhere. Symbolic
// links named like them are left alone, as is everything on another file system.
HMKCleanupResult cleanVolume(const std::filesystem::path& root,
                             const HMKCleanupOptions& options = {});
