#include "support/test_support.h"

namespace {

Bytes writeDst(HMKDesign design) {
    return writtenBy(&HMKDesign::exportDstDesignToURL, design);
}

// A 512-byte header of the fields given, the fixed ones and the padding.
DesignBytes dstHeader(std::string_view fields) {
    return DesignBytes().text(fields).text("MX:+    0\rMY:+    0\rPD:******\r\x1a").padTo(512, ' ');
}

}  // namespace

TEST(DstWriter, WritesHeaderRecordsAndTrailerOfASmallDesign) {
    // The colour change is flagged as a jump too: the change wins.
    HMKDesign design = makeDesign({stitch(-2, 3), stitch(1, -1), jump(121, 0),
                                   change(0, -130, true), stitch(0.6f, 0), stitch(0.6f, 0)});
    design.setDesignName("Rose.dst");
    const Bytes expected =
        dstHeader(
            "LA:Rose            \rST:      8\rCO:  1\r+X:  121\r-X:    2\r+Y:    3\r"
            "-Y:  128\rAX:+  121\rAY:-  128\r")
            .bytes({
                0x01, 0x82, 0x03,  // -2 = -3 +1, y +3
                0x41, 0x00, 0x03,  // x +1, y -1
                0x05, 0x05, 0x87,  // jump, x 121 = 81 + 27 + 9 + 3 + 1
                0x50, 0x50, 0xD3,  // colour change, y -121, -9 carried
                0x10, 0x00, 0x03,  // the carried y -9; x floor(0.6) = 0
                0x01, 0x00, 0x03,  // x floor(1.2) = 1
                0x00, 0x00, 0xF3, 0x1A,
            });
    EXPECT_EQ(writeDst(design), expected);
}

TEST(DstWriter, EncodesMovesInBalancedTernaryAndCarriesWhatARecordCannotHold) {
    const std::pair<std::vector<float>, Bytes> cases[] = {
        {{121}, {0x05, 0x05}},
        {{130, 0}, {0x05, 0x05, 0x04, 0x00}},  // 9 carried into the next record
        {{0.6f, 0.6f}, {0x00, 0x00, 0x01, 0x00}},
        {{-121}, {0x0A, 0x0A}},
        {{-4}, {0x02, 0x02}},  // -3 -1
        {{5}, {0x06, 0x02}},   // 5 >= 5 takes +9, leaving -4: -3 and -1
    };
    for (const auto& [deltaX, records] : cases) {
        SCOPED_TRACE(deltaX[0]);
        Stitches stitches;
        for (float dx : deltaX)
            stitches.push_back(stitch(dx, 0));
        stitches.push_back(stitch(deltaX[0] < 0 ? 1000 : -1000, 0));  // origin inside the bounds
        const Bytes file = writeDst(makeDesign(stitches));
        for (std::size_t i = 0; i < deltaX.size(); ++i) {
            EXPECT_EQ(slice(file, 512 + 3 * i, 2), slice(records, 2 * i, 2)) << "record " << i;
        }
    }
}

TEST(DstWriter, HeaderHoldsTheLabelCountsAndTruncatedExtentsAndSums) {
    const std::pair<std::string, std::string> labels[] = {
        {"Rose.dst", "Rose            "},
        {"ABCDEFGHIJKLMNOPQRST.dst", "ABCDEFGHIJKLMNOP"},
        {"R\xC3\xB6se \xF0\x9F\x8C\xB9.dst", "R?se ?          "},  // lossy ASCII
    };
    for (const auto& [name, label] : labels) {
        HMKDesign design = makeDesign({stitch(1, 1), stitch(-2, -2)});
        design.setDesignName(name);
        EXPECT_EQ(slice(writeDst(design), 0, 19), Bytes(DesignBytes().text("LA:" + label))) << name;
    }
    // 3 threads and 1000 stitches: 1002 records.
    Stitches stitches;
    for (int i = 0; i < 1002; ++i)
        stitches.push_back(i == 300 || i == 600 ? change() : stitch(i % 2 ? 1 : -1, 0));
    const Bytes many = writeDst(makeDesign(stitches));
    EXPECT_EQ(slice(many, 20, 18), Bytes(DesignBytes().text("ST:   1004\rCO:  2\r")));
    EXPECT_EQ(many.size(), 512 + 3 * 1002 + 4u);
    EXPECT_EQ(slice(writeDst(makeDesign({stitch(-2.9f, 7.9f), stitch(12.8f, -20.5f)})), 38, 36),
              Bytes(DesignBytes().text("+X:    9\r-X:    2\r+Y:    7\r-Y:   12\r")));
    // The sign stands before the padding; a zero sum is positive.
    EXPECT_EQ(slice(writeDst(makeDesign({stitch(5, 10), stitch(-40, -10.5f)})), 74, 20),
              Bytes(DesignBytes().text("AX:-   35\rAY:+    0\r")));
}
