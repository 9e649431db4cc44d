// Files shaped like those real machines and digitizing programs write, where an older reading
// lost or misplaced stitches or refused the file: each built byte by byte with the same
// structure, and read the way its maker meant it.
#include <gtest/gtest.h>

#include "formats/read/readers.h"
#include "formats/write/writers.h"
#include "support/test_support.h"

namespace {

// A PEC section's bytes after "LA:": one colour, the stated extents, then the start position
// and stitch records (end byte included), which end where the thumbnails would begin.
Bytes pecSegment(std::int16_t width, std::int16_t height, const Bytes& startAndStitches) {
    DesignBytes bytes;
    bytes.padTo(45, 0x20).bytes({0, 1}).padTo(509, 0x20).zeros(16).bytes(startAndStitches);
    return bytes.putLe(517, width, 2).putLe(519, height, 2).putLe(511, bytes.size() - 509, 3);
}
Bytes pesFile(const Bytes& segment, std::string_view version = "0001") {
    return DesignBytes().text("#PES").text(version).zeros(4).text("LA:").bytes(segment);
}
Bytes pecFile(const Bytes& segment) {
    return DesignBytes().text("#PEC0001LA:").bytes(segment);
}
// A 100 x 60 box sewn clockwise from its top-left corner (PEC's y grows downward), after the
// start position given.
Bytes boxSegment(const Bytes& start) {
    return pecSegment(
        100, 60,
        DesignBytes().bytes(start).bytes({0x32, 0x00, 0x32, 0x00, 0x00, 0x1E, 0x00, 0x1E, 0xFF}));
}

// A VP3 file with no header text and 100 mm hoop extents; each section holds where it starts
// (x, y in 1/1000 mm, y downward) and its stitch records.
struct Vp3Section {
    std::int32_t startX;
    std::int32_t startY;
    Bytes records;
};
Bytes vp3File(const std::vector<Vp3Section>& sections) {
    DesignBytes bytes;
    bytes.text("%vsm%").zeros(1).u16be(0).padTo(12).u32be(100000).u32be(100000);
    bytes.padTo(40).text("xxPP").zeros(4).u16be(static_cast<std::uint32_t>(sections.size()));
    for (const auto& section : sections) {
        const std::size_t start = bytes.size();
        bytes.bytes({0x00, 0x05, 0x00}).u32be(0);
        bytes.u32be(static_cast<std::uint32_t>(section.startX));
        bytes.u32be(static_cast<std::uint32_t>(section.startY));
        bytes.bytes({1, 0, 0x11, 0x22, 0x33}).zeros(5).u16be(1).text("1").u16be(0).u16be(0);
        bytes.zeros(8).u16be(0).zeros(7).bytes(section.records);
        bytes.putU32be(start + 3, static_cast<std::uint32_t>(bytes.size() - start - 7));
    }
    return bytes;
}

// A PCS-family file: type, no palette unless given, the record count and 9-byte records of
// (x, y, flag), then the writer's 13 zero bytes.
Bytes pcxFile(std::uint8_t type, std::uint16_t count,
              const std::vector<std::array<std::uint32_t, 3>>& records) {
    DesignBytes bytes;
    bytes.bytes({0x32, type}).u16le(0).u16le(count);
    for (const auto& [x, y, flag] : records)
        bytes.zeros(1).u24le(x).zeros(1).u24le(y).bytes({static_cast<std::uint8_t>(flag)});
    return bytes.zeros(13);
}

ReadOutcome importNamed(std::string_view name, const Bytes& bytes) {
    ScratchFolder folder;
    ReadOutcome read;
    read.ok = read.design.importDesignFromURL(folder.write(name, bytes), &read.error);
    return read;
}

// Every writable format takes the design as read: no reading leaves it off-centre or with
// threads out of step with its colour blocks.
void expectWritableEverywhere(const HMKDesign& design) {
    for (std::string_view extension : {"dst", "exp", "jef", "pcs", "pes", "pec"}) {
        HMKDesign copy = design;
        HMKError error;
        EXPECT_TRUE(encodeDesignForExtension(copy, extension, &error))
            << extension << ": " << error.code << " " << error.message();
    }
}

}  // namespace

