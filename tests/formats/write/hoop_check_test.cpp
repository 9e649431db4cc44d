#include <gtest/gtest.h>

#include <optional>

#include "write_test_support.h"

namespace {

HMKHoop catalogHoop(const std::string& vendor, const std::string& name) {
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        if (hoop.vendor() == vendor && hoop.name() == name)
            return hoop;
    }
    throw std::logic_error("no such hoop");
}

const HMKHoop kBrotherHoop("100 x 100", "Brother", 0, 100, 100, false, false, true);

struct HoopCase {
    const char* what;
    std::string extension;
    std::optional<HMKHoop> hoopBefore;
    float xMin, yMin, xMax, yMax;
    int code;
    std::string text;
};

class HoopCheck : public WriterTest, public ::testing::WithParamInterface<HoopCase> {};

TEST_P(HoopCheck, RefusesWithTheWritersTextAndPutsTheHoopBack) {
    const HoopCase& c = GetParam();
    HMKDesign design = makeDesign({plain(0, 0)}, {makeThread("001", "Janome")});
    design.setBounds(c.xMin, c.yMin, c.xMax, c.yMax);
    design.setDesignHoop(c.hoopBefore);
    const Bytes existing = bytesOf("existing file");
    std::filesystem::path target = file("design." + c.extension);
    writeExisting(target, existing);

    HMKError error;
    bool written = c.extension == "jef" ? design.exportJefDesignToURL(target, &error)
                                        : design.exportPcsDesignToURL(target, &error);
    EXPECT_FALSE(written);
    EXPECT_EQ(error.code, c.code);
    EXPECT_EQ(error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(error.message(), c.text);
    EXPECT_EQ(design.designHoop(), c.hoopBefore);
    EXPECT_EQ(read(target), existing);
    EXPECT_EQ(folderContents(), std::vector<std::string>{"design." + c.extension});
}

INSTANTIATE_TEST_SUITE_P(
    Writers, HoopCheck,
    ::testing::Values(HoopCase{"JefNoHoopFits", "jef", std::nullopt, -2000, -2000, 2000, 2000, 63,
                               "Design exceeds all hoop sizes."},
                      HoopCase{"JefBrotherHoopComesBack", "jef", kBrotherHoop, -2000, -2000, 2000,
                               2000, 63, "Design exceeds all hoop sizes."},
                      HoopCase{"JefTooLargeForItsJanomeHoop", "jef", catalogHoop("Janome", "A"),
                               -600, -10, 600, 10, 60, "Design exceeds the current hoop size."},
                      HoopCase{"JefStitchesOutside", "jef", catalogHoop("Janome", "A"), 0, 0, 1000,
                               10, 62, "Stitches ouside the current hoop."},
                      HoopCase{"JefEdgeCountsAsOutside", "jef", catalogHoop("Janome", "A"), -10,
                               -10, 550, 10, 62, "Stitches ouside the current hoop."},
                      HoopCase{"JefHoopNotWritable", "jef", catalogHoop("Janome", "MA"), -10, -10,
                               10, 10, 51, "Unable to export JEF file (unsupported hoop)."},
                      HoopCase{"PcsNoHoopFits", "pcs", kBrotherHoop, -700, -10, 700, 10, 63,
                               "Design exceeds all hoop sizes."},
                      HoopCase{"PcsTooLargeForItsPfaffHoop", "pcs", catalogHoop("Pfaff", "S"), -450,
                               -10, 450, 10, 60,
                               "Operation aborted: Design exceeds largest hoop size."},
                      HoopCase{"PcsStitchesOutside", "pcs", catalogHoop("Pfaff", "L"), 0, 0, 1000,
                               10, 62, "Stitches ouside the current hoop."},
                      HoopCase{"PcsHoopNotWritable", "pcs",
                               HMKHoop("Custom", "Pfaff", 9, 200, 200, false, false, false), -10,
                               -10, 10, 10, 51, "Unable to export file (unsupported hoop)."}),
    [](const ::testing::TestParamInfo<HoopCase>& info) { return std::string(info.param.what); });

TEST_F(WriterTest, JefReplacesABrotherHoopByTheFirstJanomeHoopThatFitsAndKeepsIt) {
    HMKDesign design = makeDesign({plain(450, 175), plain(-900, -350)},  // 90 x 35 mm
                                  {makeThread("001", "Janome")});
    design.setDesignHoop(kBrotherHoop);
    ASSERT_TRUE(design.exportJefDesignToURL(file("a.jef")));
    EXPECT_EQ(design.designHoop(), catalogHoop("Janome", "A"));  // not FA10/~a: catalog order
    EXPECT_EQ(read(file("a.jef"))[32], 0);                       // A's code
}

TEST_F(WriterTest, PcsKeepsAPfaffHoopThatFits) {
    HMKDesign design = makeDesign({plain(10, 10), plain(-20, -20)}, {makeThread("a", "")});
    design.setDesignHoop(catalogHoop("Pfaff", "L"));
    ASSERT_TRUE(design.exportPcsDesignToURL(file("a.pcs")));
    EXPECT_EQ(design.designHoop(), catalogHoop("Pfaff", "L"));
    EXPECT_EQ(read(file("a.pcs"))[1], 3);
}

TEST_F(WriterTest, AFailedWriteAfterTheHoopCheckKeepsTheNewHoop) {
    HMKDesign design = makeDesign({plain(10, 10), plain(-20, -20)}, {makeThread("001", "Janome")});
    design.setDesignHoop(kBrotherHoop);
    HMKError error;
    EXPECT_FALSE(design.exportJefDesignToURL(file("missing/a.jef"), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(design.designHoop(), catalogHoop("Janome", "C/FA/M3"));
    EXPECT_NE(design.designType(), "JEF");
}

}  // namespace
