// hemlark machines: the machine profiles that the export to a machine's volume offers, with
// the formats, stitch limit and folders each machine family needs.
#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/outcome.h"
#include "model/machine.h"

namespace {

HMKJson machineJson(const HMKMachine& machine) {
    HMKJson rootFolders = nullptr;
    if (machine.rootFolders()) {
        rootFolders = *machine.rootFolders();
    }
    return {{"ident", machine.ident()},
            {"fileTypes", machine.allowedFileTypes()},
            {"fileSystems", machine.allowedFileSystems()},
            {"maxStitches", machine.maxStitches()},
            {"rootFolders", rootFolders},
            {"defaultFolder", machine.defaultFolder()},
            {"subfolderMin", machine.subfolderMin()},
            {"subfolderMax", machine.subfolderMax()},
            {"maxFilesPerFolder", machine.maxFilesPerFolder()}};
}

std::string joined(const std::vector<std::string>& items, const char* separator) {
    std::string text;
    for (const std::string& item : items) {
        text += (text.empty() ? "" : separator) + item;
    }
    return text;
}

std::string limitText(std::int32_t limit) {
    return limit < 0 ? "unlimited" : std::to_string(limit);
}

int runMachines(bool json) {
    const std::vector<HMKMachine> machines = HMKMachine::allMachines();
    if (json) {
        HMKJson list = HMKJson::array();
        for (const HMKMachine& machine : machines) {
            list.push_back(machineJson(machine));
        }
        std::printf("%s\n", list.dump(2).c_str());
        return kExitSuccess;
    }
    std::printf("%-5s %-24s %-9s %-18s %-9s %-10s %s\n", "Ident", "Formats", "Stitches",
                "Default folder", "Subdirs", "Files/dir", "Root folders");
    for (const HMKMachine& machine : machines) {
        const std::string subfolders =
            std::to_string(machine.subfolderMin()) + "-" +
            (machine.subfolderMax() < 0 ? "any" : std::to_string(machine.subfolderMax()));
        const std::string roots =
            machine.rootFolders() ? joined(*machine.rootFolders(), " ") : "anywhere";
        std::printf("%-5d %-24s %-9s %-18s %-9s %-10s %s\n", machine.ident(),
                    joined(machine.allowedFileTypes(), ",").c_str(),
                    limitText(machine.maxStitches()).c_str(), machine.defaultFolder().c_str(),
                    subfolders.c_str(), limitText(machine.maxFilesPerFolder()).c_str(),
                    roots.c_str());
    }
    std::printf("All machines read FAT12, FAT16 and FAT32 volumes.\n");
    return kExitSuccess;
}

}  // namespace

HMKCommandRunner addMachinesCommand(CLI::App& app) {
    auto json = std::make_shared<bool>(false);
    CLI::App* command =
        app.add_subcommand("machines", "List the machine profiles for exporting to a volume");
    command->add_flag("--json", *json, "Print JSON");
    command->footer("Example:\n  hemlark machines --json");
    return [json] { return runMachines(*json); };
}
