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

class HoopCheck : public WriterTest {};

TEST_F(HoopCheck, RefusesWithTheWritersTextAndPutsTheHoopBack) {
    const std::string exceedsAll = "Design exceeds all hoop sizes.";
    const std::string outside = "Stitches ouside the current hoop.";
    const struct {
        const char* what;
        std::string extension;
        std::optional<HMKHoop> hoopBefore;
        float xMin, yMin, xMax, yMax;
        int code;
        std::string text;
    } cases[] = {
        {"JEF, no hoop fits", "jef", std::nullopt, -2000, -2000, 2000, 2000, 63, exceedsAll},
        {"JEF, the Brother hoop comes back", "jef", kBrotherHoop, -2000, -2000, 2000, 2000, 63,
         exceedsAll},
        {"JEF, too large for its Janome hoop", "jef", catalogHoop("Janome", "A"), -600, -10, 600,
         10, 60, "Design exceeds the current hoop size."},
        {"JEF, stitches outside", "jef", catalogHoop("Janome", "A"), 0, 0, 1000, 10, 62, outside},
        {"JEF, the edge counts as outside", "jef", catalogHoop("Janome", "A"), -10, -10, 550, 10,
         62, outside},
        {"JEF, hoop not writable", "jef", catalogHoop("Janome", "MA"), -10, -10, 10, 10, 51,
         "Unable to export JEF file (unsupported hoop)."},
        {"PCS, no hoop fits", "pcs", kBrotherHoop, -700, -10, 700, 10, 63, exceedsAll},
        {"PCS, too large for its Pfaff hoop", "pcs", catalogHoop("Pfaff", "S"), -450, -10, 450, 10,
         60, "Operation aborted: Design exceeds largest hoop size."},
        {"PCS, stitches outside", "pcs", catalogHoop("Pfaff", "L"), 0, 0, 1000, 10, 62, outside},
        {"PCS, hoop not writable", "pcs",
         HMKHoop("Custom", "Pfaff", 9, 200, 200, false, false, false), -10, -10, 10, 10, 51,
         "Unable to export file (unsupported hoop)."},
    };
    const Bytes existing = bytesOf("existing file");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        HMKDesign design = makeDesign({plain(0, 0)}, {makeThread("001", "Janome")});
        design.setBounds(c.xMin, c.yMin, c.xMax, c.yMax);
        design.setDesignHoop(c.hoopBefore);
        const std::filesystem::path target = file("design." + c.extension);
        writeExisting(target, existing);
        HMKError error;
        EXPECT_FALSE(c.extension == "jef" ? design.exportJefDesignToURL(target, &error)
                                          : design.exportPcsDesignToURL(target, &error));
        expectRefusal(error, c.code, c.text);
        EXPECT_EQ(design.designHoop(), c.hoopBefore);
        EXPECT_EQ(read(target), existing);
        EXPECT_EQ(folderContents(), std::vector<std::string>{"design." + c.extension});
        std::filesystem::remove(target);
    }
}

TEST_F(HoopCheck, JefReplacesABrotherHoopByTheFirstJanomeHoopThatFitsAndKeepsIt) {
    HMKDesign design = makeDesign({plain(450, 175), plain(-900, -350)},  // 90 x 35 mm
                                  {makeThread("001", "Janome")});
    design.setDesignHoop(kBrotherHoop);
    ASSERT_TRUE(design.exportJefDesignToURL(file("a.jef")));
    EXPECT_EQ(design.designHoop(), catalogHoop("Janome", "A"));  // not FA10/~a: catalog order
    EXPECT_EQ(read(file("a.jef"))[32], 0);                       // A's code
}

TEST_F(HoopCheck, PcsKeepsAPfaffHoopThatFits) {
    HMKDesign design = makeDesign({plain(10, 10), plain(-20, -20)}, {makeThread("a", "")});
    design.setDesignHoop(catalogHoop("Pfaff", "L"));
    ASSERT_TRUE(design.exportPcsDesignToURL(file("a.pcs")));
    EXPECT_EQ(design.designHoop(), catalogHoop("Pfaff", "L"));
    EXPECT_EQ(read(file("a.pcs"))[1], 3);
}

TEST_F(HoopCheck, AFailedWriteAfterTheHoopCheckKeepsTheNewHoop) {
    HMKDesign design = makeDesign({plain(10, 10), plain(-20, -20)}, {makeThread("001", "Janome")});
    design.setDesignHoop(kBrotherHoop);
    HMKError error;
    EXPECT_FALSE(design.exportJefDesignToURL(file("missing/a.jef"), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(design.designHoop(), catalogHoop("Janome", "C/FA/M3"));
    EXPECT_NE(design.designType(), "JEF");
}

}  // namespace
