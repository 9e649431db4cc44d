// The hemlark command-line tool: the design operations of the application, in batches.
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <vector>

#include "cli/commands.h"
#include "cli/diagnostics.h"
#include "cli/outcome.h"

namespace {

// "hemlark: MESSAGE" and where to read more, for every command-line mistake alike.
std::string usageMessage(const CLI::App* app, const CLI::Error& error) {
    std::string command = app->get_name();
    for (const CLI::App* subcommand : app->get_subcommands()) {
        command += " " + subcommand->get_name();
    }
    return "hemlark: " + std::string(error.what()) + "\nRun '" + command +
           " --help' for more information.\n";
}

int runTool(int argc, char** argv) {
    CLI::App app{"hemlark - inspect, edit and convert machine-embroidery designs", "hemlark"};
    app.set_version_flag("--version", std::string("hemlark ") + HEMLARK_VERSION);
    app.require_subcommand(1);
    app.failure_message(usageMessage);
    // Options the subcommands do not know go to the tool itself, so --log may come anywhere.
    app.fallthrough();
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
        printError(makePosixError(errno, logFile));
        return kExitFailure;
    }
    for (auto& [command, run] : commands) {
        if (command->parsed()) {
            return run();
        }
    }
    return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
    // Nothing may end the tool with an uncaught exception: the user gets a message and exit 1.
    try {
        return runTool(argc, argv);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "hemlark: internal error: %s\n", exception.what());
    } catch (...) {
        std::fprintf(stderr, "hemlark: internal error\n");
    }
    return kExitFailure;
}
