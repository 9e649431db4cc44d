#include <ctime>

#include "support/test_support.h"

namespace {

Bytes writeJef(HMKDesign& design) {
    return writtenBy(&HMKDesign::exportJefDesignToURL, design);
}

std::string localDate(std::time_t time) {
    std::tm local{};
    localtime_r(&time, &local);
    char text[15];
    std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local);
    return text;
}

}  // namespace

TEST(JefWriter, WritesHeaderThreadTablesAndRecordsOfASmallDesign) {
    HMKThread second = makeThread("no such key", "Janome");
    second.tension = 7;
    HMKDesign design = makeDesign(
        {stitch(0.4f, 0.4f), stitch(0.7f, 0.7f), jump(-5, 10), change(3, -3, true), stitch(1, 2)},
        {makeThread("208", "Janome"), second});
    const std::time_t before = std::time(nullptr);
    const Bytes file = writeJef(design);
    const std::time_t after = std::time(nullptr);
    const std::string date(file.begin() + 8, file.begin() + 22);
    EXPECT_TRUE(date == localDate(before) || date == localDate(after)) << date;

    const Bytes expected =
        DesignBytes({0x84, 0, 0, 0, 10, 0, 0, 0})  // stitch data at 116 + 8 per thread
            .text(date)
            .bytes({0,  0,         // reserved
                    2,  0, 0, 0,   // threads
                    10, 0, 0, 0,   // records, end included
                    1,  0, 0, 0,   // hoop C/FA/M3, the first that fits
                    3,  0, 0, 0,   // |xMin| = |-3.9|
                    0,  0, 0, 0,   // |yMin| = 0.4
                    1,  0, 0, 0,   // xMax 1.1
                    11, 0, 0, 0})  // yMax 11.1
            .padTo(116)
            .bytes({8, 0, 0, 0, 23, 0, 0, 0,   // codes: "208", unknown key
                    13, 0, 0, 0, 7, 0, 0, 0})  // tensions
            .bytes({0x00, 0x00,                // floor(0.4)
                    0x01, 0x01,                // floor(1.1)
                    0x80, 0x02, 0xFB, 0x0A,    // jump, -5 as 0xFB
                    0x80, 0x01, 0x00, 0x00, 0x80, 0x02, 0x03, 0xFD, 0x01, 0x02, 0x80, 0x10});
    EXPECT_EQ(file, expected);
    EXPECT_EQ(hoopNameOf(design), "C/FA/M3");
    EXPECT_EQ(design.designType(), "JEF");
    EXPECT_EQ(design.designVersion(), 10);
}

TEST(JefWriter, WritesTheFirstCodeOfAKeyOrOfTheNearestJanomeThread) {
    const std::pair<std::string, std::int32_t> cases[] = {
        {"x9", 0}, {"002", 1}, {"209", 15}, {"275", 73}, {"224", 78}, {"999", 23}, {"", 23}};
    for (const auto& [key, code] : cases) {
        HMKDesign design = makeDesign({stitch(1, 1)}, {makeThread(key, "Janome")});
        EXPECT_EQ(slice(writeJef(design), 116, 4), (Bytes{std::uint8_t(code), 0, 0, 0})) << key;
    }
    HMKDesign individual = makeDesign(
        {stitch(1, 1)}, {makeThread("", "", HMKThread::fromPaletteKey("208", "Janome").color)});
    EXPECT_EQ(slice(writeJef(individual), 116, 4), (Bytes{8, 0, 0, 0}));
}
