// hemlark convert: one design to one output with edits, or many designs to one format.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <system_error>
#include <thread>

#include "cli/batch_conversion.h"
#include "cli/commands.h"
#include "cli/conversion.h"
#include "cli/diagnostics.h"
#include "cli/outcome.h"

namespace {

struct ConvertOptions {
    std::vector<std::string> files;
    std::string format;
    std::string outputFolder;
    unsigned jobs = 1;
    HMKEditList edits;
};

int runSingle(const ConvertOptions& options) {
    HMKError error;
    if (!convertDesignFile(options.files[0], options.files[1], options.edits, &error)) {
        printError(error);
        return kExitFailure;
    }
    return kExitSuccess;
}

int runBatch(const ConvertOptions& options) {
    HMKBatchConversion batch;
    batch.inputs.assign(options.files.begin(), options.files.end());
    batch.format = options.format;
    if (!batch.format.empty() && batch.format.front() == '.') {
        batch.format.erase(0, 1);
    }
    batch.jobs =
        options.jobs == 0 ? std::max(1u, std::thread::hardware_concurrency()) : options.jobs;
    if (!options.outputFolder.empty()) {
        batch.outputFolder = options.outputFolder;
        std::error_code problem;
        std::filesystem::create_directories(*batch.outputFolder, problem);
        if (problem) {
            printError(makePosixError(problem.value(), options.outputFolder));
            return kExitFailure;
        }
    }
    const auto start = std::chrono::steady_clock::now();
    HMKProgress progress(batch.inputs.size(), messageStream());
    const std::size_t failures = convertBatch(batch, options.edits, progress);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("Converted %zu of %zu files to %s in %.2f s", batch.inputs.size() - failures,
                batch.inputs.size(), batch.format.c_str(), seconds.count());
    if (failures > 0) {
        std::printf("; %zu failed", failures);
    }
    std::printf(".\n");
    return failures == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace

HMKCommandRunner addConvertCommand(CLI::App& app) {
    auto options = std::make_shared<ConvertOptions>();
    CLI::App* command = app.add_subcommand(
        "convert",
        "Convert a design to another format (or to a JSON dump), applying edits on the way");
    command
        ->add_option("FILE", options->files,
                     "IN OUT, or with --to several inputs; an OUT ending in .json gets the "
                     "JSON dump with every stitch record")
        ->required();
    CLI::Option* to =
        command->add_option("--to", options->format, "Batch mode: convert every input to FORMAT")
            ->type_name("FORMAT");
    command
        ->add_option("--out-dir", options->outputFolder,
                     "Batch mode: write the outputs into DIR (default: beside each input)")
        ->type_name("DIR")
        ->needs(to);
    command
        ->add_option("--jobs", options->jobs,
                     "Batch mode: convert N files in parallel (0: one per processor)")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber)
        ->needs(to);
    addEditOptions(*command, options->edits);
    command->footer(
        "Sizes and positions are in 0.1 mm; the hit tests use a tolerance of 0.7.\n"
        "Examples:\n"
        "  hemlark convert samples/flower.pcs flower.jef --hoop Janome,0\n"
        "  hemlark convert in.dst out.dst --select-rect -100,-100,200,200 --rotate 45\n"
        "  hemlark convert in.pes dump.json --select-all --resize 1.5\n"
        "  hemlark convert samples/*.jef --to dst --out-dir out --jobs 2");
    command->callback([options, to] {
        if (to->count() == 0 && options->files.size() != 2) {
            throw CLI::ValidationError("FILE", "expects IN OUT (or several inputs with --to)");
        }
    });
    return [options, to] { return to->count() > 0 ? runBatch(*options) : runSingle(*options); };
}
