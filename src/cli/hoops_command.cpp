// hemlark hoops: the hoop catalog, in its own order (the order writers search it in).
#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/outcome.h"

namespace {

int runHoops(bool json) {
    const std::vector<HMKHoop> hoops = HMKDesign::hoops();
    if (json) {
        HMKJson list = HMKJson::array();
        for (const HMKHoop& hoop : hoops) {
            list.push_back(hoopJson(hoop));
        }
        std::printf("%s\n", list.dump(2).c_str());
        return kExitSuccess;
    }
    std::printf("%-8s %-12s %5s  %-20s %s\n", "Vendor", "Name", "Code", "Size", "Notes");
    for (const HMKHoop& hoop : hoops) {
        std::string notes;
        if (hoop.isRounded())
            notes += "round ";
        if (hoop.isMultiHoop())
            notes += "multi-position ";
        if (!hoop.isWritable())
            notes += "never chosen for writing";
        std::printf("%-8s %-12s %5d  %-20s %s\n", hoop.vendor().c_str(), hoop.name().c_str(),
                    hoop.code(), hoop.sizeString().c_str(), notes.c_str());
    }
    return kExitSuccess;
}

}  // namespace

HMKCommandRunner addHoopsCommand(CLI::App& app) {
    auto json = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand("hoops", "List the hoop catalog");
    command->add_flag("--json", *json, "Print JSON");
    command->footer("Example:\n  hemlark hoops");
    return [json] { return runHoops(*json); };
}
