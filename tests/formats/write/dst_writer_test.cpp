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
    HMKError refusal(HMKDesign& design) {
        HMKError error;
        EXPECT_FALSE(design.exportDstDesignToURL(file("refused.dst"), &error));
        EXPECT_FALSE(std::filesystem::exists(file("refused.dst")));
        return error;
    }
};

std::string dstHeader(const std::string& fields) {
    std::string header = fields + "MX:+    0\rMY:+    0\rPD:******\r\x1a";
    header.append(512 - header.size(), ' ');
    return header;
}

TEST_F(DstWriter, WritesHeaderRecordsAndTrailerOfASmallDesign) {
    // The colour change is flagged as a jump too: the change wins.
    HMKDesign design = makeDesign({plain(-2, 3), plain(1, -1), jump(121, 0), change(0, -130, true),
                                   plain(0.6f, 0), plain(0.6f, 0)},
                                  placeholderThreads(2), "Rose.dst");
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

TEST_F(DstWriter, EncodesMovesInBalancedTernaryAndCarriesWhatARecordCannotHold) {
    const std::pair<std::vector<float>, Bytes> cases[] = {
        {{121}, bytesOf({0x05, 0x05})},
        {{130, 0}, bytesOf({0x05, 0x05, 0x04, 0x00})},  // 9 carried into the next record
        {{0.6f, 0.6f}, bytesOf({0x00, 0x00, 0x01, 0x00})},
        {{-121}, bytesOf({0x0A, 0x0A})},
        {{-4}, bytesOf({0x02, 0x02})},  // -3 -1
        {{5}, bytesOf({0x06, 0x02})},   // 5 >= 5 takes +9, leaving -4: -3 and -1
    };
    for (const auto& [deltaX, records] : cases) {
        SCOPED_TRACE(deltaX[0]);
        std::vector<HMKStitch> stitches;
        for (float dx : deltaX)
            stitches.push_back(plain(dx, 0));
        stitches.push_back(plain(deltaX[0] < 0 ? 1000 : -1000, 0));  // origin inside the bounds
        HMKDesign design = makeDesign(stitches, placeholderThreads(1));
        Bytes file = write(design);
        for (std::size_t i = 0; i < deltaX.size(); ++i)
            EXPECT_EQ(slice(file, 512 + 3 * i, 2), slice(records, 2 * i, 2)) << "record " << i;
    }
}

TEST_F(DstWriter, LabelIsTheNameWithoutExtensionPaddedOrCutToSixteen) {
    const std::pair<std::string, std::string> cases[] = {
        {"Rose.dst", "Rose            "},
        {"ABCDEFGHIJKLMNOPQRST.dst", "ABCDEFGHIJKLMNOP"},
        {"R\xC3\xB6se.dst", "R?se            "},  // lossy ASCII
    };
    for (const auto& [name, label] : cases) {
        HMKDesign design = makeDesign({plain(1, 1), plain(-2, -2)}, placeholderThreads(1), name);
        EXPECT_EQ(slice(write(design), 0, 19), bytesOf("LA:" + label)) << name;
    }
}

TEST_F(DstWriter, HeaderCountsEveryRecordAndTruncatesExtentsAndSumsTowardZero) {
    // 3 threads and 1000 stitches: 1002 records.
    std::vector<HMKStitch> stitches;
    for (int i = 0; i < 1002; ++i)
        stitches.push_back(i == 300 || i == 600 ? change(0, 0) : plain(i % 2 ? 1 : -1, 0));
    HMKDesign many = makeDesign(stitches, placeholderThreads(3));
    ASSERT_EQ(many.numberOfStitches(), 1000);
    Bytes file = write(many);
    EXPECT_EQ(slice(file, 20, 18), bytesOf("ST:   1004\rCO:  2\r"));
    EXPECT_EQ(file.size(), 512 + 3 * 1002 + 4u);

    HMKDesign design =
        makeDesign({plain(-2.9f, 7.9f), plain(12.8f, -20.5f)}, placeholderThreads(1));
    EXPECT_EQ(slice(write(design), 38, 36), bytesOf("+X:    9\r-X:    2\r+Y:    7\r-Y:   12\r"));
    // The sign stands before the padding.
    design = makeDesign({plain(5, 10), plain(-40, -12.5f)}, placeholderThreads(1));
    EXPECT_EQ(slice(write(design), 74, 20), bytesOf("AX:-   35\rAY:-    2\r"));
}

TEST_F(DstWriter, RefusesBoundsThatDoNotEncloseTheOriginOrExceedTheFields) {
    const std::array<float, 5> cases[] = {
        // xMin, yMin, xMax, yMax, accepted
        {0, 0, 0, 0, 1},           {-99999, -99999, 99999, 99999, 1},
        {1, -10, 10, 10, 0},       {-10, -10, -1, 10, 0},
        {-10, 1, 10, 10, 0},       {-10, -10, 10, -1, 0},
        {-10, -10, 100000, 10, 0}, {-100000, -10, 10, 10, 0},
        {-10, -10, 10, 100000, 0}, {-10, -100000, 10, 10, 0},
    };
    for (const auto& [xMin, yMin, xMax, yMax, accepted] : cases) {
        SCOPED_TRACE(testing::Message() << xMin << " " << yMin << " " << xMax << " " << yMax);
        HMKDesign design = makeDesign({plain(0, 0)}, placeholderThreads(1));
        design.setBounds(xMin, yMin, xMax, yMax);
        if (accepted)
            write(design);
        else
            expectRefusal(refusal(design), 130, "Unable to export DST file (invalid bounderies).");
    }
}

TEST_F(DstWriter, RefusesSumsBeyondTheAxAyField) {
    // Bounds that claim less than the stitches travel: only the sum check can catch it.
    HMKDesign design = makeDesign({plain(100000, 0)}, placeholderThreads(1));
    design.setBounds(-10, -10, 10, 10);
    expectRefusal(refusal(design), 132, "Unable to export DST file (AX/AY values too large).");
}

TEST_F(DstWriter, ChecksRecordsThenColourChangesThenBounds) {
    HMKDesign design;
    std::vector<HMKStitch> stitches(9999998, plain(0, 0));
    std::fill_n(stitches.begin(), 1000, change(0, 0));
    design.setStitches(std::move(stitches));
    design.setThreads(placeholderThreads(1001));
    design.setBounds(5, 5, 10, 10);  // would be refused with 130
    // stitches + threads = records + 1 = 9999999
    expectRefusal(refusal(design), 133, "Unable to export DST file (too many stitches).");
    design.stitches().pop_back();
    expectRefusal(refusal(design), 134, "Unable to export DST file (too many color changes).");
    design.threads().pop_back();
    design.stitches().front().isColorChange = false;
    EXPECT_EQ(refusal(design).code, 130);
}

// DST and EXP carry no colours: placeholders stand in for the threads unless the side file
// carries them.
TEST_F(DstWriter, DstAndExpReplaceThreadsByPlaceholdersUnlessTheSideFileCarriesThem) {
    using Export = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);
    const std::tuple<std::string, Export> writers[] = {{"DST", &HMKDesign::exportDstDesignToURL},
                                                       {"EXP", &HMKDesign::exportExpDesignToURL}};
    for (const auto& [type, exportTo] : writers) {
        SCOPED_TRACE(type);
        HMKDesign design = makeDesign(std::vector<HMKStitch>(21, change(0, 0)),
                                      std::vector<HMKThread>(22, makeThread("405", "Brother")));
        design.setDesignHoop(HMKDesign::hoops().front());
        ASSERT_TRUE((design.*exportTo)(file("a." + type), nullptr));
        ASSERT_EQ(design.threads().size(), 22u);
        for (std::size_t i = 0; i < 22; ++i) {
            EXPECT_EQ(design.threads()[i],
                      HMKThread::fromPaletteKey(std::to_string(i % 20 + 1), "Undefined"));
        }
        EXPECT_EQ(design.designType(), type);
        EXPECT_EQ(design.designVersion(), 10);
        EXPECT_FALSE(design.designHoop());

        HMKDesign carried =
            makeDesign({plain(1, 1), plain(-2, -2)}, {makeThread("405", "Brother")});
        carried.setUseThreadFile(true);
        ASSERT_TRUE((carried.*exportTo)(file("b." + type), nullptr));
        EXPECT_EQ(carried.threads()[0], makeThread("405", "Brother"));
    }
}

}  // namespace
