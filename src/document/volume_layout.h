// Where on a volume a machine finds designs: the rules behind the machine export's save
// dialog, which shows only the places the machine looks in and accepts only names the machine
// will find and read. Paths are taken apart below the volume's mount folder: the first
// component is the top folder, the count of the rest the sub-folder depth.
//
//     HMKVolumeLayout layout("/media/anna/STICK", "STICK", *HMKMachine::fromIdent(1));
//     layout.defaultFolder();                                 // /media/anna/STICK/EMB/EmbF/
//     layout.refusal("/media/anna/STICK/EMB/EmbF/rose.jef");  // "" (valid)
//     layout.refusal("/media/anna/STICK/rose.jef");           // why not, for the user
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <QString>

#include "model/error.h"
#include "model/machine.h"

class HMKVolumeLayout {
public:
    // The volume mounted at volumeRoot (or a plain folder taken as a volume's root); the
    // name is the one the user knows it by.
    HMKVolumeLayout(std::filesystem::path volumeRoot, QString volumeName, HMKMachine machine);

    const std::filesystem::path& volumeRoot() const { return volumeRoot_; }
    const QString& volumeName() const { return volumeName_; }
    const HMKMachine& machine() const { return machine_; }

    // --- Where the dialog opens ------------------------------------------------------------
    // The profile's default folder on the volume ("/media/anna/STICK/EMB/EmbF/").
    std::filesystem::path defaultFolder() const;
    // Creates the default folder and the folders above it when they are missing.
    bool createDefaultFolder(HMKError* error = nullptr) const;
    // Whether the dialog may make new folders: the machine offers several top folders or
    // reads designs only from folders inside them.
    bool allowsNewFolders() const;

    // --- The dialog's two filters -----------------------------------------------------------
    // Whether the dialog lists a file or folder: it lies on the volume, below the root or one
    // of the machine's top folders, not deeper than the machine looks, and (for a folder) it
    // holds fewer entries than the machine reads from one folder.
    bool shouldShow(const std::filesystem::path& entry) const;
    // Why the design may not be saved as file (the user reads it), or an empty text when it
    // may: on the volume, in a top folder at an allowed depth, in a folder that is not full,
    // with an extension (in any case) of a format the machine reads.
    QString refusal(const std::filesystem::path& file) const;

private:
    // The components of path below the volume root; none when it lies elsewhere.
    std::optional<std::vector<std::string>> componentsOnVolume(
        const std::filesystem::path& path) const;
    bool isRootFolder(const std::string& name) const;

    std::filesystem::path volumeRoot_;
    QString volumeName_;
    HMKMachine machine_;
};

// The number of entries in a folder, hidden ones included (0 when it is no folder); machines
// count every entry against their folder limit.
std::size_t folderEntryCount(const std::filesystem::path& folder);
