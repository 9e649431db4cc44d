#include <cstdlib>

#include "formats/write/writer_support.h"
#include "support/test_support.h"

namespace {

Bytes writeJef(HMKDesign& design) {
    return writtenBy(&HMKDesign::exportJefDesignToURL, design);
}

std::string dateOf(const Bytes& file) {
    return std::string(file.begin() + 8, file.begin() + 22);
}

}  // namespace

TEST(JefWriter, WritesHeaderThreadTablesAndRecordsOfASmallDesign) {
    HMKThread second = makeThread("no such key", "Janome");
    second.tension = 7;
    HMKDesign design = makeDesign(
        {stitch(0.4f, 0.4f), stitch(0.7f, 0.7f), jump(-5, 10), change(3, -3, true), stitch(1, 2)},
        {makeThread("208", "Janome"), second});
    setWriterClock([] {
        std::tm calendar{};
        calendar.tm_year = 126, calendar.tm_mon = 10, calendar.tm_mday = 2, calendar.tm_sec = 5;
        return calendar;
    });
    const Bytes file = writeJef(design);
    setWriterClock({});
    EXPECT_EQ(dateOf(file), "20261102000005");

    const Bytes expected =
        DesignBytes({0x84, 0, 0, 0, 10, 0, 0, 0})  // stitch data at 116 + 8 per thread
            .text(dateOf(file))
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

// SOURCE_DATE_EPOCH makes the date the same on every conversion; what is not a moment a
// four-digit year can hold leaves the date to the clock.
TEST(JefWriter, DatesTheFileAtSourceDateEpochInUtc) {
    const std::pair<const char*, const char*> cases[] = {{"0", "19700101000000"},
                                                         {"1700000000", "20231114221320"},
                                                         {"253402300799", "99991231235959"},
                                                         {"253402300800", ""},
                                                         {"-1", ""},
                                                         {"12x", ""},
                                                         {"", ""}};
    for (const auto& [epoch, date] : cases) {
        ::setenv("SOURCE_DATE_EPOCH", epoch, 1);
        HMKDesign design = makeDesign({stitch(1, 1)}, {makeThread("1", "Janome")});
        const std::string written = dateOf(writeJef(design));
        if (*date != '\0') {
            EXPECT_EQ(written, date) << epoch;
        } else {
            EXPECT_TRUE(written.starts_with("20")) << epoch << ": " << written;
        }
    }
    ::unsetenv("SOURCE_DATE_EPOCH");
}
