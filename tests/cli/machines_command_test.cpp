#include <gtest/gtest.h>

#include "cli/design_json.h"
#include "model/machine.h"
#include "tool_runner.h"

TEST(MachinesCommand, ListsEveryProfileAsTextAndJson) {
    ToolRun run = runTool({"machines", "--json"});
    ASSERT_EQ(run.exitCode, 0);
    const HMKJson machines = HMKJson::parse(run.out);
    const std::vector<HMKMachine> expected = HMKMachine::allMachines();
    ASSERT_EQ(machines.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const HMKMachine& machine = expected[i];
        EXPECT_EQ(machines[i]["ident"], machine.ident());
        EXPECT_EQ(machines[i]["fileTypes"], machine.allowedFileTypes());
        EXPECT_EQ(machines[i]["maxStitches"], machine.maxStitches());
        EXPECT_EQ(machines[i]["rootFolders"].is_null(), !machine.rootFolders());
        EXPECT_EQ(machines[i]["defaultFolder"], machine.defaultFolder());
        EXPECT_EQ(machines[i]["maxFilesPerFolder"], machine.maxFilesPerFolder());
    }
    EXPECT_EQ(machines[5]["rootFolders"].size(), 12u);

    run = runTool({"machines"});
    ASSERT_EQ(run.exitCode, 0);
    EXPECT_NE(run.out.find("/EmbF5/MyDesign/"), std::string::npos);
    EXPECT_NE(run.out.find("EMB_FILE PC_LINK"), std::string::npos);
}
