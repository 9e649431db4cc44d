#include <gtest/gtest.h>

#include "write_test_support.h"

namespace {

class DstWriter : public WriterTest {
  protected:
    // Writes the design and returns the file, failing the test when the write fails.
    Bytes write(HMKDesign& design) {
        HMKError error;
        EXPECT_TRUE(design.exportDstDesignToURL(file("out.dst"), &error)) << error.message();
        return read(file("out.dst"));
    }
};

std::string dstHeader(const std::string& fields) {
    std::string header = fields + "MX:+    0\rMY:+    0\rPD:******\r\x1a";
    header.append(512 - header.size(), ' ');
    return header;
}

TEST_F(DstWriter, WritesHeaderRecordsAndTrailerOfASmallDesign) {
    HMKDesign design = makeDesign(
        {plain(-2, 3), plain(1, -1), jump(121, 0), change(0, -130), plain(0.6f, 0), plain(0.6f, 0)},
        {makeThread("1", "Undefined"), makeThread("2", "Undefined")}, "Rose.dst");
    Bytes expected = bytesOf(dstHeader(
        "LA:Rose            \rST:      8\rCO:  1\r+X:  121\r-X:    2\r+Y:    3\r-Y:  128\r"
        "AX:+  121\rAY:-  128\r"));
    append(expected, bytesOf({
                         0x01, 0x82, 0x03,  // -2 = -3 +1, y +3
                         0x41, 0x00, 0x03,  // x +1, y -1
                         0x05, 0x05, 0x87,  // jump, x 121 = 81 + 27 + 9 + 3 + 1
                         0x50, 0x50, 0xD3,  // colour change, y -121, -9 carried
                         0x10, 0x00, 0x03,  // the carried y -9; x floor(0.6) = 0
                         0x01, 0x00, 0x03,  // x floor(1.2) = 1
                         0x00, 0x00, 0xF3, 0x1A,
                     }));
    EXPECT_EQ(write(design), expected);
}

struct AxisCase {
    std::vector<float> deltaX;
    Bytes records;  // bytes 0 and 1 of every record
};

TEST_F(DstWriter, EncodesMovesInBalancedTernaryAndCarriesWhatARecordCannotHold) {
    const AxisCase cases[] = {
        {{121}, bytesOf({0x05, 0x05})},
        {{130, 0}, bytesOf({0x05, 0x05, 0x04, 0x00})},  // 9 carried into the next record
        {{0.6f, 0.6f}, bytesOf({0x00, 0x00, 0x01, 0x00})},
        {{-121}, bytesOf({0x0A, 0x0A})},
        {{-4}, bytesOf({0x02, 0x02})},  // -3 -1
    };
    for (const AxisCase& c : cases) {
        std::vector<HMKStitch> stitches;
        for (float dx : c.deltaX)
            stitches.push_back(plain(dx, 0));
        stitches.push_back(plain(c.deltaX[0] < 0 ? 1000 : -1000, 0));  // origin inside the bounds
        HMKDesign design = makeDesign(stitches, {makeThread("1", "Undefined")});
        Bytes file = write(design);
        for (std::size_t i = 0; i < c.deltaX.size(); ++i) {
            EXPECT_EQ(slice(file, 512 + 3 * i, 2), slice(c.records, 2 * i, 2))
                << "record " << i << " of case starting " << c.deltaX[0];
        }
    }
}

TEST_F(DstWriter, FiveIsWrittenAsNineMinusThreePlusOneMinusOne) {
    // 5 >= 5 takes +9, leaving -4: -3 and -1.
    HMKDesign design = makeDesign({plain(5, 0), plain(-10, 0)}, {makeThread("1", "Undefined")});
    EXPECT_EQ(slice(write(design), 512, 3), bytesOf({0x04 | 0x02, 0x02, 0x03}));
}

TEST_F(DstWriter, ColourChangeTakesPrecedenceOverTheJumpFlag) {
    HMKDesign design = makeDesign({change(0, 0, true), plain(0, 0)},
                                  {makeThread("1", "Undefined"), makeThread("2", "Undefined")});
    EXPECT_EQ(write(design)[514], 0xC3);
}

TEST_F(DstWriter, LabelIsTheNameWithoutExtensionPaddedOrCutToSixteen) {
    const std::pair<std::string, std::string> cases[] = {
        {"Rose.dst", "Rose            "},
        {"ABCDEFGHIJKLMNOPQRST.dst", "ABCDEFGHIJKLMNOP"},
        {"R\xC3\xB6se.dst", "R?se            "},  // lossy ASCII
    };
    for (const auto& [name, label] : cases) {
        HMKDesign design =
            makeDesign({plain(1, 1), plain(-2, -2)}, {makeThread("1", "Undefined")}, name);
        EXPECT_EQ(slice(write(design), 0, 19), bytesOf("LA:" + label)) << name;
    }
}

TEST_F(DstWriter, CountsStitchesAndColourChangesInTheHeader) {
    // 3 threads and 1000 stitches: 1002 records.
    std::vector<HMKStitch> stitches;
    for (int i = 0; i < 1002; ++i) {
        stitches.push_back(i == 300 || i == 600 ? change(0, 0) : plain(i % 2 ? 1 : -1, 0));
    }
    HMKDesign design = makeDesign(
        stitches,
        {makeThread("1", "Undefined"), makeThread("2", "Undefined"), makeThread("3", "Undefined")});
    ASSERT_EQ(design.numberOfStitches(), 1000);
    Bytes file = write(design);
    EXPECT_EQ(slice(file, 20, 18), bytesOf("ST:   1004\rCO:  2\r"));
    EXPECT_EQ(file.size(), 512 + 3 * 1002 + 4u);
}

TEST_F(DstWriter, WritesNegativeSumsWithTheSignBeforeThePadding) {
    HMKDesign design =
        makeDesign({plain(5, 10), plain(-40, -12.5f)}, {makeThread("1", "Undefined")});
    Bytes file = write(design);
    EXPECT_EQ(slice(file, 74, 20), bytesOf("AX:-   35\rAY:-    2\r"));
}

TEST_F(DstWriter, TruncatesTheExtentsTowardZero) {
    HMKDesign design =
        makeDesign({plain(-2.9f, 7.9f), plain(12.8f, -20.5f)}, {makeThread("1", "Undefined")});
    EXPECT_EQ(slice(write(design), 38, 36), bytesOf("+X:    9\r-X:    2\r+Y:    7\r-Y:   12\r"));
}

struct BoundsCase {
    float xMin, yMin, xMax, yMax;
    bool accepted;
};

TEST_F(DstWriter, RefusesBoundsThatDoNotEncloseTheOriginOrExceedTheFields) {
    const BoundsCase cases[] = {
        {0, 0, 0, 0, true},
        {-99999, -99999, 99999, 99999, true},
        {1, -10, 10, 10, false},
        {-10, -10, -1, 10, false},
        {-10, 1, 10, 10, false},
        {-10, -10, 10, -1, false},
        {-10, -10, 100000, 10, false},
        {-100000, -10, 10, 10, false},
        {-10, -10, 10, 100000, false},
        {-10, -100000, 10, 10, false},
    };
    for (const BoundsCase& c : cases) {
        HMKDesign design = makeDesign({plain(0, 0)}, {makeThread("1", "Undefined")});
        design.setBounds(c.xMin, c.yMin, c.xMax, c.yMax);
        HMKError error;
        EXPECT_EQ(design.exportDstDesignToURL(file("b.dst"), &error), c.accepted)
            << c.xMin << " " << c.yMin << " " << c.xMax << " " << c.yMax;
        if (!c.accepted) {
            EXPECT_EQ(error.code, 130);
            EXPECT_EQ(error.message(), "Unable to export DST file (invalid bounderies).");
        }
    }
}

TEST_F(DstWriter, RefusesSumsBeyondTheAxAyField) {
    // Bounds that claim less than the stitches travel: only the sum check can catch it.
    HMKDesign design = makeDesign({plain(100000, 0)}, {makeThread("1", "Undefined")});
    design.setBounds(-10, -10, 10, 10);
    HMKError error;
    EXPECT_FALSE(design.exportDstDesignToURL(file("sum.dst"), &error));
    EXPECT_EQ(error.code, 132);
    EXPECT_EQ(error.message(), "Unable to export DST file (AX/AY values too large).");
    EXPECT_FALSE(std::filesystem::exists(file("sum.dst")));
}

TEST_F(DstWriter, RefusesAThousandColourChangesBeforeLookingAtTheBounds) {
    std::vector<HMKThread> threads(1001, makeThread("1", "Undefined"));
    std::vector<HMKStitch> stitches(1000, change(0, 0));
    HMKDesign design = makeDesign(stitches, threads);
    design.setBounds(5, 5, 10, 10);  // would be refused with 130
    HMKError error;
    EXPECT_FALSE(design.exportDstDesignToURL(file("co.dst"), &error));
    EXPECT_EQ(error.code, 134);
    EXPECT_EQ(error.message(), "Unable to export DST file (too many color changes).");

    design.threads().pop_back();
    design.stitches().pop_back();
    EXPECT_FALSE(design.exportDstDesignToURL(file("co.dst"), &error));
    EXPECT_EQ(error.code, 130);
}

TEST_F(DstWriter, RefusesTenMillionRecordsBeforeAnythingElse) {
    HMKDesign design;
    design.setStitches(std::vector<HMKStitch>(9999998, plain(0, 0)));
    design.setThreads(std::vector<HMKThread>(1001, makeThread("1", "Undefined")));
    design.setBounds(5, 5, 10, 10);
    // stitches + threads = records + 1 = 9999999
    HMKError error;
    EXPECT_FALSE(design.exportDstDesignToURL(file("big.dst"), &error));
    EXPECT_EQ(error.code, 133);
    EXPECT_EQ(error.message(), "Unable to export DST file (too many stitches).");
    design.stitches().pop_back();
    EXPECT_FALSE(design.exportDstDesignToURL(file("big.dst"), &error));
    EXPECT_EQ(error.code, 134);
}

TEST_F(DstWriter, ReplacesThreadsByPlaceholdersAndSetsTypeVersionAndHoopAfterWriting) {
    HMKDesign design = makeDesign({plain(1, 1), change(0, 0), plain(-2, -2)},
                                  {makeThread("405", "Brother"), makeThread("620", "Brother")});
    design.setDesignHoop(HMKDesign::hoops().front());
    write(design);
    ASSERT_EQ(design.threads().size(), 2u);
    EXPECT_EQ(design.threads()[0].key, "1");
    EXPECT_EQ(design.threads()[1].key, "2");
    EXPECT_EQ(design.threads()[1].palette, "Undefined");
    EXPECT_EQ(design.designType(), "DST");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_FALSE(design.designHoop());
}

TEST_F(DstWriter, PlaceholderKeysRepeatAfterTwenty) {
    std::vector<HMKStitch> stitches(21, change(0, 0));
    HMKDesign design = makeDesign(stitches, std::vector<HMKThread>(22, makeThread("x", "Sulky")));
    write(design);
    EXPECT_EQ(design.threads()[19].key, "20");
    EXPECT_EQ(design.threads()[20].key, "1");
    EXPECT_EQ(design.threads()[21].key, "2");
}

TEST_F(DstWriter, KeepsThreadsWhenTheSideFileCarriesThem) {
    HMKDesign design = makeDesign({plain(1, 1), plain(-2, -2)}, {makeThread("405", "Brother")});
    design.setUseThreadFile(true);
    write(design);
    EXPECT_EQ(design.threads()[0].key, "405");
    EXPECT_EQ(design.threads()[0].palette, "Brother");
}

}  // namespace
