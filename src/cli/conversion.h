// Converting one design file, the step that `hemlark convert` runs once and its batch form
// runs per file: import, edits in order, then an export (or a JSON dump) to the output.
#pragma once

#include <filesystem>
#include <string>

#include "cli/edits.h"
#include "cli/outcome.h"
#include "model/error.h"

// True for outputs that get the JSON dump instead of an export (".json", any case).
bool isJsonDumpPath(const std::filesystem::path& output);

// Imports input, applies the edits, sets the design's location to output (as saving does,
// so the thread side file is written or removed beside the output) and exports it there.
// Adds what the user should know although it worked (a file cut short, an edit without a
// selection, colours that could not be matched, a side file kept for another design).
bool convertDesignFile(const std::filesystem::path& input, const std::filesystem::path& output,
                       const HMKEditList& edits, HMKWarnings& warnings, HMKError* error);
