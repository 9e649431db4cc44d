#include <gtest/gtest.h>

#include <array>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

// Where the test files put the "xxPP" marker; the hoop extents stand 28 bytes before it.
constexpr std::size_t kMarkerPosition = 40;
// The first section of a file whose text length at offset 6 is 0.
constexpr std::size_t kFirstSection = kMarkerPosition + 10;

struct Vp3Section {
    std::array<std::uint8_t, 3> rgb = {0, 0, 0};
    std::array<std::string, 3> texts = {"1000", "", "Brand"};
    std::vector<std::uint8_t> records = {0x01, 0x01};
    std::uint8_t entries = 1;
    std::uint16_t skip = 0;
};

// Everything up to and including the colour count.
DesignBytes vp3Header(std::uint16_t colors, std::uint32_t hoopWidth = 100000,
                      std::uint32_t hoopHeight = 100000, std::uint16_t textLength = 0) {
    DesignBytes bytes;
    bytes.text("%vsm%").zeros(1).u16be(textLength);
    bytes.padTo(kMarkerPosition - 28).u32be(hoopWidth).u32be(hoopHeight);
    bytes.padTo(kMarkerPosition).text("xxPP").zeros(4);
    // The skipped bytes may hold anything; only their number counts.
    bytes.bytes(std::vector<std::uint8_t>(textLength, 0x55));
    return bytes.u16be(colors);
}

DesignBytes& appendSection(DesignBytes& bytes, const Vp3Section& section) {
    const std::size_t start = bytes.size();
    bytes.bytes({0x00, 0x05, 0x00}).u32be(0).zeros(8);
    bytes.bytes({section.entries, 0x00, section.rgb[0], section.rgb[1], section.rgb[2]});
    bytes.zeros(6 * section.entries - 1);
    for (const auto& text : section.texts) {
        bytes.u16be(static_cast<std::uint32_t>(text.size())).text(text);
    }
    bytes.zeros(8).u16be(section.skip).zeros(7 + section.skip).bytes(section.records);
    return bytes.patchU32be(start + 3, static_cast<std::uint32_t>(bytes.size() - start - 7));
}

DesignBytes vp3File(const std::vector<Vp3Section>& sections, std::uint32_t hoopWidth = 100000,
                    std::uint32_t hoopHeight = 100000) {
    auto bytes = vp3Header(static_cast<std::uint16_t>(sections.size()), hoopWidth, hoopHeight);
    for (const auto& section : sections)
        appendSection(bytes, section);
    return bytes;
}

// The skip length m points the stitches past the end; the section length itself still fits.
DesignBytes stitchStartPastTheEnd() {
    auto bytes = vp3File({{.records = {}, .skip = 40}});
    bytes.truncate(bytes.size() - 20);
    return bytes.patchU32be(kFirstSection + 3,
                            static_cast<std::uint32_t>(bytes.size() - kFirstSection - 7));
}

ReadOutcome readVp3(const DesignBytes& bytes) {
    return readDesign(&HMKDesign::importVp3DesignFromURL, bytes, "vp3");
}

const std::map<int, std::string> kMessages = {
    {150, "Unable to import VP3 file (missing header)."},
    {151, "Unable to import VP3 file (no stitch section)."},
    {152, "Unable to import VP3 file (no hoop data)."},
    {153, "Unable to import VP3 file (no colors)."},
    {154, "Unable to import VP3 file (file too small for offset)."}};

struct ErrorCase {
    std::string name;
    DesignBytes file;
    int code;
    std::size_t threadsKept = 0;
    std::size_t stitchesKept = 0;
    friend void PrintTo(const ErrorCase& value, std::ostream* out) { *out << value.name; }
};

class Vp3Errors : public testing::TestWithParam<ErrorCase> {};

}  // namespace

TEST_P(Vp3Errors, FailsWithItsCodeKeepingEarlierSections) {
    auto outcome = readVp3(GetParam().file);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(outcome.error.code, GetParam().code);
    EXPECT_EQ(outcome.error.message(), kMessages.at(GetParam().code));
    EXPECT_EQ(outcome.design.designType(), "VP3");
    EXPECT_EQ(outcome.design.threads().size(), GetParam().threadsKept);
    EXPECT_EQ(outcome.design.stitches().size(), GetParam().stitchesKept);
}

INSTANTIATE_TEST_SUITE_P(
    Vp3Reader, Vp3Errors,
    testing::Values(
        ErrorCase{"EmptyFile", DesignBytes(), 150},
        ErrorCase{"WrongMagic", DesignBytes().text("%vsx%").zeros(60), 150},
        ErrorCase{"NoMarker", DesignBytes().text("%vsm%").zeros(60).text("xxP"), 151},
        ErrorCase{"MarkerBeforePosition28",
                  DesignBytes().text("%vsm%").zeros(22).text("xxPP").zeros(40), 152},
        ErrorCase{"NoColours", vp3Header(0).zeros(40), 153},
        // The text length at offset 6 points the colour count past the end.
        ErrorCase{"ColourCountPastTheEnd",
                  DesignBytes()
                      .text("%vsm%")
                      .zeros(1)
                      .u16be(0x1000)
                      .padTo(kMarkerPosition)
                      .text("xxPP")
                      .zeros(40),
                  154},
        ErrorCase{"SectionHeaderPastTheEnd", vp3Header(1).zeros(19), 154},
        ErrorCase{"TextPastTheEnd",
                  vp3File({{.texts = {"1000", "Blue", "Brand"}}}).truncate(kFirstSection + 32),
                  154},
        ErrorCase{"StitchStartPastTheEnd", stitchStartPastTheEnd(), 154, 1},
        ErrorCase{"SectionLengthPastTheEnd", vp3File({{}}).patchU32be(kFirstSection + 3, 1000), 154,
                  1},
        ErrorCase{"SectionLengthNear4GiB", vp3File({{}}).patchU32be(kFirstSection + 3, 0xFFFFFFFF),
                  154, 1},
        ErrorCase{"JumpRecordPastTheEnd",
                  vp3File({{.records = {0x01, 0x01, 0x80, 0x01, 0x00, 0x10}}}), 154, 1, 1}),
    [](const auto& info) { return info.param.name; });

