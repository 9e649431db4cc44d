#include "cli/batch_conversion.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <set>
#include <system_error>
#include <thread>

#include "cli/conversion.h"
#include "cli/input_files.h"
#include "cli/outcome.h"

std::filesystem::path batchOutputPath(const HMKBatchConversion& batch,
                                      const std::filesystem::path& input) {
    std::filesystem::path name = input.stem();
    name += "." + batch.format;
    return batch.outputFolder ? *batch.outputFolder / name : input.parent_path() / name;
}

namespace {

// Converts one input; nothing a single file does may stop the others, so even an exception
// (memory exhausted by a huge design) ends as that file's failure.
void convertOne(const std::filesystem::path& input, const std::filesystem::path& output,
                const HMKEditList& edits, HMKProgress& progress) {
    HMKWarnings warnings;
    HMKError error;
    bool converted = false;
    try {
        converted = convertDesignFile(input, output, edits, warnings, &error);
    } catch (const std::exception& exception) {
        error = toolError(std::string("Converting failed: ") + exception.what() + ".");
    } catch (...) {
        error = toolError("Converting failed.");
    }
    progress.warned(input.string(), warnings);
    if (converted) {
        progress.succeeded(input.string(), output.string());
    } else {
        progress.failed(input.string(), error);
    }
}

}  // namespace

std::size_t convertBatch(const HMKBatchConversion& batch, const HMKEditList& edits,
                         HMKProgress& progress) {
    // Decided up front, so parallel runs agree: two inputs with the same stem would overwrite
    // each other's output, so only the first one is converted; and no output may replace an
    // input, which another worker may be reading.
    HMKInputFiles inputFiles;
    for (const std::filesystem::path& input : batch.inputs) {
        inputFiles.add(input);
    }
    for (const HMKEdit& edit : edits) {
        if (!edit.appendedFile.empty()) {
            inputFiles.add(edit.appendedFile);
        }
    }
    std::vector<std::filesystem::path> outputs;
    std::vector<std::optional<HMKError>> refusals;
    std::set<std::filesystem::path> seen;
    for (const std::filesystem::path& input : batch.inputs) {
        outputs.push_back(batchOutputPath(batch, input));
        HMKError refusal;
        if (!seen.insert(outputs.back().lexically_normal()).second) {
            refusals.push_back(toolError("Another input is already converted to " +
                                         outputs.back().string() + "."));
        } else if (!inputFiles.mayWrite(outputs.back(), input, batch.inPlace, &refusal)) {
            refusals.push_back(refusal);
        } else {
            refusals.push_back(std::nullopt);
        }
    }

    std::atomic<std::size_t> next = 0;
    auto work = [&] {
        for (std::size_t i = next++; i < batch.inputs.size(); i = next++) {
            if (refusals[i]) {
                progress.failed(batch.inputs[i].string(), *refusals[i]);
            } else {
                convertOne(batch.inputs[i], outputs[i], edits, progress);
            }
        }
    };

    const std::size_t workers =
        std::clamp<std::size_t>(batch.jobs, 1, std::max<std::size_t>(batch.inputs.size(), 1));
    std::vector<std::jthread> threads;
    for (std::size_t w = 1; w < workers; ++w) {
        threads.emplace_back(work);
    }
    work();
    threads.clear();
    progress.finish();
    return progress.failures();
}
