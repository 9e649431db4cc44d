#include <nlohmann/json.hpp>

#include <fstream>

#include "cli/design_json.h"
#include "model/user_defaults.h"
#include "tool_runner.h"

namespace {

class InfoCommand : public ToolTest {
protected:
    void TearDown() override {
        HMKUserDefaults::install(makeMemoryUserDefaults());
        ToolTest::TearDown();
    }
};

}  // namespace

TEST_F(InfoCommand, PrintsTheDesignDescription) {
    const auto file = sample("flower.pes");
    ToolRun run = runTool({"info", file.string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, designInfoText(imported(file)) + "\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(InfoCommand, UnitOptionShowsSizesInThatUnit) {
    const auto file = sample("heart.dst");
    for (auto [unit, code] : {std::pair{"mm", 0}, {"in", 1}, {"frac", 2}}) {
        HMKUserDefaults::standard().setInteger(code, "MeasurementUnit");
        ToolRun run = runTool({"info", file.string(), "--unit", unit});
        EXPECT_EQ(run.out, designInfoText(imported(file)) + "\n") << unit;
    }
}

TEST_F(InfoCommand, SeveralFilesAreSeparatedByABlankLine) {
    const auto flower = sample("flower.dst");
    const auto star = sample("star.exp");
    ToolRun run = runTool({"info", flower.string(), star.string()});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out,
              designInfoText(imported(flower)) + "\n\n" + designInfoText(imported(star)) + "\n");
}

TEST_F(InfoCommand, JsonHasEveryFieldOfTheDesignButNoRecords) {
    const auto file = sample("flower.jef");
    ToolRun run = runTool({"info", "--json", file.string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    HMKJson json = HMKJson::parse(run.out);
    EXPECT_EQ(json, designJson(imported(file), false));
    EXPECT_FALSE(json.contains("records"));
    EXPECT_EQ(json["hoop"]["vendor"], "Janome");
}

TEST_F(InfoCommand, JsonOfSeveralFilesIsAnArrayWithErrorsInPlace) {
    const auto good = sample("star.pes");
    ToolRun run = runTool({"info", "--json", good.string(), (folder_ / "missing.xyz").string()});
    EXPECT_EQ(run.exitCode, 1);
    HMKJson json = HMKJson::parse(run.out);
    ASSERT_TRUE(json.is_array());
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(json[0], designJson(imported(good), false));
    EXPECT_EQ(json[1],
              (HMKJson{{"error", {{"code", 10}, {"message", "Unknown file format (UTI)."}}}}));
}

TEST_F(InfoCommand, UnknownExtensionFailsWithErrorTenAsTextOrJson) {
    std::filesystem::copy_file(sample("star.dst"), folder_ / "star.xyz");
    ToolRun run = runTool({"info", (folder_ / "star.xyz").string()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "hemlark: error 10: Unknown file format (UTI).\n");
    run = runTool({"info", "--json", (folder_ / "star.xyz").string()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(HMKJson::parse(run.out),
              (HMKJson{{"error", {{"code", 10}, {"message", "Unknown file format (UTI)."}}}}));
}

TEST_F(InfoCommand, ReaderErrorsArePassedThrough) {
    const auto file = folder_ / "empty.dst";
    std::ofstream(file) << "";
    HMKDesign design;
    HMKError expected;
    ASSERT_FALSE(design.importDesignFromURL(file, &expected));
    ToolRun run = runTool({"info", file.string()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "hemlark: error " + std::to_string(expected.code) + ": " + expected.message() + "\n");
}
