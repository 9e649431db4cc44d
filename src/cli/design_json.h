// The JSON form of a design that `hemlark info --json` prints and `hemlark convert` dumps
// when the output ends in ".json". Kept apart from the commands so tests can build the same
// objects from designs they make themselves and compare them with the tool's output.
#pragma once

#include <nlohmann/json.hpp>

#include "model/design.h"
#include "model/error.h"
#include "model/sewing_time.h"

// Objects keep their keys in the order they are written, so the output reads in that order.
using HMKJson = nlohmann::ordered_json;

// Bits of the third element of a dumped record.
inline constexpr int kRecordJumpFlag = 1;
inline constexpr int kRecordColorChangeFlag = 2;
inline constexpr int kRecordSelectedFlag = 4;

// name, type, version, description, hoop, bounds, counts, the estimated sewing time in
// seconds (sewingSeconds), flags and threads; with records, also every stitch record as
// [deltaX, deltaY, flags]. Floats are widened to doubles exactly, so the printed numbers read
// back to the same 32-bit values.
HMKJson designJson(const HMKDesign& design, bool withRecords,
                   const HMKSewingTimeSettings& timing = {});

// What `hemlark info` prints for a design: its description and the sewing time.
std::string designInfoText(const HMKDesign& design, const HMKSewingTimeSettings& timing = {});

// {name, vendor, code, width, height, round, multi, writable}
HMKJson hoopJson(const HMKHoop& hoop);

// {"error": {"code": N, "message": "..."}}
HMKJson errorJson(const HMKError& error);

// The stitch records of a dump, read back (flags from the bit set).
std::vector<HMKStitch> stitchesFromJson(const HMKJson& records);
