// info tells when a file was read by its content because its extension names another format.
#include <nlohmann/json.hpp>

#include "cli/design_json.h"
#include "tool_runner.h"

namespace {

class WrongExtension : public ToolTest {};

TEST_F(WrongExtension, InfoSaysTheFileHoldsAnotherFormat) {
    const auto file = folder.file("flower.pec");
    std::filesystem::rename(sample("flower.pes"), file);
    const std::string note = "The file holds a PES design; its extension names another format.\n";
    ToolRun run = runTool({"info", file.string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, designInfoText(imported(file)) + "\n" + note);
    HMKJson json = HMKJson::parse(runTool({"info", "--json", file.string()}).out);
    EXPECT_EQ(json["type"], "PES");
    EXPECT_EQ(json["extensionMismatch"], true);
    // A file under its own extension carries neither.
    run = runTool({"info", "--json", sample("flower.pes").string()});
    EXPECT_FALSE(HMKJson::parse(run.out).contains("extensionMismatch"));
}

}  // namespace
