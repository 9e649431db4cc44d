#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "formats/read/readers.h"

namespace {

ReadOutcome readJef(const Bytes& bytes, std::string_view extension = "jef") {
    return readWith(
        [&](HMKDesign& design, const Bytes& data, HMKError* error) {
            return importJefDesignFromData(design, data, extension, error);
        },
        bytes);
}

ReadOutcome readJpx(const Bytes& bytes) {
    return readWith(importJpxDesignFromData, bytes);
}

// A code missing from the Janome table.
constexpr std::int32_t kUnknownCode = 79;

// Header colours with tensions 10, 11, ..., and stitches with the given number of colour
// changes.
JanomeFileLayout layoutWithColorChanges(std::size_t headerColors, std::size_t colorChanges) {
    JanomeFileLayout layout;
    layout.colorCodes.assign(headerColors, kUnknownCode);
    layout.tensions.clear();
    for (std::size_t i = 0; i < headerColors; ++i)
        layout.tensions.push_back(10 + int(i));
    layout.stitches = {0x01, 0x01};
    for (std::size_t i = 0; i < colorChanges; ++i)
        appendBytes(layout.stitches, {0x80, 0x01, 0, 0});
    appendBytes(layout.stitches, {0x80, 0x10});
    return layout;
}

// One colour and the given stitch data.
JanomeFileLayout layoutWithStitches(Bytes stitches) {
    JanomeFileLayout layout = layoutWithColorChanges(1, 0);
    layout.stitches = std::move(stitches);
    return layout;
}

}  // namespace

TEST(JefReader, DecodesTheStitchEncoding) {
    const std::pair<Bytes, Stitches> cases[] = {
        {{0x05, 0xFB}, {plain(5, -5)}},
        {{0x7F, 0x81}, {plain(127, -127)}},
        {{0x80, 0x01, 0x02, 0xFD}, {change(2, -3)}},
        {{0x80, 0x02, 0x80, 0x7F}, {jump(-128, 127)}},
        {{0x80, 0x04, 0x01, 0x01}, {jump(1, 1)}},
        // Unknown control codes are zero stitches and reading resumes two bytes later.
        {{0x80, 0x03, 0x01, 0x02}, {plain(0, 0), plain(1, 2)}},
        {{0x80, 0x10, 0x01, 0x02}, {}},
        {{0x03, 0x04, 0x05}, {plain(3, 4)}},  // a lone final byte is not read
        {{0x80, 0x02, 0x05}, {}},             // a cut-off control record ends reading
    };
    for (const auto& [record, stitches] : cases) {
        SCOPED_TRACE(testing::PrintToString(record));
        // The first colour change leads the two colours' blocks in.
        JanomeFileLayout layout = layoutWithColorChanges(2, 1);
        layout.stitches = {0x80, 0x01, 0x00, 0x00};
        layout.stitches.insert(layout.stitches.end(), record.begin(), record.end());
        const auto read = readJef(jefFile(layout));
        ASSERT_TRUE(read.ok) << read.error.message();
        Stitches expected = {change(0, 0)};
        expected.insert(expected.end(), stitches.begin(), stitches.end());
        EXPECT_EQ(read.design.stitches(), expected);
    }
}

TEST(JefReader, SetsTypeVersionHoopThreadsAndTensions) {
    JanomeFileLayout layout = layoutWithColorChanges(2, 1);
    layout.version = 7;
    layout.hoopCode = 4;
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok) << read.error.message();
    EXPECT_EQ(read.design.designType(), "JEF");
    EXPECT_EQ(read.design.designVersion(), 7);
    ASSERT_TRUE(read.design.designHoop());
    EXPECT_EQ(read.design.designHoop()->name(), "SQ");
    ASSERT_EQ(read.design.threads().size(), 2u);
    EXPECT_EQ(read.design.threads()[0].tension, 10);
    EXPECT_EQ(read.design.threads()[1].tension, 11);
}

TEST(JefReader, ExtensionDecidesTypeAndVersion) {
    const Bytes bytes = jefFile(layoutWithColorChanges(1, 0));  // version 1
    const std::tuple<std::string_view, std::string_view, std::int32_t> cases[] = {
        {"jef", "JEF", 1}, {"jef+", "JEF+", 10}, {"jefx", "?", 0}};
    for (const auto& [extension, type, version] : cases) {
        const auto read = readJef(bytes, extension);
        EXPECT_EQ(read.design.designType(), type);
        EXPECT_EQ(read.design.designVersion(), version);
    }
    ScratchFolder folder;
    HMKDesign design;
    ASSERT_TRUE(design.importJefDesignFromURL(folder.write("x.JEF+", bytes)));
    EXPECT_EQ(design.designType(), "JEF+");
    EXPECT_EQ(design.designVersion(), 10);
}

