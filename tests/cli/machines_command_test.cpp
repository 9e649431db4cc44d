#include <gtest/gtest.h>

#include "cli/design_json.h"
#include "model/machine.h"
#include "tool_runner.h"

TEST(MachinesCommand, ListsEveryProfileAsTextAndJson) {
    ToolRun run = runTool({"machines", "--json"});
    ASSERT_EQ(run.exitCode, 0);
    const HMKJson machines = HMKJson::parse(run.out);
    ASSERT_EQ(machines.size(), HMKMachine::allMachines().size());
    EXPECT_TRUE(machines[0]["rootFolders"].is_null());
    EXPECT_EQ(machines[0]["maxStitches"], -1);
    EXPECT_EQ(machines[5]["rootFolders"].size(), 12u);
    EXPECT_EQ(machines[7]["fileTypes"], HMKJson({"JEF", "DST"}));
    EXPECT_EQ(machines[3]["defaultFolder"], "/EmbF5/MyDesign/");
    run = runTool({"machines"});
    ASSERT_EQ(run.exitCode, 0);
    EXPECT_NE(run.out.find("EMB_FILE PC_LINK"), std::string::npos);
}
