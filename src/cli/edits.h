// The editing options of `hemlark convert` (single and batch). Each option calls exactly one
// design operation; the edits run in the order they were given on the command line, which is
// why every option appends to one list as it is parsed instead of filling its own variable.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/outcome.h"
#include "model/design.h"

// The tolerance the design view passes to the hit tests, used the same way here.
inline constexpr float kHitTolerance = 0.7f;

struct HMKEdit {
    // The option as given ("--rotate 45"), for messages.
    std::string option;
    // Runs the design operation; false with *error filled when it failed. Edits capture only
    // values, so one list serves several designs converted in parallel.
    std::function<bool(HMKDesign& design, HMKError* error)> apply;
    // The operation works on the selection, so without one it changes nothing.
    bool needsSelection = false;
    // --hoop: the hoop's vendor, which the output format must record.
    std::string hoopVendor;
    // --append: the file it reads, which no output may replace.
    std::filesystem::path appendedFile;
};

using HMKEditList = std::vector<HMKEdit>;

// Adds every editing option to command; parsing appends to edits in command-line order.
// A malformed value is a usage error (CLI::ValidationError).
void addEditOptions(CLI::App& command, HMKEditList& edits);

// Applies the edits in order; stops at the first failure. An edit that needs a selection
// when there is none still runs, with a warning.
bool applyEdits(HMKDesign& design, const HMKEditList& edits, HMKWarnings& warnings,
                HMKError* error);

// True when index names one of the design's threads; otherwise false with a command-line
// error naming the option ("--recolor 7,0,0,0: thread 7 is out of range (0 to 3)").
bool checkThreadIndex(const HMKDesign& design, const std::string& option, std::int32_t index,
                      HMKError* error);