TEST(Vp3Reader, MissingSectionKeepsTheSectionsBeforeIt) {
    auto bytes = vp3Header(2);
    appendSection(bytes, {.records = {0x01, 0x01, 0x02, 0x02}});
    auto outcome = readVp3(bytes);
    EXPECT_EQ(outcome.error.code, 154);
    EXPECT_EQ(outcome.design.threads().size(), 1u);
    EXPECT_EQ(outcome.design.stitches().size(), 2u);
}

TEST(Vp3Reader, ZeroSectionLengthsEndWithoutLooping) {
    // Each section would start 7 bytes after the last; the reader runs out of file instead
    // of reading the same section 65535 times.
    auto bytes = vp3Header(0xFFFF);
    auto outcome = readVp3(appendSection(bytes, {}).patchU32be(kFirstSection + 3, 0));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.code, 154);
}

TEST(Vp3Reader, BuildsTheHoopFromTheExtentsRoundedUpToMillimetres) {
    auto outcome = readVp3(vp3File({{}}, 130001, 130000));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designType(), "VP3");
    EXPECT_EQ(outcome.design.designVersion(), 10);
    ASSERT_TRUE(outcome.design.designHoop().has_value());
    const HMKHoop& hoop = *outcome.design.designHoop();
    EXPECT_EQ(hoop.width(), 131);
    EXPECT_EQ(hoop.height(), 130);
    EXPECT_EQ(hoop.name(), "");
    EXPECT_EQ(hoop.vendor(), "");
    EXPECT_EQ(hoop.code(), 0);
    EXPECT_FALSE(hoop.isMultiHoop() || hoop.isRounded() || hoop.isWritable());

    // The largest extent does not wrap around.
    EXPECT_EQ(readVp3(vp3File({{}}, 0xFFFFFFFF, 0)).design.designHoop()->width(), 4294968);
}

TEST(Vp3Reader, ThreadsTakeColourNameAndPaletteNameFromTheirSection) {
    auto outcome =
        readVp3(vp3File({{.rgb = {255, 128, 0}, .texts = {"1234", "Blue", "Robison-Anton"}},
                         {.texts = {"1234", "", ""}},
                         {.texts = {"Cr\xE8me", "", "Fa\xE7on"}}}));
    ASSERT_TRUE(outcome.succeeded);
    const auto& threads = outcome.design.threads();
    ASSERT_EQ(threads.size(), 3u);
    EXPECT_EQ(threads[0],
              HMKThread(HMKColor(1.0, 128 / 255.0, 0.0), "Blue (1234)", "", "", "Robison-Anton"));
    // An empty second text names the thread by the first alone.
    EXPECT_EQ(threads[1].name, "1234");
    // Texts are Latin-1.
    EXPECT_EQ(threads[2].name, "Cr\xC3\xA8me");
    EXPECT_EQ(threads[2].paletteName, "Fa\xC3\xA7on");
}

TEST(Vp3Reader, SkipsTheHeaderTextEntriesAndSkipLengthItIsGiven) {
    auto bytes = vp3Header(1, 100000, 100000, 7);
    appendSection(bytes,
                  {.texts = {"7", "Red", ""}, .records = {0x03, 0x04}, .entries = 3, .skip = 9});
    auto outcome = readVp3(bytes);
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.threads()[0].name, "Red (7)");
    EXPECT_EQ(outcome.design.stitches(), std::vector<HMKStitch>{HMKStitch(3, -4, false, false)});
}

TEST(Vp3Reader, DecodesStitchRecordsWithYNegated) {
    auto outcome = readVp3(vp3File({{.records = {
                                         0x05, 0x05,                                      //
                                         0x80, 0x01, 0x00, 0x64, 0xFF, 0x38, 0x80, 0x02,  //
                                         0x80, 0x03,                                      //
                                         0xFB, 0x0A,                                      //
                                     }}}));
    ASSERT_TRUE(outcome.succeeded);
    std::vector<HMKStitch> expected = {
        HMKStitch(5, -5, false, false), HMKStitch(100, 200, true, false),
        HMKStitch(0, 0, false, false), HMKStitch(-5, -10, false, false)};
    EXPECT_EQ(outcome.design.stitches(), expected);
}

TEST(Vp3Reader, SectionEndsImplyColourChangesExceptTheLast) {
    auto outcome = readVp3(vp3File({{.records = {0x0A, 0x00, 0x0A, 0x00}},
                                    {.records = {0xE2, 0xFB, 0x00, 0x00}},
                                    {.records = {0x05, 0x0A, 0x01, 0x00}}}));
    ASSERT_TRUE(outcome.succeeded);
    const auto& stitches = outcome.design.stitches();
    ASSERT_EQ(stitches.size(), 6u);
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        EXPECT_EQ(stitches[i].isColorChange, i == 1 || i == 3) << i;
    }
    // The running position goes on across sections: (20, 0), (-10, 5), (-5, -5), (-4, -5).
    EXPECT_EQ(outcome.design.xMin(), -10);
    EXPECT_EQ(outcome.design.xMax(), 20);
    EXPECT_EQ(outcome.design.yMin(), -5);
    EXPECT_EQ(outcome.design.yMax(), 5);
}
