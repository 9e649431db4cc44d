#include <nlohmann/json.hpp>

#include "cli/design_json.h"
#include "model/color_list.h"
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
    HMKJson expected = HMKJson::array();
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        expected.push_back(hoopJson(hoop));
    }
    EXPECT_EQ(HMKJson::parse(run.out), expected);
}

TEST(PalettesCommand, ListsEveryInstalledPaletteWithItsThreadCount) {
    ToolRun run = runTool({"palettes", "--json"});
    EXPECT_EQ(run.exitCode, 0);
    HMKJson expected = HMKJson::array();
    for (const std::string& name : HMKColorList::shippedPaletteNames()) {
        if (auto palette = HMKColorList::named(name)) {
            expected.push_back({{"name", name}, {"threads", palette->entries().size()}});
        }
    }
    EXPECT_EQ(HMKJson::parse(run.out), expected);

    run = runTool({"palettes"});
    EXPECT_EQ(run.exitCode, 0);
    if (expected.empty()) {
        EXPECT_EQ(run.out, "No thread palettes are installed.\n");
    }
    for (const HMKJson& palette : expected) {
        EXPECT_NE(run.out.find(palette["name"].get<std::string>()), std::string::npos);
    }
}

TEST(PalettesCommand, ListsTheThreadsOfOnePalette) {
    std::vector<std::string> installed;
    for (const std::string& name : HMKColorList::shippedPaletteNames()) {
        if (HMKColorList::named(name))
            installed.push_back(name);
    }
    if (installed.empty()) {
        GTEST_SKIP() << "no thread palettes are installed";
    }
    auto palette = HMKColorList::named(installed.front());
    ToolRun run = runTool({"palettes", installed.front(), "--json"});
    EXPECT_EQ(run.exitCode, 0);
    HMKJson threads = HMKJson::parse(run.out);
    ASSERT_EQ(threads.size(), palette->entries().size());
    EXPECT_EQ(threads[0]["key"], palette->entries()[0].first);
    EXPECT_EQ(threads[0]["red"], palette->entries()[0].second.red());
}

TEST(PalettesCommand, UnknownPaletteFailsWithError140) {
    ToolRun run = runTool({"palettes", "No Such Palette"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "hemlark: error 140: " + makeError(140, "color palette not found").message() + "\n");
}
