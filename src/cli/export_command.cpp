// hemlark export: writes a design onto a machine's USB stick, or into a folder laid out like
// one, with the export dialog's checks: the machine's stitch limit, formats and folders;
// then, with --eject, the clean-up of hidden files and the eject.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "cli/commands.h"
#include "cli/diagnostics.h"
#include "cli/machine_volumes.h"
#include "cli/outcome.h"
#include "document/machine_export.h"
#include "document/volume_layout.h"

namespace fs = std::filesystem;

namespace {

struct ExportOptions {
    std::string input;
    std::int32_t machine = 0;
    std::string volume;
    std::string folder;
    std::string name;
    std::string format;
    bool eject = false;
};

std::string lowerCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Alert texts may run over several lines; the tool prints one.
std::string oneLine(const QString& text) {
    return text.simplified().toStdString();
}

void printWarning(const fs::path& root, const std::string& text) {
    std::fprintf(messageStream(), "hemlark: %s: warning: %s\n", root.c_str(), text.c_str());
}

std::optional<HMKRemovableVolume> volumeMountedAt(const HMKVolumeMonitor& monitor,
                                                  const fs::path& folder) {
    for (const HMKRemovableVolume& volume : monitor.volumes()) {
        std::error_code error;
        if (fs::equivalent(volume.mountPath.toStdString(), folder, error)) {
            return volume;
        }
    }
    return std::nullopt;
}

// The design's file on the volume: NAME (or the design file's name) with the extension of
// the format, in the machine's default folder, or where NAME says below the volume's root.
std::optional<fs::path> targetFile(const ExportOptions& options, const HMKVolumeLayout& layout,
                                   HMKError* error) {
    fs::path name = options.name.empty() ? fs::path(options.input).stem() : fs::path(options.name);
    const std::string extension = lowerCased(name.extension().string());
    const std::string format = lowerCased(options.format);
    if (!extension.empty() && !format.empty() && extension != "." + format) {
        *error =
            toolError("--name ends in " + extension + " but --format is " + options.format + ".");
        return std::nullopt;
    }
    if (extension.empty()) {
        name += "." +
                (format.empty() ? lowerCased(layout.machine().allowedFileTypes().front()) : format);
    }
    if (options.name.find('/') != std::string::npos) {
        return (layout.volumeRoot() / name.relative_path()).lexically_normal();
    }
    return layout.defaultFolder() / name;
}

int runExport(const ExportOptions& options) {
    const HMKMachine machine = *HMKMachine::fromIdent(options.machine);
    HMKDesign design;
    HMKError error;
    if (!design.importDesignFromURL(options.input, &error)) {
        printError(error, options.input);
        return kExitFailure;
    }
    if (auto alert = stitchLimitAlert(machine, design)) {
        printError(toolError(oneLine(alert->text)), options.input);
        return kExitFailure;
    }

    // The volume, or the folder taken as one.
    ensureApplication();
    std::unique_ptr<HMKVolumeMonitor> monitor;
    std::optional<HMKRemovableVolume> volume;
    fs::path root;
    QString volumeName;
    if (!options.volume.empty()) {
        monitor = openVolumeMonitor(&error);
        if (!monitor) {
            printError(error);
            return kExitFailure;
        }
        volume = volumeMountedAt(*monitor, options.volume);
        if (!volume) {
            printError(toolError(options.volume +
                                 " is not a mounted removable volume; hemlark volumes --machine " +
                                 std::to_string(options.machine) + " lists them."));
            return kExitFailure;
        }
        if (const QString refusal = volumeRefusal(machine, *volume); !refusal.isEmpty()) {
            printError(toolError(oneLine(refusal)));
            return kExitFailure;
        }
        root = volume->mountPath.toStdString();
        volumeName = volume->name;
    } else {
        std::error_code failure;
        if (!fs::is_directory(options.folder, failure)) {
            printError(toolError(options.folder + " is not a folder."));
            return kExitFailure;
        }
        root = fs::absolute(options.folder, failure).lexically_normal();
        volumeName = QString::fromStdString(
            (root.has_filename() ? root : root.parent_path()).filename().string());
        // A stick mounted by hand can still be ejected through the disk service, if it has one.
        if (options.eject) {
            HMKError ignored;
            monitor = openVolumeMonitor(&ignored);
            volume = monitor ? volumeMountedAt(*monitor, root) : std::nullopt;
        }
    }

    // The file, checked as the save dialog checks the name the user picks.
    const HMKVolumeLayout layout(root, volumeName, machine);
    const std::optional<fs::path> file = targetFile(options, layout, &error);
    if (!file) {
        printError(error);
        return kExitUsage;
    }
    if (!layout.createDefaultFolder(&error)) {
        printError(error);
        return kExitFailure;
    }
    if (const QString refusal = layout.refusal(*file); !refusal.isEmpty()) {
        printError(toolError(oneLine(refusal)), file->string());
        return kExitFailure;
    }
    std::error_code failure;
    if (!fs::is_directory(file->parent_path(), failure)) {
        if (!layout.allowsNewFolders()) {
            printError(toolError("The folder " + file->parent_path().string() +
                                 " does not exist, and this machine reads no new folders."));
            return kExitFailure;
        }
        fs::create_directories(file->parent_path(), failure);
    }

    HMKMachineExportRequest request;
    request.file = *file;
    request.volumeRoot = root;
    request.volumeName = volumeName;
    request.volume = volume;
    request.ejectVolume = options.eject;
    HMKMachineExport exporter(monitor.get());
    HMKError writeError;
    const HMKMachineExportResult result =
        exporter.run(request, [&design, &writeError](const fs::path& url, HMKError* error) {
            HMKDesign copy = design;
            copy.setDesignLocation(url);
            const bool written = copy.exportDesignToURL(url, &writeError);
            if (error != nullptr) {
                *error = writeError;
            }
            return written;
        });
    if (result.outcome == HMKMachineExportOutcome::failed) {
        printError(writeError, file->string());
        return kExitFailure;
    }
    std::printf("%s: %s\n", result.alert.title.toStdString().c_str(), file->c_str());
    if (result.outcome == HMKMachineExportOutcome::exportedNotCleaned) {
        printWarning(root,
                     "removing the hidden files took too long, so the volume was not "
                     "ejected");
    } else if (result.outcome == HMKMachineExportOutcome::exportedNotEjected) {
        printWarning(root, "not ejected: " + oneLine(result.ejectFailure));
    }
    return kExitSuccess;
}

}  // namespace

