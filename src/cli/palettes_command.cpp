// hemlark palettes: the installed thread palettes, or the threads of one of them.
#include <cmath>
#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/outcome.h"
#include "cli/palette_names.h"
#include "model/color_list.h"
#include "model/thread.h"

namespace {

struct PalettesOptions {
    std::string name;
    bool json = false;
};

int component(double fraction) {
    return static_cast<int>(std::lround(fraction * 255));
}

int listPalettes(bool json) {
    HMKJson list = HMKJson::array();
    std::size_t installed = 0;
    for (const std::string& name : HMKColorList::shippedPaletteNames()) {
        // A palette whose files are not installed is left out.
        if (auto palette = HMKColorList::named(name)) {
            ++installed;
            if (json) {
                list.push_back({{"name", name}, {"threads", palette->entries().size()}});
            } else {
                std::printf("%-22s %4zu threads\n", name.c_str(), palette->entries().size());
            }
        }
    }
    if (json) {
        std::printf("%s\n", jsonText(list, 2).c_str());
    } else if (installed == 0) {
        std::printf("No thread palettes are installed.\n");
    }
    return kExitSuccess;
}

int listThreads(const std::string& typedName, bool json) {
    const std::optional<std::string> installed = installedPaletteNamed(typedName);
    if (!installed) {
        HMKError error = makeError(140, "color palette not found");
        if (auto nearest = nearestPaletteName(typedName)) {
            error.recoverySuggestion += "; did you mean \"" + *nearest + "\"?";
        }
        if (json) {
            std::printf("%s\n", jsonText(errorJson(error), 2).c_str());
        } else {
            printError(error);
        }
        return kExitFailure;
    }
    const std::string& name = *installed;
    auto palette = HMKColorList::named(name);
    HMKJson list = HMKJson::array();
    for (const auto& [key, color] : palette->entries()) {
        const std::string threadName = HMKThread::fromPaletteKey(key, name).name;
        if (json) {
            list.push_back({{"key", key},
                            {"name", threadName},
                            {"red", color.red()},
                            {"green", color.green()},
                            {"blue", color.blue()}});
        } else {
            std::printf("%-10s #%02x%02x%02x  %s\n", key.c_str(), component(color.red()),
                        component(color.green()), component(color.blue()), threadName.c_str());
        }
    }
    if (json) {
        std::printf("%s\n", jsonText(list, 2).c_str());
    }
    return kExitSuccess;
}

}  // namespace

HMKCommandRunner addPalettesCommand(CLI::App& app) {
    auto options = std::make_shared<PalettesOptions>();
    CLI::App* command = app.add_subcommand(
        "palettes", "List the installed thread palettes, or the threads of one palette");
    command->add_option("NAME", options->name, "A palette's name (any case)");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer(
        "Examples:\n"
        "  hemlark palettes\n"
        "  hemlark palettes \"Madeira Rayon\"");
    return [options] {
        return options->name.empty() ? listPalettes(options->json)
                                     : listThreads(options->name, options->json);
    };
}
