// hemlark info: the design's description, as the information panel shows it, or its JSON.
#include <algorithm>
#include <iostream>
#include <map>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/input_files.h"
#include "cli/outcome.h"
#include "model/units.h"
#include "model/user_defaults.h"

namespace {

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    std::string unit;
    // Machine speed for the sewing-time estimate.
    double stitchesPerMinute = HMKSewingTimeSettings().stitchesPerMinute;
};

const std::map<std::string, HMKMeasurementUnit> kUnits = {
    {"mm", HMKMeasurementUnit::millimetres},
    {"in", HMKMeasurementUnit::decimalInches},
    {"frac", HMKMeasurementUnit::fractionalInches},
};

int runInfo(const InfoOptions& options) {
    if (!options.unit.empty()) {
        HMKUserDefaults::standard().setInteger(static_cast<long long>(kUnits.at(options.unit)),
                                               "MeasurementUnit");
    }
    const bool several = options.files.size() > 1;
    int exitCode = kExitSuccess;
    HMKJson results = HMKJson::array();
    for (std::size_t i = 0; i < options.files.size(); ++i) {
        const std::string& file = options.files[i];
        HMKDesign design;
        HMKError error;
        HMKWarnings warnings;
        const bool imported = readDesignFile(file, design, warnings, &error);
        if (imported) {
            if (auto warning = implausibleSizeWarning(design)) {
                warnings.push_back(*warning);
            }
        } else {
            exitCode = std::max(exitCode, exitCodeFor(error));
        }
        printWarnings(file, warnings);
        HMKSewingTimeSettings timing;
        timing.stitchesPerMinute = options.stitchesPerMinute;
        // A file read by its content because its extension names another format says so.
        const bool mismatch = imported && design.extensionMismatch();
        if (options.json) {
            HMKJson result = imported ? designJson(design, false, timing) : errorJson(error);
            if (mismatch) {
                result["extensionMismatch"] = true;
            }
            if (!warnings.empty()) {
                result["warnings"] = warnings;
            }
            results.push_back(std::move(result));
        } else if (imported) {
            std::cout << (i > 0 ? "\n" : "") << designInfoText(design, timing) << '\n';
            if (mismatch) {
                std::cout << "The file holds a " << design.designType()
                          << " design; its extension names another format.\n";
            }
        } else {
            printError(error, several ? std::string_view(file) : std::string_view());
        }
    }
    if (options.json) {
        std::cout << jsonText(several ? results : results.front(), 2) << '\n';
    }
    return exitCode;
}

}  // namespace

HMKCommandRunner addInfoCommand(CLI::App& app) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* command =
        app.add_subcommand("info", "Describe designs: size, hoop, stitch and jump counts, threads");
    command->add_option("FILE", options->files, "Design files")->required();
    command->add_flag("--json", options->json,
                      "Print JSON (an array for several files) instead of text");
    command->add_option("--unit", options->unit, "Unit of the sizes: mm, in or frac")
        ->check(CLI::IsMember({"mm", "in", "frac"}));
    command
        ->add_option("--speed", options->stitchesPerMinute,
                     "Machine speed for the sewing time, in stitches per minute (default 700)")
        ->type_name("SPM")
        ->check(CLI::Range(1.0, 10000.0));
    command->footer(
        "Examples:\n"
        "  hemlark info samples/flower.pcs\n"
        "  hemlark info samples/*.dst --json --unit in");
    return [options] { return runInfo(*options); };
}
