#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"

namespace {

// Where the test files put the "xxPP" marker; the hoop extents stand 28 bytes before it.
constexpr std::size_t kMarkerPosition = 40;
// The first section of a file whose text length at offset 6 is 0.
constexpr std::size_t kFirstSection = kMarkerPosition + 10;

struct Vp3Section {
    std::array<std::uint8_t, 3> rgb = {0, 0, 0};
    std::array<std::string, 3> texts = {"1000", "", "Brand"};
    Bytes records = {0x01, 0x01};
    std::uint8_t entries = 1;
    std::uint16_t skip = 0;
};

// Everything up to and including the colour count.
DesignBytes vp3Header(std::uint16_t colors, std::uint32_t hoopWidth = 100000,
                      std::uint32_t hoopHeight = 100000, std::uint16_t textLength = 0) {
    DesignBytes bytes;
    bytes.text("%vsm%").zeros(1).u16be(textLength);
    bytes.padTo(kMarkerPosition - 28).u32be(hoopWidth).u32be(hoopHeight);
    // The skipped text may hold anything; only its length counts.
    bytes.padTo(kMarkerPosition).text("xxPP").zeros(4).bytes(Bytes(textLength, 0x55));
    return bytes.u16be(colors);
}

DesignBytes& appendSection(DesignBytes& bytes, const Vp3Section& section) {
    const std::size_t start = bytes.size();
    bytes.bytes({0x00, 0x05, 0x00}).u32be(0).zeros(8);
    bytes.bytes({section.entries, 0x00, section.rgb[0], section.rgb[1], section.rgb[2]});
    bytes.zeros(6 * section.entries - 1);
    for (const auto& text : section.texts)
        bytes.u16be(static_cast<std::uint32_t>(text.size())).text(text);
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

ReadOutcome readVp3(const Bytes& bytes) {
    return readFile(&HMKDesign::importVp3DesignFromURL, bytes, "vp3");
}

}  // namespace

TEST(Vp3Reader, FailsWithItsCodeKeepingEarlierSections) {
    const std::map<int, std::string> messages = {
        {150, "Unable to import VP3 file (missing header)."},
        {151, "Unable to import VP3 file (no stitch section)."},
        {152, "Unable to import VP3 file (no hoop data)."},
        {153, "Unable to import VP3 file (no colors)."},
        {154, "Unable to import VP3 file (file too small for offset)."}};
    // The skip length points the stitches past the end; the section length itself still fits.
    auto stitchStartPastTheEnd = vp3File({{.records = {}, .skip = 40}});
    stitchStartPastTheEnd.truncate(stitchStartPastTheEnd.size() - 20);
    stitchStartPastTheEnd.patchU32be(
        kFirstSection + 3,
        static_cast<std::uint32_t>(stitchStartPastTheEnd.size() - kFirstSection - 7));
    auto missingSection = vp3Header(2);
    appendSection(missingSection, {.records = {0x01, 0x01, 0x02, 0x02}});
    // Each section would start 7 bytes after the last; the reader runs out of file instead of
    // reading the same section 65535 times.
    auto zeroLengths = vp3Header(0xFFFF);
    appendSection(zeroLengths, {}).patchU32be(kFirstSection + 3, 0);

    const std::tuple<std::string_view, Bytes, int, std::size_t, std::size_t> cases[] = {
        {"empty file", {}, 150, 0, 0},
        {"wrong magic", DesignBytes().text("%vsx%").zeros(60), 150, 0, 0},
        {"no marker", DesignBytes().text("%vsm%").zeros(60).text("xxP"), 151, 0, 0},
        {"marker before position 28", DesignBytes().text("%vsm%").zeros(22).text("xxPP").zeros(40),
         152, 0, 0},
        {"no colours", vp3Header(0).zeros(40), 153, 0, 0},
        // The text length at offset 6 points the colour count past the end.
        {"colour count past the end",
         DesignBytes()
             .text("%vsm%")
             .zeros(1)
             .u16be(0x1000)
             .padTo(kMarkerPosition)
             .text("xxPP")
             .zeros(40),
         154, 0, 0},
        {"section header past the end", vp3Header(1).zeros(19), 154, 0, 0},
        {"text past the end",
         vp3File({{.texts = {"1000", "Blue", "Brand"}}}).truncate(kFirstSection + 32), 154, 0, 0},
        {"stitch start past the end", stitchStartPastTheEnd, 154, 1, 0},
        {"section length past the end", vp3File({{}}).patchU32be(kFirstSection + 3, 1000), 154, 1,
         0},
        {"section length near 4 GiB", vp3File({{}}).patchU32be(kFirstSection + 3, 0xFFFFFFFF), 154,
         1, 0},
        {"jump record past the end", vp3File({{.records = {0x01, 0x01, 0x80, 0x01, 0x00, 0x10}}}),
         154, 1, 1},
        {"missing section", missingSection, 154, 1, 2},
        {"zero section lengths", zeroLengths, 154, 1, 0},
    };
    for (const auto& [name, bytes, code, threadsKept, stitchesKept] : cases) {
        SCOPED_TRACE(name);
        const auto read = readVp3(bytes);
        expectFailure(read, code, messages.at(code));
        EXPECT_EQ(read.design.designType(), "VP3");
        EXPECT_EQ(read.design.threads().size(), threadsKept);
        EXPECT_EQ(read.design.stitches().size(), stitchesKept);
    }
}

TEST(Vp3Reader, BuildsTheHoopFromTheExtentsRoundedUpToMillimetres) {
    const auto read = readVp3(vp3File({{}}, 130001, 130000));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designType(), "VP3");
    EXPECT_EQ(read.design.designVersion(), 10);
    ASSERT_TRUE(read.design.designHoop().has_value());
    const HMKHoop& hoop = *read.design.designHoop();
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
    const auto read =
        readVp3(vp3File({{.rgb = {255, 128, 0}, .texts = {"1234", "Blue", "Robison-Anton"}},
                         {.texts = {"1234", "", ""}},
                         {.texts = {"Cr\xE8me", "", "Fa\xE7on"}}}));
    ASSERT_TRUE(read.ok);
    const auto& threads = read.design.threads();
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
    const auto read = readVp3(bytes);
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.threads()[0].name, "Red (7)");
    EXPECT_EQ(read.design.stitches(), Stitches{plain(3, -4)});
}

TEST(Vp3Reader, DecodesStitchRecordsWithYNegated) {
    const auto read = readVp3(vp3File({{.records = {0x05, 0x05, 0x80, 0x01, 0x00, 0x64, 0xFF, 0x38,
                                                    0x80, 0x02, 0x80, 0x03, 0xFB, 0x0A}}}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(),
              (Stitches{plain(5, -5), jump(100, 200), plain(0, 0), plain(-5, -10)}));
}

TEST(Vp3Reader, SectionEndsImplyColourChangesExceptTheLast) {
    const auto read = readVp3(vp3File({{.records = {0x0A, 0x00, 0x0A, 0x00}},
                                       {.records = {0xE2, 0xFB, 0x00, 0x00}},
                                       {.records = {0x05, 0x0A, 0x01, 0x00}}}));
    ASSERT_TRUE(read.ok);
    // Every section starts where it says, here at the centre.
    EXPECT_EQ(kindsOf(read.design.stitches()), "SSCJSSCJSS");
    EXPECT_EQ(boundsOf(read.design), (Bounds{-30, -10, 20, 5}));
}
