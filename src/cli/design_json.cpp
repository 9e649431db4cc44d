#include "cli/design_json.h"

#include <cstdio>

namespace {

// A float widened to double is exact, and nlohmann prints doubles with round-trip precision.
double exactly(float value) {
    return static_cast<double>(value);
}

}  // namespace

HMKJson hoopJson(const HMKHoop& hoop) {
    return {{"name", hoop.name()},         {"vendor", hoop.vendor()},
            {"code", hoop.code()},         {"width", hoop.width()},
            {"height", hoop.height()},     {"round", hoop.isRounded()},
            {"multi", hoop.isMultiHoop()}, {"writable", hoop.isWritable()}};
}

namespace {

HMKJson optionalHoopJson(const std::optional<HMKHoop>& hoop) {
    if (!hoop) {
        return nullptr;
    }
    return hoopJson(*hoop);
}

HMKJson threadJson(const HMKThread& thread) {
    return {{"name", thread.name},         {"key", thread.key},
            {"palette", thread.palette},   {"paletteName", thread.paletteName},
            {"red", thread.color.red()},   {"green", thread.color.green()},
            {"blue", thread.color.blue()}, {"length", exactly(thread.length)},
            {"tension", thread.tension},   {"shown", thread.isShown}};
}

int recordFlags(const HMKStitch& stitch) {
    return (stitch.isJumpStitch ? kRecordJumpFlag : 0) |
           (stitch.isColorChange ? kRecordColorChangeFlag : 0) |
           (stitch.isSelected ? kRecordSelectedFlag : 0);
}

}  // namespace

HMKJson designJson(const HMKDesign& design, bool withRecords, const HMKSewingTimeSettings& timing) {
    HMKJson threads = HMKJson::array();
    for (const HMKThread& thread : design.threads()) {
        threads.push_back(threadJson(thread));
    }
    HMKJson json = {
        {"name", design.designName()},
        {"type", design.designType()},
        {"version", design.designVersion()},
        {"description", design.description()},
        {"hoop", optionalHoopJson(design.designHoop())},
        {"bounds",
         {{"xMin", exactly(design.xMin())},
          {"yMin", exactly(design.yMin())},
          {"xMax", exactly(design.xMax())},
          {"yMax", exactly(design.yMax())}}},
        {"stitches", design.numberOfStitches()},
        {"jumps", design.numberOfJumps()},
        {"colors", design.numberOfDifferentColors()},
        {"sewingSeconds", sewingSecondsOf(design.stitches(), timing)},
        {"selectionActive", design.selectionActive()},
        {"useThreadFile", design.useThreadFile()},
        {"threads", std::move(threads)},
    };
    if (withRecords) {
        HMKJson records = HMKJson::array();
        for (const HMKStitch& stitch : design.stitches()) {
            records.push_back(
                {exactly(stitch.deltaX), exactly(stitch.deltaY), recordFlags(stitch)});
        }
        json["records"] = std::move(records);
    }
    return json;
}

std::string designInfoText(const HMKDesign& design, const HMKSewingTimeSettings& timing) {
    char speed[32];
    std::snprintf(speed, sizeof speed, "%g", timing.stitchesPerMinute);
    return design.description() +
           "\nsewing time: " + sewingTimeText(sewingSecondsOf(design.stitches(), timing)) + " at " +
           speed + " stitches per minute";
}

HMKJson errorJson(const HMKError& error) {
    return {{"error", {{"code", error.code}, {"message", error.message()}}}};
}

std::vector<HMKStitch> stitchesFromJson(const HMKJson& records) {
    std::vector<HMKStitch> stitches;
    stitches.reserve(records.size());
    for (const HMKJson& record : records) {
        const int flags = record.at(2).get<int>();
        HMKStitch stitch(record.at(0).get<float>(), record.at(1).get<float>(),
                         (flags & kRecordJumpFlag) != 0, (flags & kRecordColorChangeFlag) != 0);
        stitch.isSelected = (flags & kRecordSelectedFlag) != 0;
        stitches.push_back(stitch);
    }
    return stitches;
}
