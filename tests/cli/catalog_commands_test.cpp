#include <nlohmann/json.hpp>

#include "cli/design_json.h"
#include "tool_runner.h"

TEST(HoopsCommand, ListsTheCatalogInItsOrder) {
    ToolRun run = runTool({"hoops"});
    EXPECT_EQ(run.exitCode, 0);
    std::size_t position = 0;
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        position = run.out.find(hoop.name(), position);
        EXPECT_NE(position, std::string::npos) << hoop.name();
    }
}

TEST(HoopsCommand, JsonHoldsEveryHoop) {
    ToolRun run = runTool({"hoops", "--json"});
    EXPECT_EQ(run.exitCode, 0);
    nlohmann::json expected = nlohmann::json::array();
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        expected.push_back(hoopJson(hoop));
    }
    EXPECT_EQ(nlohmann::json::parse(run.out), expected);
}
