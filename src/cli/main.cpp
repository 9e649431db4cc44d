// The hemlark command-line tool: the design operations of the application, in batches.
#include <CLI/CLI.hpp>

#include <vector>

#include "cli/commands.h"
#include "cli/diagnostics.h"
#include "cli/outcome.h"

int main(int argc, char** argv) {
    CLI::App app{"hemlark - inspect, edit and convert machine-embroidery designs"};
    app.set_version_flag("--version", std::string("hemlark ") + HEMLARK_VERSION);
    app.require_subcommand(1);
    std::string logFile;
    app.add_option("--log", logFile,
                   "Append the design code's diagnostic lines to FILE (default: discard them)")
        ->type_name("FILE");
    std::vector<std::pair<CLI::App*, HMKCommandRunner>> commands;
    for (auto add : {addInfoCommand, addConvertCommand, addRenderCommand, addPalettesCommand,
                     addHoopsCommand, addMachinesCommand, addVolumesCommand, addExportCommand}) {
        HMKCommandRunner run = add(app);
        // Every subcommand so far (without a filter, CLI11 lists only the parsed ones).
        auto all = app.get_subcommands([](const CLI::App*) { return true; });
        commands.emplace_back(all.back(), std::move(run));
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kExitSuccess : kExitUsage;
    }
    if (!divertDiagnostics(logFile)) {
        printError(toolError("Cannot open the log " + logFile + "."));
        return kExitFailure;
    }
    for (auto& [command, run] : commands) {
        if (command->parsed()) {
            return run();
        }
    }
    return kExitUsage;
}
