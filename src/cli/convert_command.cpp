// hemlark convert: one design to one output with edits, or many designs to one format.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <system_error>
#include <thread>

#include "cli/batch_conversion.h"
#include "cli/commands.h"
#include "cli/conversion.h"
#include "cli/diagnostics.h"
#include "cli/input_files.h"
#include "cli/outcome.h"
#include "cli/output_formats.h"
#include "formats/file_io.h"

namespace {

struct ConvertOptions {
    std::vector<std::string> files;
    std::string format;
    std::string outputFolder;
    int jobs = 1;
    bool inPlace = false;
    HMKEditList edits;
};

int runSingle(const ConvertOptions& options) {
    const std::filesystem::path input = options.files[0];
    const std::filesystem::path output = options.files[1];
    HMKInputFiles inputFiles;
    inputFiles.add(input);
    for (const HMKEdit& edit : options.edits) {
        if (!edit.appendedFile.empty()) {
            inputFiles.add(edit.appendedFile);
        }
    }
    HMKError error;
    HMKWarnings warnings;
    const bool converted = inputFiles.mayWrite(output, input, options.inPlace, &error) &&
                           convertDesignFile(input, output, options.edits, warnings, &error);
    printWarnings(input.string(), warnings);
    if (!converted) {
        printError(error);
        return exitCodeFor(error);
    }
    return kExitSuccess;
}

int runBatch(const ConvertOptions& options) {
    HMKBatchConversion batch;
    batch.inputs.assign(options.files.begin(), options.files.end());
    // Checked up front: the extension as the table spells it (lower-case, no dot).
    batch.format = outputFormatNamed(options.format)->extension;
    batch.jobs = options.jobs == 0 ? std::max(1u, std::thread::hardware_concurrency())
                                   : static_cast<unsigned>(options.jobs);
    batch.inPlace = options.inPlace;
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
    return progress.exitCode();
}

// The output format is known from the command line alone, so a format that cannot be
// written, or a hoop that the format would drop, is refused before any file is read.
void checkOutputFormat(const std::string& option, const std::string& extension,
                       const HMKEditList& edits) {
    const HMKOutputFormat* format = outputFormatNamed(extension);
    if (!format) {
        throw CLI::ValidationError(option, "hemlark cannot write " +
                                               (extension.empty() ? std::string("files without "
                                                                                "an extension")
                                                                  : "." + extension + " files") +
                                               "; it writes " + outputFormatList());
    }
    for (const HMKEdit& edit : edits) {
        if (format->isDump || edit.hoopVendor.empty() || edit.hoopVendor == format->hoopVendor) {
            continue;
        }
        throw CLI::ValidationError(
            edit.option, format->hoopVendor.empty()
                             ? "." + std::string(format->extension) + " files record no hoop"
                             : "." + std::string(format->extension) + " files take a " +
                                   std::string(format->hoopVendor) + " hoop");
    }
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
        ->check(CLI::Validator(
            [](std::string& text) {
                return !text.empty() && text.front() == '-' ? "must be 0 or more, got " + text
                                                            : std::string();
            },
            "", "not negative"))
        ->needs(to);
    command->add_flag("--in-place", options->inPlace,
                      "Allow an output to replace its own input (never another input)");
    addEditOptions(*command, options->edits);
    command->footer(
        "Sizes and positions are in 0.1 mm; the hit tests use a tolerance of 0.7.\n"
        "Examples:\n"
        "  hemlark convert samples/flower.pcs flower.jef --hoop Janome,0\n"
        "  hemlark convert in.dst out.dst --select-rect -100,-100,200,200 --rotate 45\n"
        "  hemlark convert in.pes dump.json --select-all --resize 1.5\n"
        "  hemlark convert a.pcs both.pcs --append b.pcs --at 800,0\n"
        "  hemlark convert samples/*.jef --to dst --out-dir out --jobs 2");
    command->callback([options, to] {
        if (to->count() > 0) {
            checkOutputFormat("--to", options->format, options->edits);
        } else if (options->files.size() != 2) {
            throw CLI::ValidationError("FILE", "expects IN OUT (or several inputs with --to)");
        } else {
            checkOutputFormat(options->files[1], lowercaseExtension(options->files[1]),
                              options->edits);
        }
    });
    return [options, to] { return to->count() > 0 ? runBatch(*options) : runSingle(*options); };
}
