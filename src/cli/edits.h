// The editing options of `hemlark convert` (single and batch). Each option calls exactly one
// design operation; the edits run in the order they were given on the command line, which is
// why every option appends to one list as it is parsed instead of filling its own variable.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "model/design.h"

// The tolerance the design view passes to the hit tests, used the same way here.
inline constexpr float kHitTolerance = 0.7f;

struct HMKEdit {
    // The option as given ("--rotate 45"), for messages.
    std::string option;
    // Runs the design operation; false with *error filled when it failed. Edits capture only
    // values, so one list serves several designs converted in parallel.
    std::function<bool(HMKDesign& design, HMKError* error)> apply;
};

using HMKEditList = std::vector<HMKEdit>;

// Adds every editing option to command; parsing appends to edits in command-line order.
// A malformed value is a usage error (CLI::ValidationError).
void addEditOptions(CLI::App& command, HMKEditList& edits);

// Applies the edits in order; stops at the first failure.
bool applyEdits(HMKDesign& design, const HMKEditList& edits, HMKError* error);