TEST(RealWorldReading, PesVersionsOfCurrentSoftwareAreReadAndUnknownOnesRefused) {
    for (const auto& [digits, accepted] :
         {std::pair{"0100", true}, {"0110", true}, {"0111", true}, {"0101", false}}) {
        SCOPED_TRACE(digits);
        const auto read = readWith(importPesDesignFromData,
                                   pesFile(boxSegment({0x90, 0x00, 0x90, 0x00}), digits));
        EXPECT_EQ(read.ok, accepted);
        EXPECT_EQ(read.design.designVersion(), std::stoi(digits));
    }
}

TEST(RealWorldReading, PecStartPositionFromEitherCornerOrOriginReadsCentred) {
    // The corner convention stores the first point's distance from the top-left of the
    // extents, (0, 0) here; the origin convention its offset from the centre, (-50, -30).
    // A start that fits neither (our own (w/2, h/2) for a box not centred on its origin)
    // keeps the corner reading, which leaves that box off-centre as its maker drew it.
    const std::tuple<std::string_view, Bytes, Bounds, bool> cases[] = {
        {"corner", {0x90, 0x00, 0x90, 0x00}, {-50, -30, 50, 30}, true},
        {"origin", {0x9F, 0xCE, 0x9F, 0xE2}, {-50, -30, 50, 30}, true},
        {"half size", {0x90, 0x32, 0x90, 0x1E}, {0, -60, 100, 0}, false},
    };
    for (const auto& [name, start, bounds, centred] : cases) {
        const Bytes segment = boxSegment(start);
        for (const auto& read : {readWith(importPesDesignFromData, pesFile(segment)),
                                 readWith(importPecDesignFromData, pecFile(segment))}) {
            SCOPED_TRACE(std::string(name) + " " + read.design.designType());
            ASSERT_TRUE(read.ok) << read.error.message();
            EXPECT_EQ(boundsOf(read.design), bounds);
            EXPECT_EQ(kindsOf(read.design.stitches()), "JSSSS");
            if (centred)
                expectWritableEverywhere(read.design);
        }
    }
}

TEST(RealWorldReading, FilesUnderAnotherFormatsExtensionAreReadByTheirContent) {
    const Bytes pes = pesFile(boxSegment({0x90, 0x00, 0x90, 0x00}));
    const std::tuple<std::string_view, Bytes, std::string_view> cases[] = {
        {"design.pec", pes, "PES"},
        {"design.pes", pecFile(boxSegment({0x90, 0x00, 0x90, 0x00})), "PEC"},
        {"design.jef", vp3File({{0, 0, {0x05, 0x05}}}), "VP3"},
        {"design.dst", pcxFile(2, 2, {{240, 240, 0}, {250, 240, 0}}), "PCS"},
    };
    for (const auto& [name, bytes, type] : cases) {
        SCOPED_TRACE(name);
        const auto read = importNamed(name, bytes);
        ASSERT_TRUE(read.ok) << read.error.message();
        EXPECT_EQ(read.design.designType(), type);
        EXPECT_TRUE(read.design.extensionMismatch());
    }
    EXPECT_FALSE(importNamed("design.pes", pes).design.extensionMismatch());
    // Unreadable either way: the extension's reader has the last word.
    Bytes broken = pes;
    broken.resize(540);  // too short for the PEC section's header
    const auto read = importNamed("design.pec", broken);
    EXPECT_FALSE(read.ok);
    expectDesignError(read.error, 30, "Unable to import PES/PEC file (missing header).");
    EXPECT_FALSE(read.design.extensionMismatch());
}

