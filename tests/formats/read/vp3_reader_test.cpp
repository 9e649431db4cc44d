// VP3 files made byte by byte, and what the reader makes of them against
// tests/golden/read-vp3.txt.
#include "formats/read/readers.h"
#include "support/test_support.h"

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

// Everything up to and including the colour count; the skipped text may hold anything.
DesignBytes vp3Header(std::uint16_t colors, std::uint32_t hoopWidth = 100000,
                      std::uint32_t hoopHeight = 100000, std::uint16_t textLength = 0) {
    DesignBytes bytes;
    bytes.text("%vsm%").zeros(1).u16be(textLength);
    bytes.padTo(kMarkerPosition - 28).u32be(hoopWidth).u32be(hoopHeight);
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
    return bytes.putU32be(start + 3, static_cast<std::uint32_t>(bytes.size() - start - 7));
}

DesignBytes vp3File(const std::vector<Vp3Section>& sections, std::uint32_t hoopWidth = 100000,
                    std::uint32_t hoopHeight = 100000) {
    auto bytes = vp3Header(static_cast<std::uint16_t>(sections.size()), hoopWidth, hoopHeight);
    for (const auto& section : sections)
        appendSection(bytes, section);
    return bytes;
}

}  // namespace

TEST(Vp3Reader, ReadsWhatTheGoldenFileRecords) {
    // The skip length points the stitches past the end; the section length itself still fits.
    auto stitchStartPastTheEnd = vp3File({{.records = {}, .skip = 40}});
    stitchStartPastTheEnd.truncate(stitchStartPastTheEnd.size() - 20);
    stitchStartPastTheEnd.putU32be(
        kFirstSection + 3,
        static_cast<std::uint32_t>(stitchStartPastTheEnd.size() - kFirstSection - 7));
    auto missingSection = vp3Header(2);
    appendSection(missingSection, {.records = {0x01, 0x01, 0x02, 0x02}});
    // Each section would start 7 bytes after the last; the reader runs out of file instead of
    // reading the same section 65535 times.
    auto zeroLengths = vp3Header(0xFFFF);
    appendSection(zeroLengths, {}).putU32be(kFirstSection + 3, 0);
    // A header text, three entries and a skip; Latin-1 texts; an empty second text.
    auto threads = vp3Header(4, 130001, 130000, 7);
    appendSection(threads, {.rgb = {255, 128, 0},
                            .texts = {"1234", "Blue", "Robison-Anton"},
                            .entries = 3,
                            .skip = 9});
    appendSection(threads, {.texts = {"1234", "", ""}});
    appendSection(threads, {.texts = {"Cr\xE8me", "", "Fa\xE7on"}});
    appendSection(threads, {.texts = {"7", "Red", ""}});
    const std::pair<std::string, Bytes> cases[] = {
        {"no bytes", {}},
        {"wrong magic", DesignBytes().text("%vsx%").zeros(60)},
        {"no marker", DesignBytes().text("%vsm%").zeros(60).text("xxP")},
        {"a marker before position 28",
         DesignBytes().text("%vsm%").zeros(22).text("xxPP").zeros(40)},
        {"no colours", vp3Header(0).zeros(40)},
        // The text length at offset 6 points the colour count past the end.
        {"a colour count past the end", vp3Header(0).zeros(40).putLe(6, 0x10, 2)},
        {"a section header past the end", vp3Header(1).zeros(19)},
        {"a text past the end",
         vp3File({{.texts = {"1000", "Blue", "Brand"}}}).truncate(kFirstSection + 32)},
        {"a stitch start past the end", stitchStartPastTheEnd},
        {"a section length past the end", vp3File({{}}).putU32be(kFirstSection + 3, 1000)},
        {"a section length near 4 GiB", vp3File({{}}).putU32be(kFirstSection + 3, 0xFFFFFFFF)},
        {"a jump record past the end",
         vp3File({{.records = {0x01, 0x01, 0x80, 0x01, 0x00, 0x10}}})},
        {"a missing section", missingSection},
        {"zero section lengths", zeroLengths},
        {"the hoop's extents round up to millimetres; threads from the sections", threads},
        {"the largest extent does not wrap around", vp3File({{}}, 0xFFFFFFFF, 0)},
        {"stitch records with y negated",
         vp3File({{.records = {0x05, 0x05, 0x80, 0x01, 0x00, 0x64, 0xFF, 0x38, 0x80, 0x02, 0x80,
                               0x03, 0xFB, 0x0A}}})},
        // The running position goes on across sections; the last may hold no stitch.
        {"section ends are colour changes except the last",
         vp3File({{.records = {0x0A, 0x00, 0x0A, 0x00}},
                  {.records = {0xE2, 0xFB, 0x00, 0x00}},
                  {.records = {0x05, 0x0A, 0x01, 0x00}},
                  {.records = {}}})},
    };
    std::string trace;
    for (const auto& [name, bytes] : cases)
        trace += "# " + name + "\n" + describe(readWith(importVp3DesignFromData, bytes));
    expectGolden(trace, "read-vp3.txt");
}
