#include <gtest/gtest.h>

#include "cli/design_json.h"
#include "support/test_support.h"

TEST(DesignJson, RecordsCarryTheirFlagsAsBitsAndFloatsReadBackToTheSameBits) {
    HMKDesign design = makeDesign({jump(0.1f, -2.5f), stitch(10, 20), change(0, 0, true),
                                   selected(stitch(-3, 4)), stitch(-0.0f, 1e-7f)});
    const HMKJson json = HMKJson::parse(designJson(design, true).dump());
    std::vector<int> flags;
    for (const HMKJson& record : json["records"])
        flags.push_back(record[2].get<int>());
    EXPECT_EQ(flags, (std::vector<int>{kRecordJumpFlag, 0, kRecordJumpFlag | kRecordColorChangeFlag,
                                       kRecordSelectedFlag, 0}));
    EXPECT_TRUE(sameStitches(stitchesFromJson(json["records"]), design.stitches()));
    EXPECT_EQ(json["bounds"]["yMin"].get<float>(), -2.5f);
    EXPECT_FALSE(designJson(design, false).contains("records"));
}
