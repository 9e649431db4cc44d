// The batch form of `hemlark convert`: many inputs to one format, optionally in parallel.
// Every design is independent; failures are reported per file and never stop the batch.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/edits.h"
#include "cli/progress.h"

struct HMKBatchConversion {
    std::vector<std::filesystem::path> inputs;
    // The target extension without the dot, lower-case ("pes", "json").
    std::string format;
    // Where the outputs go; beside each input when none.
    std::optional<std::filesystem::path> outputFolder;
    // Parallel workers; at least 1.
    unsigned jobs = 1;
    // An output may replace its own input (never another input).
    bool inPlace = false;
};

// The output for one input: its stem with the new extension, in the folder or beside it.
std::filesystem::path batchOutputPath(const HMKBatchConversion& batch,
                                      const std::filesystem::path& input);

// Converts every input, reporting each file to progress; returns the number that failed.
std::size_t convertBatch(const HMKBatchConversion& batch, const HMKEditList& edits,
                         HMKProgress& progress);
