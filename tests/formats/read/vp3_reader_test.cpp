#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "formats/read/design_bytes.h"

namespace {

// Where the test files put the "xxPP" marker; the hoop extents stand 28 bytes before it.
constexpr std::size_t kMarkerPosition = 40;

struct Vp3Section {
    std::array<std::uint8_t, 3> rgb = {0, 0, 0};
    std::array<std::string, 3> texts = {"1000", "", "Brand"};
    std::vector<std::uint8_t> records;
    std::uint8_t entries = 1;
    std::uint16_t skip = 0;
};

// Everything up to and including the colour count.
DesignBytes vp3Header(std::uint32_t hoopWidth, std::uint32_t hoopHeight, std::uint16_t colors,
                      std::uint16_t textLength = 0) {
    DesignBytes bytes;
    bytes.text("%vsm%").zeros(1).u16be(textLength);
    bytes.padTo(kMarkerPosition - 28).u32be(hoopWidth).u32be(hoopHeight);
    bytes.padTo(kMarkerPosition).text("xxPP").zeros(4);
    // The skipped bytes hold anything; only their number counts.
    for (int i = 0; i < textLength; ++i)
        bytes.bytes({0x55});
    return bytes.u16be(colors);
}

void appendSection(DesignBytes& bytes, const Vp3Section& section) {
    const std::size_t start = bytes.size();
    bytes.bytes({0x00, 0x05, 0x00}).u32be(0).zeros(8);
    bytes.bytes({section.entries, 0x00, section.rgb[0], section.rgb[1], section.rgb[2]});
    bytes.zeros(6 * section.entries - 1);
    for (const auto& text : section.texts) {
        bytes.u16be(static_cast<std::uint32_t>(text.size())).text(text);
    }
    bytes.zeros(8).u16be(section.skip).zeros(7 + section.skip).bytes(section.records);
    bytes.patchU32be(start + 3, static_cast<std::uint32_t>(bytes.size() - start - 7));
}

DesignBytes vp3File(const std::vector<Vp3Section>& sections, std::uint32_t hoopWidth = 100000,
                    std::uint32_t hoopHeight = 100000) {
    auto bytes = vp3Header(hoopWidth, hoopHeight, static_cast<std::uint16_t>(sections.size()));
    for (const auto& section : sections)
        appendSection(bytes, section);
    return bytes;
}

ReadOutcome readVp3(const DesignBytes& bytes) {
    return readDesign(&HMKDesign::importVp3DesignFromURL, bytes, "vp3");
}

void expectError(const ReadOutcome& outcome, int code, const std::string& message) {
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(outcome.error.code, code);
    EXPECT_EQ(outcome.error.message(), message);
}

const std::string kTooSmall = "Unable to import VP3 file (file too small for offset).";

struct TooSmallCase {
    std::string name;
    std::function<DesignBytes()> file;
    std::size_t threadsKept;
    std::size_t stitchesKept;

    friend void PrintTo(const TooSmallCase& value, std::ostream* out) { *out << value.name; }
};

class Vp3TooSmallForOffset : public testing::TestWithParam<TooSmallCase> {};

}  // namespace

TEST(Vp3Reader, MissingMagicFailsWith150) {
    auto outcome = readVp3(DesignBytes().text("%vsx%").zeros(60));
    expectError(outcome, 150, "Unable to import VP3 file (missing header).");
    EXPECT_EQ(outcome.design.designType(), "VP3");
    expectError(readVp3(DesignBytes()), 150, "Unable to import VP3 file (missing header).");
}

TEST(Vp3Reader, MissingSectionMarkerFailsWith151) {
    expectError(readVp3(DesignBytes().text("%vsm%").zeros(60).text("xxP")), 151,
                "Unable to import VP3 file (no stitch section).");
}

TEST(Vp3Reader, MarkerBeforePosition28FailsWith152) {
    auto outcome = readVp3(DesignBytes().text("%vsm%").zeros(22).text("xxPP").zeros(40));
    expectError(outcome, 152, "Unable to import VP3 file (no hoop data).");
    EXPECT_FALSE(outcome.design.designHoop().has_value());
}

