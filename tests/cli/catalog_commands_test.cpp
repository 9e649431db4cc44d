#include <nlohmann/json.hpp>

#include "cli/design_json.h"
#include "model/color_list.h"
#include "tool_runner.h"

// The hoop catalog is the files' data: every name, vendor, code and size, in search order.
TEST(CatalogCommands, ListTheHoopsAndThePalettes) {
    expectGolden(runTool({"hoops", "--json"}).out, "hoops.json");
    const std::string hoops = runTool({"hoops"}).out;
    std::size_t position = 0;
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        position = hoops.find(hoop.name(), position);
        EXPECT_NE(position, std::string::npos) << hoop.name();
    }
    HMKJson palettes = HMKJson::array();
    for (const std::string& name : HMKColorList::shippedPaletteNames())
        palettes.push_back(
            {{"name", name}, {"threads", HMKColorList::named(name)->entries().size()}});
    EXPECT_EQ(HMKJson::parse(runTool({"palettes", "--json"}).out), palettes);
    const std::string names = runTool({"palettes"}).out;
    for (const HMKJson& palette : palettes)
        EXPECT_NE(names.find(palette["name"].get<std::string>()), std::string::npos);

    const auto janome = HMKColorList::named("Janome");
    const HMKJson threads = HMKJson::parse(runTool({"palettes", "Janome", "--json"}).out);
    ASSERT_EQ(threads.size(), janome->entries().size());
    EXPECT_EQ(threads[0]["key"], janome->entries()[0].first);
    EXPECT_EQ(threads[0]["red"], janome->entries()[0].second.red());
    const ToolRun run = runTool({"palettes", "No Such Palette"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "hemlark: error 140: " + makeError(140, "color palette not found").message() + "\n");
}