TEST(RealWorldReading, Vp3SectionsStartWhereTheySayAndKeepTheirLastStitch) {
    const auto read = readWith(importVp3DesignFromData,
                               vp3File({{1000, -2000, {0x05, 0x05}}, {-3000, 0, {0x01, 0x01}}}));
    ASSERT_TRUE(read.ok) << read.error.message();
    EXPECT_EQ(read.design.stitches(),
              (Stitches{jump(10, 20), stitch(5, -5), change(0, 0), jump(-45, -15), stitch(1, -1)}));
    ASSERT_EQ(read.design.threads().size(), 2u);
    EXPECT_EQ(read.design.threads()[1].color, HMKColor(0x11 / 255.0, 0x22 / 255.0, 0x33 / 255.0));
    // The most negative start is far away, but no overflow.
    const auto far = readWith(importVp3DesignFromData, vp3File({{0, INT32_MIN, {}}}));
    EXPECT_EQ(far.design.stitches(), (Stitches{jump(0, 21474836.48f)}));
}

TEST(RealWorldReading, KsmFlag90ChangesTheColourAndLeavesTheJumpsAlone) {
    const Bytes file = DesignBytes().zeros(512).bytes(
        {5, 5, 0x80, 3, 3, 0x98, 1, 2, 0x80, 0, 0, 0x90, 2, 1, 0x80, 0, 0, 0x88});
    const auto read = readWith(importKsmDesignFromData, file);
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(kindsOf(read.design.stitches()), "JJSCS");
    EXPECT_EQ(read.design.threads().size(), 2u);
}

TEST(RealWorldReading, PcxFinalReturnToStartIsAJumpAndLimitsAreExact) {
    // 240 units is 40 mm; the last record (flag 4) goes back to the first.
    const std::vector<std::array<std::uint32_t, 3>> returning = {
        {240, 240, 0}, {250, 240, 0}, {250, 250, 0}, {240, 240, 4}};
    auto notReturning = returning;
    notReturning.back() = {245, 240, 4};
    for (const auto& [type, records, kinds] : {std::tuple{std::uint8_t{0}, returning, "SSJ"},
                                               {std::uint8_t{1}, returning, "SSJ"},
                                               {std::uint8_t{0}, notReturning, "SSS"}}) {
        const auto read = readWith(importPcxDesignFromData, pcxFile(type, 4, records));
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(kindsOf(read.design.stitches()), kinds);
    }
    // 720 and 690 units are exactly 120 mm and 115 mm, the edges of the large hoop.
    const auto edge =
        readWith(importPcxDesignFromData, pcxFile(3, 2, {{360, 345, 0}, {720, 690, 0}}));
    ASSERT_TRUE(edge.ok) << edge.error.message();
    EXPECT_EQ(boundsOf(edge.design), (Bounds{600, 575, 600, 575}));
    const auto beyond =
        readWith(importPcxDesignFromData, pcxFile(3, 2, {{360, 345, 0}, {721, 690, 0}}));
    EXPECT_FALSE(beyond.ok);
    expectDesignError(beyond.error, 165, "Unable to read PCx (invalid stitch position)");
}

TEST(RealWorldReading, JpxThreadsFollowTheColourBlocksSoTheDesignCanBeSaved) {
    // Header colours against colour changes in the stitches: fewer get placeholders for the
    // blocks left undescribed, more lose the colours no block reaches.
    for (const auto& [colors, changes] : {std::pair{1, 2}, {4, 1}}) {
        DesignBytes file;
        file.zeros(32).u32le(colors).padTo(60).repeat({2, 0, 0, 0}, colors);
        file.repeat({13, 0, 0, 0}, colors).padTo(120).putLe(0, 120).bytes({0xFF, 0xFF});
        file.repeat({0x80, 0x01, 0x00, 0x00, 0x01, 0x01}, changes);
        const auto read = readWith(importJpxDesignFromData, file);
        ASSERT_TRUE(read.ok) << read.error.message();
        EXPECT_EQ(read.design.threads().size(), static_cast<std::size_t>(changes + 1));
        expectWritableEverywhere(read.design);
    }
}
