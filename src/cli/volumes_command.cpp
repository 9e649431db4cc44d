// hemlark volumes: the mounted USB sticks and memory cards a machine can take designs from,
// as the export dialog lists them, and a note on each removable volume it cannot.
#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/diagnostics.h"
#include "cli/machine_volumes.h"
#include "cli/outcome.h"
#include "document/machine_export.h"
#include "document/machine_profile_texts.h"

namespace {

struct VolumesOptions {
    std::int32_t machine = 0;
    bool json = false;
};

HMKJson volumeJson(const HMKRemovableVolume& volume) {
    return {
        {"mountPoint", volume.mountPath.toStdString()},
        {"name", volume.name.toStdString()},
        {"fileSystem", volume.fileSystem.toStdString()},
        {"freeBytes", volume.freeBytes},
        {"totalBytes", volume.totalBytes},
        {"details",
         volumeDetailText(volume.fileSystem, volume.freeBytes, volume.totalBytes).toStdString()}};
}

int runVolumes(const VolumesOptions& options) {
    HMKError error;
    const std::unique_ptr<HMKVolumeMonitor> monitor = openVolumeMonitor(&error);
    if (!monitor) {
        printError(error);
        return kExitFailure;
    }
    const HMKMachine machine = *HMKMachine::fromIdent(options.machine);
    HMKJson list = HMKJson::array();
    for (const HMKRemovableVolume& volume : monitor->volumes()) {
        const QString refusal = volumeRefusal(machine, volume);
        if (!refusal.isEmpty()) {
            std::fprintf(messageStream(), "hemlark: not listed: %s: %s\n",
                         volume.mountPath.toStdString().c_str(), refusal.toStdString().c_str());
        } else if (options.json) {
            list.push_back(volumeJson(volume));
        } else {
            std::printf("%s\t%s: %s\n", volume.mountPath.toStdString().c_str(),
                        volume.name.toStdString().c_str(),
                        volumeDetailText(volume.fileSystem, volume.freeBytes, volume.totalBytes)
                            .toStdString()
                            .c_str());
        }
    }
    if (options.json) {
        std::printf("%s\n", list.dump(2).c_str());
    }
    return kExitSuccess;
}

}  // namespace

HMKCommandRunner addVolumesCommand(CLI::App& app) {
    auto options = std::make_shared<VolumesOptions>();
    CLI::App* command = app.add_subcommand(
        "volumes", "List the mounted USB sticks and memory cards a machine can read");
    addMachineOption(*command, options->machine);
    command->add_flag("--json", options->json, "Print JSON");
    command->footer("Example:\n  hemlark volumes --machine 1");
    return [options] { return runVolumes(*options); };
}
