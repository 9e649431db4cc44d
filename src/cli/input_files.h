// The files a command reads. Before a reader runs, the tool checks that the input is a
// regular file it may read and that its extension names a design format, so the user hears
// the operating system's reason ("No such file or directory") rather than a reader's "file too
// small"; after reading it notes what looks wrong with the file. HMKInputFiles remembers the
// inputs by identity, so that no output replaces one of them.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "cli/outcome.h"
#include "model/design.h"

// Reads path into design. Fails with an operating-system error, error 10 for an extension no
// reader takes, or the reader's error; on success adds warnings about the file (a DST file
// shorter than its header says).
bool readDesignFile(const std::filesystem::path& path, HMKDesign& design, HMKWarnings& warnings,
                    HMKError* error);

// A warning when the design fits no hoop of the catalog: readers accept what their format
// allows, and random bytes read as a design of several metres are allowed by some formats.
std::optional<std::string> implausibleSizeWarning(const HMKDesign& design);

class HMKInputFiles {
public:
    // Remembers an input (nothing when it does not exist).
    void add(const std::filesystem::path& input);

    // False with a command-line error when writing output would replace one of the inputs;
    // with inPlace, output may be its own input (the design is read before it is written).
    bool mayWrite(const std::filesystem::path& output, const std::filesystem::path& input,
                  bool inPlace, HMKError* error) const;

private:
    std::set<std::pair<dev_t, ino_t>> identities_;
};
