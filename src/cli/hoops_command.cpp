// hemlark hoops: the hoop catalog, in its own order (the order writers search it in).
#include <algorithm>
#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/outcome.h"

namespace {

// text padded with blanks to width characters. printf pads to a width in bytes, and sizes
// such as "⌀ 34.0 mm" hold characters of several bytes.
std::string padded(const std::string& text, std::size_t width) {
    const auto characters = static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xC0) != 0x80; }));
    return text + std::string(width > characters ? width - characters : 0, ' ');
}

int runHoops(bool json) {
    const std::vector<HMKHoop> hoops = HMKDesign::hoops();
    if (json) {
        HMKJson list = HMKJson::array();
        for (const HMKHoop& hoop : hoops) {
            list.push_back(hoopJson(hoop));
        }
        std::printf("%s\n", jsonText(list, 2).c_str());
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
        std::printf("%s %s %5d  %s %s\n", padded(hoop.vendor(), 8).c_str(),
                    padded(hoop.name(), 12).c_str(), hoop.code(),
                    padded(hoop.sizeString(), 20).c_str(), notes.c_str());
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