TEST(Vp3Reader, ZeroColoursFailsWith153) {
    auto outcome = readVp3(vp3Header(100000, 100000, 0).zeros(40));
    expectError(outcome, 153, "Unable to import VP3 file (no colors).");
    EXPECT_TRUE(outcome.design.designHoop().has_value());
}

TEST_P(Vp3TooSmallForOffset, FailsWith154KeepingEarlierSections) {
    auto outcome = readVp3(GetParam().file());
    expectError(outcome, 154, kTooSmall);
    EXPECT_EQ(outcome.design.threads().size(), GetParam().threadsKept);
    EXPECT_EQ(outcome.design.stitches().size(), GetParam().stitchesKept);
}

INSTANTIATE_TEST_SUITE_P(
    Vp3Reader, Vp3TooSmallForOffset,
    testing::Values(TooSmallCase{"ColourCountPastTheEnd",
                                 [] {
                                     // The text length at offset 6 points the colour count past the
                                     // end.
                                     return DesignBytes()
                                         .text("%vsm%")
                                         .zeros(1)
                                         .u16be(0x1000)
                                         .padTo(kMarkerPosition)
                                         .text("xxPP")
                                         .zeros(40);
                                 },
                                 0, 0},
                    TooSmallCase{"SectionHeaderPastTheEnd",
                                 [] { return vp3Header(100000, 100000, 1).zeros(19); }, 0, 0},
                    TooSmallCase{"MissingSecondSection",
                                 [] {
                                     auto bytes = vp3Header(100000, 100000, 2);
                                     appendSection(bytes, {.records = {0x01, 0x01, 0x02, 0x02}});
                                     return bytes;
                                 },
                                 1, 2},
                    TooSmallCase{"TextPastTheEnd",
                                 [] {
                                     auto bytes = vp3Header(100000, 100000, 1);
                                     bytes.bytes({0x00, 0x05, 0x00}).u32be(100).zeros(8);
                                     bytes.bytes({0x01, 0x00, 0x10, 0x20, 0x30}).zeros(5);
                                     return bytes.u16be(0xFFFF).text("too short");
                                 },
                                 0, 0},
                    TooSmallCase{"StitchStartPastTheEnd",
                                 [] {
                                     auto bytes = vp3Header(100000, 100000, 1);
                                     appendSection(bytes, {.records = {0x01, 0x01}});
                                     // Raise the skip length m past the end of the file.
                                     auto data = bytes.data();
                                     data[data.size() - 2 - 7 - 2] = 0x7F;
                                     return DesignBytes().bytes(data);
                                 },
                                 1, 0},
                    TooSmallCase{"SectionLengthPastTheEnd",
                                 [] {
                                     auto bytes = vp3Header(100000, 100000, 1);
                                     const std::size_t start = bytes.size();
                                     appendSection(bytes, {.records = {0x01, 0x01}});
                                     return bytes.patchU32be(start + 3, static_cast<std::uint32_t>(
                                                                            bytes.size() - start));
                                 },
                                 1, 0},
                    TooSmallCase{"HugeSectionLength",
                                 [] {
                                     auto bytes = vp3Header(100000, 100000, 1);
                                     const std::size_t start = bytes.size();
                                     appendSection(bytes, {.records = {0x01, 0x01}});
                                     return bytes.patchU32be(start + 3, 0xFFFFFFFF);
                                 },
                                 1, 0},
                    TooSmallCase{
                        "JumpRecordPastTheEnd",
                        [] {
                            return vp3File({{.records = {0x01, 0x01, 0x80, 0x01, 0x00, 0x10}}});
                        },
                        1, 1}),
    [](const auto& info) { return info.param.name; });