TEST(JefReader, HeaderFailures) {
    const std::string noColorCodes = "Unable to import JEF file (no color codes).";
    Bytes hugeColorTable = jefFile(layoutWithColorChanges(3, 2));
    putLe(hugeColorTable, 24, 0x7FFFFFFF);
    // Four colours: the length check asks for 136 bytes, the tensions end at 148.
    JanomeFileLayout noTensions = layoutWithColorChanges(4, 3);
    noTensions.tensions.clear();
    noTensions.stitches.clear();
    Bytes missingTensions = jefFile(noTensions);
    missingTensions.resize(140, 0);
    putLe(missingTensions, 0, 120);
    std::vector<std::tuple<std::string, Bytes, int, std::string>> cases = {
        {"51 bytes", Bytes(51, 0), 20, "Unable to import JEF file (no meta data)."},
        {"no bytes", {}, 20, "Unable to import JEF file (no meta data)."},
        {"52 bytes", Bytes(52, 0), 21, noColorCodes},
        {"colour table beyond the file", hugeColorTable, 21, noColorCodes},
        {"missing tensions", missingTensions, 21, noColorCodes},
    };
    for (std::int32_t offset : {-1, -100, 0x7FFFFFFF, 10000}) {
        Bytes bytes = jefFile(layoutWithColorChanges(1, 0));
        putLe(bytes, 0, offset);
        cases.emplace_back("stitch offset " + std::to_string(offset), bytes, 23,
                           "Unable to import JEF file (invalid offset).");
    }
    for (const auto& [name, bytes, code, text] : cases) {
        SCOPED_TRACE(name);
        const auto read = readJef(bytes);
        expectFailure(read, code, text);
    }
}

TEST(JefReader, ColourCodesGoThroughTheJanomeTableAndUnknownOnesBecomeThread220) {
    JanomeFileLayout layout = layoutWithColorChanges(3, 2);
    layout.colorCodes = {1, 78, kUnknownCode};
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 3u);
    EXPECT_EQ(read.design.threads()[0].key, "002");
    EXPECT_EQ(read.design.threads()[1].key, "224");
    HMKThread expected = HMKThread::fromPaletteKey("220", "Janome");
    expected.tension = 12;
    EXPECT_EQ(read.design.threads()[2], expected);
}

TEST(JefReader, UndescribedBlocksGetRecolouredCopiesOfTheLastThread) {
    const auto read = readJef(jefFile(layoutWithColorChanges(3, 4)));
    ASSERT_TRUE(read.ok) << read.error.message();
    ASSERT_EQ(read.design.threads().size(), 5u);
    HMKThread expected = read.design.threads()[2];
    expected.changeToColor(HMKColor(0.5, 0.6, 0.6), "Janome");
    EXPECT_EQ(read.design.threads()[3], expected);
    EXPECT_EQ(read.design.threads()[4], expected);
}

TEST(JefReader, MoreHeaderColoursThanBlocksOrNoneToCopyFails) {
    for (auto [headerColors, colorChanges] : {std::pair{5, 1}, {0, 0}, {0, 2}}) {
        SCOPED_TRACE(testing::Message()
                     << headerColors << " colours, " << colorChanges << " changes");
        const auto read = readJef(jefFile(layoutWithColorChanges(headerColors, colorChanges)));
        expectFailure(read, 24, "Unable to import JEF file (color changes).");
        EXPECT_EQ(read.design.threads().size(), std::size_t(headerColors));
        EXPECT_EQ(read.design.stitches().size(), std::size_t(colorChanges + 1));
    }
}

TEST(JefReader, BoundsFollowTheRunningPosition) {
    const auto read =
        readJef(jefFile(layoutWithStitches({0x0A, 0x05, 0x80, 0x02, 0xEC, 0x00, 0x80, 0x10})));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(boundsOf(read.design), (Bounds{-10, 5, 10, 5}));
}

TEST(JpxReader, ReadsItsOwnHeaderLayoutAndAcceptsAColourMismatch) {
    JanomeFileLayout layout = layoutWithColorChanges(2, 1);
    layout.version = 2;
    layout.hoopCode = 1;
    const auto read = readJpx(jpxFile(layout));
    ASSERT_TRUE(read.ok) << read.error.message();
    EXPECT_EQ(read.design.designType(), "JPX");
    EXPECT_EQ(read.design.designVersion(), 20);
    ASSERT_TRUE(read.design.designHoop());
    EXPECT_EQ(read.design.designHoop()->name(), "C/FA/M3");
    ASSERT_EQ(read.design.threads().size(), 2u);
    EXPECT_EQ(read.design.threads()[1].tension, 11);
    EXPECT_EQ(read.design.stitches().size(), 2u);

    const auto mismatch = readJpx(jpxFile(layoutWithColorChanges(5, 1)));
    ASSERT_TRUE(mismatch.ok);
    EXPECT_EQ(mismatch.design.threads().size(), 2u);  // one per block
}

TEST(JpxReader, HeaderFailures) {
    Bytes shortColorTable = jpxFile(layoutWithColorChanges(1, 0));
    putLe(shortColorTable, 32, 100);
    Bytes badOffset = jpxFile(layoutWithColorChanges(1, 0));
    putLe(badOffset, 0, -4);
    const std::tuple<Bytes, int, std::string_view> cases[] = {
        {Bytes(119, 0), 210, "Unable to import JPX file (no meta data)."},
        {shortColorTable, 211, "Unable to import JPX file (no color codes)."},
        {badOffset, 212, "Unable to import JPX file (invalid offset)."},
    };
    for (const auto& [bytes, code, text] : cases) {
        const auto read = readJpx(bytes);
        expectFailure(read, code, text);
        EXPECT_EQ(read.design.designType(), "JPX");
    }
}

TEST(JpxReader, TruncatedControlRecordIsSuccess) {
    const auto read = readJpx(jpxFile(layoutWithStitches({0x01, 0x02, 0x80, 0x01})));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches(), Stitches{plain(1, 2)});
}
