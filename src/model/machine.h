// HMKMachine: the fixed profile of an embroidery machine family, chosen by a small ident. It
// says which formats the machine reads, which volume file systems it accepts, its stitch
// limit and where on the volume it looks for designs. The machine export and `hemlark
// machines` read it; nothing changes a profile after it is built.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class HMKMachine {
public:
    // --- Building ------------------------------------------------------------------------
    // The profile with that ident (0 to 8); none for any other ident.
    static std::optional<HMKMachine> fromIdent(std::int32_t ident);
    // Every profile, in ident order.
    static std::vector<HMKMachine> allMachines();

    // --- Fields (-1 in a limit means no limit) -------------------------------------------
    std::int32_t ident() const { return ident_; }
    // Format tags the machine reads, in order of preference ("JEF", "DST", ...).
    const std::vector<std::string>& allowedFileTypes() const { return allowedFileTypes_; }
    // Volume file-system descriptions as the platform reports them ("MS-DOS (FAT32)").
    const std::vector<std::string>& allowedFileSystems() const { return allowedFileSystems_; }
    std::int32_t maxStitches() const { return maxStitches_; }
    // Top-level folders the machine looks in; none when designs may lie anywhere.
    const std::optional<std::vector<std::string>>& rootFolders() const { return rootFolders_; }
    // Absolute folder on the volume where designs are written by default ("/EMB/EmbF/").
    const std::string& defaultFolder() const { return defaultFolder_; }
    // Allowed depth of sub-folders below a root folder; subfolderMax -1 is unlimited.
    std::int32_t subfolderMin() const { return subfolderMin_; }
    std::int32_t subfolderMax() const { return subfolderMax_; }
    std::int32_t maxFilesPerFolder() const { return maxFilesPerFolder_; }

    // "Ident: 1, Formats: (JEF), max. Stitches: 64000, Filesystems: (...), Root: (EMB), ..."
    std::string description() const;

private:
    HMKMachine() = default;

    std::int32_t ident_ = 0;
    std::vector<std::string> allowedFileTypes_;
    std::vector<std::string> allowedFileSystems_;
    std::int32_t maxStitches_ = -1;
    std::optional<std::vector<std::string>> rootFolders_;
    std::string defaultFolder_;
    std::int32_t subfolderMin_ = 0;
    std::int32_t subfolderMax_ = -1;
    std::int32_t maxFilesPerFolder_ = -1;
};
