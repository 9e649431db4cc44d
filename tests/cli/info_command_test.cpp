#include <nlohmann/json.hpp>

#include "cli/design_json.h"
#include "tool_runner.h"

namespace {

class InfoCommand : public ToolTest {};

}  // namespace

// Every sample as the tool describes it: what each reader makes of a real file.
TEST_F(InfoCommand, JsonOfTheSamplesMatchesTheGoldenFile) {
    std::vector<std::string> arguments = {"info", "--json"};
    for (const char* name : {"flower", "heart", "star"}) {
        for (const char* format : {"dst", "exp", "jef", "pcs", "pec", "pes"})
            arguments.push_back(std::string(HEMLARK_SAMPLES_DIR) + "/" + name + "." + format);
    }
    const ToolRun run = runTool(arguments);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    expectGolden(run.out, "samples-info.json");
}

TEST_F(InfoCommand, PrintsDescriptionsInTheChosenUnitAndErrorsInPlace) {
    const auto flower = sample("flower.pes"), star = sample("star.dst");
    folder.write("empty.dst", "");
    ToolRun run = runTool({"info", flower.string(), star.string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              designInfoText(imported(flower)) + "\n\n" + designInfoText(imported(star)) + "\n");
    EXPECT_NE(runTool({"info", flower.string(), "--unit", "frac"}).out.find("\" x "),
              std::string::npos);
    run = runTool({"info", path("empty.dst"), path("star.xyz")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "hemlark: " + path("empty.dst") +
                           ": error 123: Unable to import DST file (missing header).\n"
                           "hemlark: " +
                           path("star.xyz") + ": error 10: Unknown file format (UTI).\n");
    EXPECT_EQ(runTool({"info", path("star.xyz")}).err,
              "hemlark: error 10: Unknown file format (UTI).\n");
    run = runTool({"info", "--json", star.string(), path("star.xyz")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(HMKJson::parse(run.out),
              HMKJson::array({designJson(imported(star), false),
                              errorJson(makeError(10, "Unknown file format (UTI)."))}));
    EXPECT_EQ(errorJson(makeError(10, "Unknown file format (UTI).")).dump(),
              R"({"error":{"code":10,"message":"Unknown file format (UTI)."}})");
}
