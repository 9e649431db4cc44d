#include <nlohmann/json.hpp>

#include "cli/design_json.h"
#include "tool_runner.h"

namespace {

class ConvertCommand : public ToolTest {};

}  // namespace

TEST_F(ConvertCommand, DumpsTheImportedDesignWithTheEditsApplied) {
    const auto input = sample("flower.jef");
    ToolRun run = runTool({"convert", input.string(), path("plain.json")});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(HMKJson::parse(readText(folder.file("plain.json"))),
              designJson(imported(input), true));

    run = runTool({"convert", input.string(), path("edited.json"), "--select-all", "--rotate", "90",
                   "--delete-thread", "1"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    HMKDesign expected = imported(input);
    expected.selectAll();
    expected.rotateSelectionByDegrees(90);
    expected.deleteThreadAtIndex(1);
    EXPECT_EQ(HMKJson::parse(readText(folder.file("edited.json"))), designJson(expected, true));
}

// The thread side file follows the output, not the input: a stale one beside the output
// goes, and a design using one beside its input gets one beside the output.
TEST_F(ConvertCommand, WritesEveryWritableFormatAsTheExportDoes) {
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);  // JEF files carry the time of writing
    const auto input = sample("flower.dst");
    std::filesystem::create_directories(folder.file("tool"));
    std::filesystem::create_directories(folder.file("direct"));
    folder.write("tool/flower.threads", "stale");
    for (const std::string extension : {"dst", "pes", "pec", "jef", "exp", "pcs"}) {
        const std::string name = "flower." + extension;
        const ToolRun run = runTool({"convert", input.string(), path("tool/" + name)});
        EXPECT_EQ(run.exitCode, 0) << extension << ": " << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder.file("tool/flower.threads")));
        HMKDesign design = imported(input);
        design.setDesignLocation(folder.file("direct/" + name));
        ASSERT_TRUE(design.exportDesignToURL(folder.file("direct/" + name)));
        EXPECT_TRUE(folder.read("tool/" + name) == folder.read("direct/" + name)) << extension;
    }
    imported(input).exportThreadsForDesign(input);
    EXPECT_EQ(runTool({"convert", input.string(), path("tool/flower.exp")}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(folder.file("tool/flower.threads")));
    ::unsetenv("SOURCE_DATE_EPOCH");
}

TEST_F(ConvertCommand, FailuresExitWithOneAndUsageErrorsWithTwo) {
    const auto input = sample("star.pes");
    const std::pair<std::vector<std::string>, std::string> failures[] = {
        {{path("star.xyz")}, "error 50: Unsupported file format (UTI) for export."},
        {{path("star.dst"), "--select-all", "--flip", "v"},
         "error 70: Unable to flip the design (invalid orientation)."},
    };
    for (const auto& [arguments, message] : failures) {
        std::vector<std::string> command = {"convert", input.string()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const ToolRun run = runTool(command);
        EXPECT_EQ(run.exitCode, 1) << message;
        EXPECT_EQ(run.err, "hemlark: " + message + "\n");
    }
    EXPECT_FALSE(std::filesystem::exists(folder.file("star.dst")));
    const std::vector<std::vector<std::string>> usageErrors = {
        {},
        {"frobnicate"},
        {"info"},
        {"info", "a.dst", "--unit", "cm"},
        {"convert", "a.dst"},
        {"convert", "a.dst", "b.dst", "c.dst"},
        {"convert", "a.dst", "b.dst", "--resize", "0"},
        {"convert", "a.dst", "b.dst", "--out-dir", "out"},
        {"convert", "a.dst", "--to", "pes", "--jobs", "-1"},
        {"render", "a.dst"},
    };
    for (const auto& arguments : usageErrors) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments) << run.err;
        EXPECT_NE(run.err, "") << testing::PrintToString(arguments);
    }
}
