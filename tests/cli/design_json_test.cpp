#include <gtest/gtest.h>

#include <bit>

#include "cli/design_json.h"

namespace {

HMKDesign twoThreadDesign() {
    HMKDesign design;
    design.threads().push_back(HMKThread(HMKColor(1, 0.5, 0), "Orange", "123", "P", "Palette P"));
    design.threads().push_back(HMKThread(HMKColor(0, 0, 1), "Blue", "", "", "Threadcolors"));
    design.stitches().emplace_back(0.1f, -2.5f, true, false);
    design.stitches().emplace_back(10, 20, false, false);
    design.stitches().emplace_back(0, 0, true, true);
    design.stitches().emplace_back(-3, 4, false, false);
    design.stitches()[3].isSelected = true;
    design.setSelectionActive(true);
    design.recomputeBounds();
    return design;
}

}  // namespace

TEST(DesignJson, RecordsCarryTheirFlagsAsBits) {
    HMKJson json = designJson(twoThreadDesign(), true);
    std::vector<int> flags;
    for (const HMKJson& record : json["records"]) {
        flags.push_back(record[2].get<int>());
    }
    EXPECT_EQ(flags, (std::vector<int>{kRecordJumpFlag, 0, kRecordJumpFlag | kRecordColorChangeFlag,
                                       kRecordSelectedFlag}));
}

TEST(DesignJson, PrintedFloatsReadBackToTheSameBits) {
    const HMKDesign design = twoThreadDesign();
    HMKJson reread = HMKJson::parse(designJson(design, true).dump());
    std::vector<HMKStitch> stitches = stitchesFromJson(reread["records"]);
    ASSERT_EQ(stitches.size(), design.stitches().size());
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(stitches[i].deltaX),
                  std::bit_cast<std::uint32_t>(design.stitches()[i].deltaX));
        EXPECT_EQ(stitches[i], design.stitches()[i]);
    }
    EXPECT_EQ(reread["bounds"]["xMin"].get<float>(), design.xMin());
    EXPECT_EQ(reread["bounds"]["yMin"].get<float>(), -2.5f);
}

TEST(DesignJson, DescribesTheDesignWithoutRecordsForInfo) {
    HMKDesign design = twoThreadDesign();
    design.setDesignName("rose.dst");
    design.setDesignType("DST");
    design.setDesignVersion(10);
    HMKJson json = designJson(design, false);
    EXPECT_FALSE(json.contains("records"));
    EXPECT_EQ(json["name"], "rose.dst");
    EXPECT_EQ(json["type"], "DST");
    EXPECT_EQ(json["version"], 10);
    EXPECT_EQ(json["description"], design.description());
    EXPECT_EQ(json["stitches"], design.numberOfStitches());
    EXPECT_EQ(json["jumps"], 1);
    EXPECT_EQ(json["colors"], 2);
    EXPECT_EQ(json["selectionActive"], true);
    EXPECT_EQ(json["useThreadFile"], false);
    EXPECT_TRUE(json["hoop"].is_null());
}

TEST(DesignJson, ThreadsCarryNamesKeysPalettesAndColourFractions) {
    EXPECT_EQ(designJson(twoThreadDesign(), false)["threads"][0],
              (HMKJson{{"name", "Orange"},
                       {"key", "123"},
                       {"palette", "P"},
                       {"paletteName", "Palette P"},
                       {"red", 1.0},
                       {"green", 0.5},
                       {"blue", 0.0},
                       {"length", 0.0},
                       {"tension", 13},
                       {"shown", true}}));
}

TEST(DesignJson, HoopIsAnObjectWithEveryField) {
    HMKDesign design = twoThreadDesign();
    ASSERT_TRUE(design.setHoopFromVendor("Janome", 4));
    HMKJson hoop = designJson(design, false)["hoop"];
    EXPECT_EQ(hoop, (HMKJson{{"name", "SQ"},
                             {"vendor", "Janome"},
                             {"code", 4},
                             {"width", 200},
                             {"height", 200},
                             {"round", false},
                             {"multi", false},
                             {"writable", true}}));
}

TEST(DesignJson, ErrorCarriesCodeAndMessage) {
    EXPECT_EQ(errorJson(makeError(10, "Unknown file format (UTI).")).dump(),
              R"({"error":{"code":10,"message":"Unknown file format (UTI)."}})");
}
