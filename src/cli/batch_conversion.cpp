#include "cli/batch_conversion.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <system_error>
#include <thread>

#include "cli/conversion.h"
#include "cli/outcome.h"

std::filesystem::path batchOutputPath(const HMKBatchConversion& batch,
                                      const std::filesystem::path& input) {
    std::filesystem::path name = input.stem();
    name += "." + batch.format;
    return batch.outputFolder ? *batch.outputFolder / name : input.parent_path() / name;
}

std::size_t convertBatch(const HMKBatchConversion& batch, const HMKEditList& edits,
                         HMKProgress& progress) {
    // Two inputs with the same stem would overwrite each other's output: only the first
    // one is converted, the others fail (decided up front, so parallel runs agree).
    std::vector<std::filesystem::path> outputs;
    std::vector<bool> duplicate;
    std::set<std::filesystem::path> seen;
    for (const std::filesystem::path& input : batch.inputs) {
        outputs.push_back(batchOutputPath(batch, input));
        duplicate.push_back(!seen.insert(outputs.back().lexically_normal()).second);
    }

    std::atomic<std::size_t> next = 0;
    auto work = [&] {
        for (std::size_t i = next++; i < batch.inputs.size(); i = next++) {
            const std::string input = batch.inputs[i].string();
            HMKError error;
            if (duplicate[i]) {
                progress.failed(input, toolError("Another input is already converted to " +
                                                 outputs[i].string() + "."));
            } else if (convertDesignFile(batch.inputs[i], outputs[i], edits, &error)) {
                progress.succeeded(input, outputs[i].string());
            } else {
                progress.failed(input, error);
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