HMKCommandRunner addExportCommand(CLI::App& app) {
    auto options = std::make_shared<ExportOptions>();
    CLI::App* command = app.add_subcommand(
        "export", "Write a design onto a machine's USB stick, in the folder the machine reads");
    command->add_option("FILE", options->input, "Design file")->required();
    addMachineOption(*command, options->machine);
    CLI::Option_group* target = command->add_option_group("target", "Where the design goes");
    target
        ->add_option("--volume", options->volume,
                     "Mount point of the stick (hemlark volumes lists them)")
        ->type_name("MOUNTPOINT");
    target->add_option("--dir", options->folder, "A folder taken as the stick's root")
        ->type_name("FOLDER");
    target->require_option(1);
    command
        ->add_option("--name", options->name,
                     "File name (default: the design's), or a path from the stick's root")
        ->type_name("NAME");
    command
        ->add_option("--format", options->format,
                     "Format tag (default: the machine's first; hemlark machines lists them)")
        ->type_name("FMT");
    command->add_flag("--eject", options->eject,
                      "Then remove hidden housekeeping files and eject the stick");
    command->footer(
        "Examples:\n"
        "  hemlark export rose.pes --machine 1 --volume /media/anna/STICK --eject\n"
        "  hemlark export rose.pes --machine 5 --dir /mnt/card --name EmbF6/rose.jef");
    return [options] { return runExport(*options); };
}
