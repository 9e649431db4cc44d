#include "document/volume_layout.h"

#include <algorithm>
#include <cctype>
#include <system_error>
#include <utility>

#include "document/document_texts.h"
#include "document/machine_profile_texts.h"
#include "model/format_text.h"

namespace fs = std::filesystem;

namespace {

QString formatted(std::string_view key, std::string_view defaultFormat,
                  std::initializer_list<TextArg> args) {
    return QString::fromStdString(formatText(documentText(key, defaultFormat).toStdString(), args));
}

std::string upperCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string lowerCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "EMB/EmbF" from "/EMB/EmbF/".
std::string trimmedFolder(std::string folder) {
    while (!folder.empty() && folder.front() == '/') {
        folder.erase(0, 1);
    }
    while (!folder.empty() && folder.back() == '/') {
        folder.pop_back();
    }
    return folder;
}

QString depthRefusal(const HMKMachine& machine) {
    const HMKMachineFieldTexts fields = machineFieldTexts(machine);
    if (machine.subfolderMax() == 0) {
        return formatted("EXPORT_REFUSED_SUBFOLDER",
                         "This machine finds designs only directly in %@, not in folders "
                         "inside it.",
                         {fields.rootFolders.toStdString()});
    }
    return formatted("EXPORT_REFUSED_DEPTH",
                     "This machine finds designs only in folders %@ level(s) below %@, such "
                     "as %@.",
                     {fields.subFolderRange.toStdString(), fields.rootFolders.toStdString(),
                      trimmedFolder(machine.defaultFolder())});
}

}  // namespace

std::size_t folderEntryCount(const fs::path& folder) {
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(folder, error))) {
        return 0;
    }
    std::size_t count = 0;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        ++count;
    }
    return count;
}

HMKVolumeLayout::HMKVolumeLayout(fs::path volumeRoot, QString volumeName, HMKMachine machine)
    : volumeRoot_(std::move(volumeRoot)),
      volumeName_(std::move(volumeName)),
      machine_(std::move(machine)) {
    volumeRoot_ = volumeRoot_.lexically_normal();
    // "/media/anna/STICK/" and "/media/anna/STICK" are the same root.
    if (!volumeRoot_.has_filename() && volumeRoot_.has_relative_path()) {
        volumeRoot_ = volumeRoot_.parent_path();
    }
}

fs::path HMKVolumeLayout::defaultFolder() const {
    // The profile's folder is absolute on the volume ("/EMB/EmbF/"), so it is appended as text.
    return fs::path(volumeRoot_.string() + machine_.defaultFolder()).lexically_normal();
}

bool HMKVolumeLayout::createDefaultFolder(HMKError* error) const {
    std::error_code failure;
    fs::create_directories(defaultFolder(), failure);
    if (failure) {
        if (error != nullptr) {
            *error = makePosixError(failure.value(), defaultFolder().string());
        }
        return false;
    }
    return true;
}

bool HMKVolumeLayout::allowsNewFolders() const {
    const auto& roots = machine_.rootFolders();
    return (roots && roots->size() >= 2) || machine_.subfolderMin() > 0;
}

std::optional<std::vector<std::string>> HMKVolumeLayout::componentsOnVolume(
    const fs::path& path) const {
    const fs::path relative = path.lexically_normal().lexically_relative(volumeRoot_);
    if (relative.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> components;
    for (const fs::path& component : relative) {
        const std::string name = component.string();
        if (name == "..") {
            return std::nullopt;
        }
        if (!name.empty() && name != ".") {
            components.push_back(name);
        }
    }
    return components;
}

bool HMKVolumeLayout::isRootFolder(const std::string& name) const {
    const auto& roots = machine_.rootFolders();
    return !roots || std::find(roots->begin(), roots->end(), name) != roots->end();
}

bool HMKVolumeLayout::shouldShow(const fs::path& entry) const {
    const auto components = componentsOnVolume(entry);
    if (!components) {
        return false;
    }
    // The volume root itself has no top folder.
    if (!components->empty() && !isRootFolder(components->front())) {
        return false;
    }
    // Depth counts the folders below the top folder; a file is counted like a folder, so
    // the dialog never lists entries below the deepest folder the machine reads.
    const auto depth = static_cast<std::int32_t>(components->size()) - 1;
    if (machine_.subfolderMax() != -1 && depth > machine_.subfolderMax()) {
        return false;
    }
    return machine_.maxFilesPerFolder() == -1 ||
           folderEntryCount(entry) < static_cast<std::size_t>(machine_.maxFilesPerFolder());
}

QString HMKVolumeLayout::refusal(const fs::path& file) const {
    const auto components = componentsOnVolume(file);
    if (!components || components->empty()) {
        return formatted("EXPORT_REFUSED_VOLUME", "Save the design on the volume “%@”.",
                         {volumeName_.toStdString()});
    }
    if (!isRootFolder(components->front())) {
        const QString roots = machineFieldTexts(machine_).rootFolders;
        if (machine_.rootFolders()->size() == 1) {
            return formatted("EXPORT_REFUSED_ROOT",
                             "This machine finds designs only in the folder %@.",
                             {roots.toStdString()});
        }
        return formatted("EXPORT_REFUSED_ROOTS",
                         "This machine finds designs only in the folders %@.",
                         {roots.toStdString()});
    }
    // The depth of the folder that holds the file, below its top folder.
    const auto depth = static_cast<std::int32_t>(components->size()) - 2;
    if (machine_.subfolderMax() != -1 &&
        (depth < machine_.subfolderMin() || depth > machine_.subfolderMax())) {
        return depthRefusal(machine_);
    }
    if (machine_.maxFilesPerFolder() != -1 &&
        folderEntryCount(file.parent_path()) >=
            static_cast<std::size_t>(machine_.maxFilesPerFolder())) {
        return formatted(
            "EXPORT_REFUSED_FULL",
            "The folder “%@” already holds %@ entries, the most this machine "
            "reads from one folder.",
            {file.parent_path().filename().string(), std::to_string(machine_.maxFilesPerFolder())});
    }
    std::string extension = file.extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);
    }
    const auto& types = machine_.allowedFileTypes();
    if (std::find(types.begin(), types.end(), upperCased(extension)) == types.end()) {
        return formatted(
            "EXPORT_REFUSED_TYPE",
            "This machine reads only %@ files; give the file a name ending in "
            ".%@.",
            {machineFieldTexts(machine_).fileTypes.toStdString(), lowerCased(types.front())});
    }
    return {};
}