TEST(Vp3Reader, HoopIsBuiltFromTheExtentsRoundedUpToMillimetres) {
    auto outcome = readVp3(vp3File({{.records = {0x01, 0x01}}}, 130001, 130000));
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
    EXPECT_FALSE(hoop.isMultiHoop());
    EXPECT_FALSE(hoop.isRounded());
    EXPECT_FALSE(hoop.isWritable());
}

TEST(Vp3Reader, LargestHoopExtentDoesNotWrapAround) {
    auto outcome = readVp3(vp3File({{.records = {0x01, 0x01}}}, 0xFFFFFFFF, 0));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.designHoop()->width(), 4294968);
    EXPECT_EQ(outcome.design.designHoop()->height(), 0);
}

TEST(Vp3Reader, ThreadTakesItsColourAndTextsFromTheSection) {
    auto outcome = readVp3(vp3File(
        {{.rgb = {255, 128, 0}, .texts = {"1234", "Blue", "Robison-Anton"}, .records = {1, 1}}}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.threads().size(), 1u);
    const HMKThread& thread = outcome.design.threads()[0];
    EXPECT_EQ(thread.color, HMKColor(1.0, 128 / 255.0, 0.0));
    EXPECT_EQ(thread.name, "Blue (1234)");
    EXPECT_EQ(thread.key, "");
    EXPECT_EQ(thread.palette, "");
    EXPECT_EQ(thread.paletteName, "Robison-Anton");
}

TEST(Vp3Reader, EmptySecondTextNamesTheThreadByTheFirst) {
    auto outcome = readVp3(vp3File({{.texts = {"1234", "", ""}, .records = {1, 1}}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.threads()[0].name, "1234");
    EXPECT_EQ(outcome.design.threads()[0].paletteName, "");
}

TEST(Vp3Reader, TextsAreLatin1) {
    auto outcome = readVp3(vp3File({{.texts = {"Cr\xE8me", "", "Fa\xE7on"}, .records = {1, 1}}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.threads()[0].name, "Cr\xC3\xA8me");
    EXPECT_EQ(outcome.design.threads()[0].paletteName, "Fa\xC3\xA7on");
}

TEST(Vp3Reader, EntriesAndSkipLengthMoveTheFieldsAfterThem) {
    auto outcome = readVp3(
        vp3File({{.texts = {"7", "Red", ""}, .records = {0x03, 0x04}, .entries = 3, .skip = 9}}));
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.threads()[0].name, "Red (7)");
    ASSERT_EQ(outcome.design.stitches().size(), 1u);
    EXPECT_EQ(outcome.design.stitches()[0], HMKStitch(3, -4, false, false));
}

TEST(Vp3Reader, TextLengthAtOffset6IsSkippedAfterTheMarker) {
    auto bytes = vp3Header(100000, 100000, 1, 7);
    appendSection(bytes, {.records = {0x01, 0x01}});
    auto outcome = readVp3(bytes);
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.design.stitches().size(), 1u);
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
    auto outcome = readVp3(vp3File({{.rgb = {1, 2, 3}, .records = {0x0A, 0x00, 0x0A, 0x00}},
                                    {.rgb = {4, 5, 6}, .records = {0xE2, 0xFB, 0x00, 0x00}},
                                    {.rgb = {7, 8, 9}, .records = {0x05, 0x0A, 0x01, 0x00}}}));
    ASSERT_TRUE(outcome.succeeded);
    ASSERT_EQ(outcome.design.threads().size(), 3u);
    EXPECT_EQ(outcome.design.threads()[2].color, HMKColor(7 / 255.0, 8 / 255.0, 9 / 255.0));
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

TEST(Vp3Reader, ZeroSectionLengthsEndWithoutLooping) {
    // Each section would start 7 bytes after the last; the reader runs out of file instead
    // of reading the same section 65535 times.
    auto bytes = vp3Header(100000, 100000, 0xFFFF);
    const std::size_t start = bytes.size();
    appendSection(bytes, {.records = {0x01, 0x01}});
    auto outcome = readVp3(bytes.patchU32be(start + 3, 0));
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.error.code, 154);
}
