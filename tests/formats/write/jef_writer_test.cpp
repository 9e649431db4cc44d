#include <gtest/gtest.h>

#include <ctime>

#include "write_test_support.h"

namespace {

class JefWriter : public WriterTest {
protected:
    Bytes write(HMKDesign& design) {
        HMKError error;
        EXPECT_TRUE(design.exportJefDesignToURL(file("out.jef"), &error)) << error.message();
        return read(file("out.jef"));
    }
};

constexpr std::size_t kDateOffset = 8;
constexpr std::size_t kDateLength = 14;

std::string localDate(std::time_t time) {
    std::tm local{};
    localtime_r(&time, &local);
    char text[15];
    std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local);
    return text;
}

TEST_F(JefWriter, WritesHeaderThreadTablesAndRecordsOfASmallDesign) {
    HMKThread second = makeThread("no such key", "Janome");
    second.tension = 7;
    HMKDesign design = makeDesign(
        {plain(0.4f, 0.4f), plain(0.7f, 0.7f), jump(-5, 10), change(3, -3, true), plain(1, 2)},
        {makeThread("208", "Janome"), second});
    std::time_t before = std::time(nullptr);
    Bytes file = write(design);
    std::time_t after = std::time(nullptr);

    Bytes expected = bytesOf({0x84, 0, 0, 0, 10, 0, 0, 0});  // stitch data at 116 + 8 per thread
    append(expected, Bytes(kDateLength, '?'));
    append(expected, bytesOf({0,  0,           // reserved
                              2,  0, 0, 0,     // threads
                              10, 0, 0, 0,     // records, end included
                              1,  0, 0, 0,     // hoop C/FA/M3, the first that fits
                              3,  0, 0, 0,     // |xMin| = |-3.9|
                              0,  0, 0, 0,     // |yMin| = 0.4
                              1,  0, 0, 0,     // xMax 1.1
                              11, 0, 0, 0}));  // yMax 11.1
    expected.resize(116, 0);
    append(expected, bytesOf({8, 0, 0, 0, 23, 0, 0, 0,     // codes: "208", unknown key
                              13, 0, 0, 0, 7, 0, 0, 0}));  // tensions
    append(expected,
           bytesOf({0x00, 0x00,              // floor(0.4)
                    0x01, 0x01,              // floor(1.1)
                    0x80, 0x02, 0xFB, 0x0A,  // jump, -5 as 0xFB
                    0x80, 0x01, 0x00, 0x00, 0x80, 0x02, 0x03, 0xFD, 0x01, 0x02, 0x80, 0x10}));
    ASSERT_EQ(file.size(), expected.size());
    std::string date(file.begin() + kDateOffset, file.begin() + kDateOffset + kDateLength);
    EXPECT_TRUE(date == localDate(before) || date == localDate(after)) << date;
    std::copy(date.begin(), date.end(), expected.begin() + kDateOffset);
    EXPECT_EQ(file, expected);
    ASSERT_TRUE(design.designHoop());
    EXPECT_EQ(design.designHoop()->name(), "C/FA/M3");
    EXPECT_EQ(design.designType(), "JEF");
    EXPECT_EQ(design.designVersion(), 10);
}

TEST_F(JefWriter, FirstCodeOfAKeyIsWrittenAndUnknownKeysBecomeTwentyThree) {
    const std::pair<std::string, std::int32_t> cases[] = {
        {"x9", 0}, {"002", 1}, {"209", 15}, {"275", 73}, {"224", 78}, {"999", 23}, {"", 23}};
    for (const auto& [key, code] : cases) {
        HMKDesign design = makeDesign({plain(1, 1)}, {makeThread(key, "Janome")});
        EXPECT_EQ(le32At(write(design), 116), code) << key;
    }
}

TEST_F(JefWriter, ConvertsThreadsToTheNearestJanomeThread) {
    installTestPalettes();
    HMKThread janome = HMKThread::fromPaletteKey("208", "Janome");
    for (bool useThreadFile : {false, true}) {
        HMKThread individual = makeThread("", "", janome.color);
        HMKDesign design = makeDesign({plain(1, 1)}, {individual});
        design.setUseThreadFile(useThreadFile);
        EXPECT_EQ(le32At(write(design), 116), 8);
        EXPECT_EQ(design.threads()[0].palette, useThreadFile ? "" : "Janome");
        EXPECT_EQ(design.threads()[0].key, useThreadFile ? "" : "208");
    }
}

}  // namespace
