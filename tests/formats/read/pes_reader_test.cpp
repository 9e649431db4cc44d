// PES and PEC files and PEC segments made byte by byte, and what the readers make of them
// against tests/golden/read-pes-pec.txt.
#include "formats/read/readers.h"
#include "support/test_support.h"

namespace {

struct PecSegmentLayout {
    std::vector<std::uint8_t> colorIndexes = {20};
    std::int16_t width = 0;
    std::int16_t height = 0;
    Bytes start = {0x90, 0x00, 0x90, 0x00};  // two long-form coordinates, x then y
    Bytes stitches = {0xFF};                 // the end byte 0xFF included when wanted
    std::size_t stitchOffset = 525;
    std::size_t thumbnailSize = 4;
};

// A segment as it follows "LA:": label, colour list, graphic header, stitch data, thumbnails.
// The thumbnail offset points right after the stitch data.
DesignBytes pecSegment(const PecSegmentLayout& layout) {
    DesignBytes bytes;
    bytes.text("rose").padTo(45, ' ').bytes({std::uint8_t(layout.colorIndexes.size() - 1)});
    bytes.bytes(layout.colorIndexes).padTo(509, ' ').padTo(layout.stitchOffset);
    bytes.putLe(517, layout.width, 2).putLe(519, layout.height, 2);
    bytes.bytes(layout.start).bytes(layout.stitches);
    bytes.putLe(511, static_cast<std::int64_t>(bytes.size() - 509), 3);
    return bytes.zeros(layout.thumbnailSize);
}

// A segment whose stitch data holds the given records and then the end byte.
DesignBytes segmentWith(Bytes records) {
    records.push_back(0xFF);
    return pecSegment({.stitches = records});
}

// "#PES", the version digits, the PEC offset, headerRest, then "LA:" and the segment.
Bytes pesFile(const Bytes& segment, std::string_view digits = "0001",
              std::initializer_list<std::uint8_t> headerRest = {1, 0, 0, 0}) {
    auto bytes = DesignBytes().text("#PES").text(digits).u32le(12 + headerRest.size());
    return bytes.bytes(headerRest).text("LA:").bytes(segment);
}
Bytes pecFile(const Bytes& segment, std::string_view magicAndVersion = "#PEC0001") {
    return DesignBytes().text(magicAndVersion).text("LA:").bytes(segment);
}

}  // namespace

TEST(PesReader, ReadsWhatTheGoldenFileRecords) {
    using Reader = decltype(&importPesDesignFromData);
    const auto segment = [](HMKDesign& design, std::span<const std::uint8_t> bytes,
                            HMKError* error) {
        design.resetBounds();  // as the file readers do before they hand the segment on
        return design.importPecSegmentFromData(bytes, error);
    };
    Bytes noSection = pecFile(segmentWith({}));
    noSection[8] = 'X';
    Bytes shifted =
        pecSegment({.stitches = {0x05, 0x7B, 0xFF}, .stitchOffset = 526, .thumbnailSize = 0});
    shifted[525] = 0x90;
    Bytes noEndByte = segmentWith({0x05, 0x7B});
    noEndByte[525 + 4 + 2] = 0x01;  // the data reaches the end offset without 0xFF
    Bytes colourChanges;
    for (int i = 0; i < 3; ++i)
        colourChanges.insert(colourChanges.end(), {0xFE, 0xB0, 0x02});
    Bytes colourChangesEnded = colourChanges;
    colourChangesEnded.push_back(0xFF);
    std::vector<std::tuple<std::string, Reader, Bytes>> cases = {
        {"PES: a file version not listed", importPesDesignFromData,
         pesFile(segmentWith({}), "0002")},
        {"PES: the version is the whole field", importPesDesignFromData,
         pesFile(segmentWith({}), "2001")},
        {"PES: a PEC file", importPesDesignFromData, pecFile(segmentWith({}))},
        {"PES: seven bytes", importPesDesignFromData, DesignBytes().text("#PES001")},
        {"PES: eight bytes", importPesDesignFromData, DesignBytes().text("#PES0001")},
        {"PES: no section", importPesDesignFromData,
         DesignBytes().text("#PES0001 no section here")},
        {"PES: a second section", importPesDesignFromData,
         pesFile(segmentWith({}), "0001", {'L', 'A', ':'})},
        {"PEC", importPecDesignFromData, pecFile(segmentWith({0x05, 0x7B}))},
        {"PEC: a PES file", importPecDesignFromData, pecFile(segmentWith({}), "#PES0001")},
        {"PEC: ten bytes", importPecDesignFromData, DesignBytes().text("#PEC0001LA")},
        {"PEC: eleven bytes", importPecDesignFromData, DesignBytes().text("#PEC0001LA:")},
        {"PEC: version 2", importPecDesignFromData, pecFile(segmentWith({}), "#PEC0002")},
        {"PEC: no section", importPecDesignFromData, noSection},
        // Short and long coordinates: y grows downward, long forms with flags are moves.
        {"segment: short coordinates", segment, segmentWith({0x05, 0x7B, 0x3F, 0x40})},
        {"segment: long coordinates", segment,
         segmentWith({0x91, 0x00, 0x90, 0x10, 0x8F, 0xFF, 0x8F, 0xFF, 0x80, 0x01, 0x9F, 0xFF, 0x97,
                      0xFF, 0xA8, 0x00})},
        {"segment: mixed coordinates", segment,
         segmentWith({0x80, 0x20, 0x05, 0xFE, 0x10, 0x05, 0x05, 0x91, 0x00})},
        {"segment: the first stitch jumps from the centre (101 wide: 50) to the start (60, 20)",
         segment,
         pecSegment({.width = 101,
                     .height = 50,
                     .start = {0x90, 0x3C, 0x90, 0x14},
                     .stitches = {0x02, 0x00, 0xFF}})},
        {"segment: colour indexes through the Brother read table", segment,
         pecSegment({.colorIndexes = {1, 92, 200, 0}, .stitches = colourChangesEnded})},
        {"segment: the stitch data one byte later", segment, shifted},
        {"segment: 528 bytes", segment, Bytes(528, 0)},
        {"segment: 529 bytes", segment, Bytes(529, 0)},
        {"segment: no end byte", segment, noEndByte},
        {"segment: an end offset beyond the segment", segment,
         segmentWith({}).putLe(511, 100000, 3)},
        {"segment: an end offset before the stitch data", segment,
         segmentWith({}).putLe(511, 0, 3)},
        {"segment: a record cut off by the segment end", segment,
         pecSegment({.stitches = {0x05, 0x91}, .thumbnailSize = 0})},
    };
    for (const char* digits : {"0001", "0020", "0025", "0030", "0040", "0050", "0055", "0056",
                               "0060", "0070", "0071", "0080", "0090"})
        cases.emplace_back(std::string("PES version ") + digits, importPesDesignFromData,
                           pesFile(segmentWith({0x05, 0x7B}), digits));
    std::string trace;
    for (const auto& [name, reader, bytes] : cases)
        trace += "# " + name + "\n" + describe(readWith(reader, bytes));
    expectGolden(trace, "read-pes-pec.txt");
    // The stitch decoder alone counts the colour blocks, 0 on failure.
    HMKDesign design;
    EXPECT_EQ(design.importPecStichesFromData(shifted, 526), 1);
    EXPECT_EQ(design.importPecStichesFromData(segmentWith(colourChanges), 525), 4);
    EXPECT_EQ(design.importPecStichesFromData(shifted, 525), 0);
}
