#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "formats/read/readers.h"

namespace {

struct JanomeRead {
    HMKDesign design;
    HMKError error;
    bool ok = false;
};

JanomeRead readJef(const Bytes& bytes, std::string_view extension = "jef") {
    JanomeRead read;
    read.ok = importJefDesignFromData(read.design, bytes, extension, &read.error);
    return read;
}

JanomeRead readJpx(const Bytes& bytes) {
    JanomeRead read;
    read.ok = importJpxDesignFromData(read.design, bytes, &read.error);
    return read;
}

// A code missing from the Janome table.
constexpr std::int32_t kUnknownCode = 79;

// Three blocks described by the header, stitches with the given number of colour changes.
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

}  // namespace

TEST(JefReader, DecodesTheStitchEncoding) {
    struct Case {
        Bytes record;
        std::vector<HMKStitch> stitches;
    };
    const Case cases[] = {
        {{0x05, 0xFB}, {{5, -5, false, false}}},
        {{0x7F, 0x81}, {{127, -127, false, false}}},
        {{0x80, 0x01, 0x02, 0xFD}, {{2, -3, false, true}}},
        {{0x80, 0x02, 0x80, 0x7F}, {{-128, 127, true, false}}},
        {{0x80, 0x04, 0x01, 0x01}, {{1, 1, true, false}}},
        // Unknown control codes are zero stitches and reading resumes two bytes later.
        {{0x80, 0x03, 0x01, 0x02}, {{0, 0, false, false}, {1, 2, false, false}}},
        {{0x80, 0x10, 0x01, 0x02}, {}},
    };
    for (const auto& c : cases) {
        JanomeFileLayout layout = layoutWithColorChanges(2, 1);
        layout.stitches = {0x80, 0x01, 0x00, 0x00};
        appendBytes(layout.stitches, c.record);
        const auto read = readJef(jefFile(layout));
        ASSERT_TRUE(read.ok) << read.error.message();
        ASSERT_EQ(read.design.stitches().size(), 1 + c.stitches.size());
        for (std::size_t i = 0; i < c.stitches.size(); ++i) {
            EXPECT_EQ(read.design.stitches()[1 + i], c.stitches[i]);
        }
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
    JanomeFileLayout layout = layoutWithColorChanges(1, 0);
    layout.version = 1;
    const std::tuple<std::string_view, std::string_view, std::int32_t> cases[] = {
        {"jef", "JEF", 1}, {"jef+", "JEF+", 10}, {"jefx", "?", 0}};
    for (const auto& [extension, type, version] : cases) {
        const auto read = readJef(jefFile(layout), extension);
        EXPECT_EQ(read.design.designType(), type);
        EXPECT_EQ(read.design.designVersion(), version);
    }
    ScratchFolder folder;
    HMKDesign design;
    ASSERT_TRUE(design.importJefDesignFromURL(folder.write("x.JEF+", jefFile(layout))));
    EXPECT_EQ(design.designType(), "JEF+");
    EXPECT_EQ(design.designVersion(), 10);
}

TEST(JefReader, FilesOf51BytesOrFewerHaveNoMetaData) {
    auto read = readJef(Bytes(51, 0));
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 20);
    EXPECT_EQ(read.error.recoverySuggestion, "Unable to import JEF file (no meta data).");
    EXPECT_EQ(readJef({}).error.code, 20);
    // 52 bytes pass that check and fail on the colour table instead.
    read = readJef(Bytes(52, 0));
    EXPECT_EQ(read.error.code, 21);
    EXPECT_EQ(read.error.recoverySuggestion, "Unable to import JEF file (no color codes).");
}

TEST(JefReader, ColourTableMustFitTheFile) {
    Bytes bytes = jefFile(layoutWithColorChanges(3, 2));
    putLe32(bytes, 24, 0x7FFFFFFF);
    EXPECT_EQ(readJef(bytes).error.code, 21);
}

TEST(JefReader, MissingTensionsFailAsMissingColourCodes) {
    // Four colours: the length check asks for 136 bytes, the tensions end at 148.
    JanomeFileLayout layout = layoutWithColorChanges(4, 3);
    layout.tensions.clear();
    layout.stitches.clear();
    Bytes bytes = jefFile(layout);
    bytes.resize(140, 0);
    putLe32(bytes, 0, 120);
    const auto read = readJef(bytes);
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 21);
}

TEST(JefReader, StitchOffsetMustLieInsideTheFile) {
    for (std::int32_t offset : {-1, -100, 0x7FFFFFFF, 10000}) {
        Bytes bytes = jefFile(layoutWithColorChanges(1, 0));
        putLe32(bytes, 0, offset);
        const auto read = readJef(bytes);
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, 23);
        EXPECT_EQ(read.error.recoverySuggestion, "Unable to import JEF file (invalid offset).");
    }
}

TEST(JefReader, UnknownColourCodeBecomesThread220) {
    const auto read = readJef(jefFile(layoutWithColorChanges(1, 0)));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 1u);
    HMKThread expected = HMKThread::fromPaletteKey("220", "Janome");
    expected.tension = 10;
    EXPECT_EQ(read.design.threads()[0], expected);
}

TEST(JefReader, ColourCodesGoThroughTheJanomeTable) {
    JanomeFileLayout layout = layoutWithColorChanges(2, 1);
    layout.colorCodes = {1, 78};
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.threads()[0].key, "002");
    EXPECT_EQ(read.design.threads()[1].key, "224");
}

TEST(JefReader, UndescribedBlocksGetRecolouredCopiesOfTheLastThread) {
    JanomeFileLayout layout = layoutWithColorChanges(3, 4);
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok) << read.error.message();
    ASSERT_EQ(read.design.threads().size(), 5u);
    HMKThread expected = read.design.threads()[2];
    expected.changeToColor(HMKColor(0.5, 0.6, 0.6), "Janome");
    EXPECT_EQ(read.design.threads()[3], expected);
    EXPECT_EQ(read.design.threads()[4], expected);
}

TEST(JefReader, MoreHeaderColoursThanBlocksFails) {
    const auto read = readJef(jefFile(layoutWithColorChanges(5, 1)));
    EXPECT_FALSE(read.ok);
    EXPECT_EQ(read.error.code, 24);
    EXPECT_EQ(read.error.recoverySuggestion, "Unable to import JEF file (color changes).");
    EXPECT_EQ(read.design.threads().size(), 5u);
    EXPECT_EQ(read.design.stitches().size(), 2u);
}

TEST(JefReader, NoHeaderColoursLeaveNothingToCopy) {
    for (std::size_t colorChanges : {0, 2}) {
        const auto read = readJef(jefFile(layoutWithColorChanges(0, colorChanges)));
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, 24);
    }
}

TEST(JefReader, LoneFinalByteIsNotRead) {
    JanomeFileLayout layout = layoutWithColorChanges(1, 0);
    layout.stitches = {0x01, 0x02, 0x03, 0x04, 0x05};
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.stitches().size(), 2u);
    EXPECT_EQ(read.design.stitches()[1], HMKStitch(3, 4, false, false));
}

TEST(JefReader, TruncatedControlRecordEndsReadingWithoutError) {
    JanomeFileLayout layout = layoutWithColorChanges(1, 0);
    layout.stitches = {0x01, 0x02, 0x80, 0x02, 0x05};
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches().size(), 1u);
}

TEST(JefReader, BoundsFollowTheRunningPosition) {
    JanomeFileLayout layout = layoutWithColorChanges(1, 0);
    layout.stitches = {0x0A, 0x05, 0x80, 0x02, 0xEC, 0x00, 0x80, 0x10};
    const auto read = readJef(jefFile(layout));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.xMin(), -10);
    EXPECT_EQ(read.design.xMax(), 10);
    EXPECT_EQ(read.design.yMin(), 5);
    EXPECT_EQ(read.design.yMax(), 5);
}

TEST(JpxReader, ReadsItsOwnHeaderLayout) {
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
}

TEST(JpxReader, ColourMismatchIsAccepted) {
    const auto read = readJpx(jpxFile(layoutWithColorChanges(5, 1)));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.threads().size(), 5u);
}

TEST(JpxReader, HeaderFailures) {
    Bytes shortColorTable = jpxFile(layoutWithColorChanges(1, 0));
    putLe32(shortColorTable, 32, 100);
    Bytes badOffset = jpxFile(layoutWithColorChanges(1, 0));
    putLe32(badOffset, 0, -4);
    const std::tuple<Bytes, int, std::string_view> cases[] = {
        {Bytes(119, 0), 210, "Unable to import JPX file (no meta data)."},
        {shortColorTable, 211, "Unable to import JPX file (no color codes)."},
        {badOffset, 212, "Unable to import JPX file (invalid offset)."},
    };
    for (const auto& [bytes, code, text] : cases) {
        const auto read = readJpx(bytes);
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.design.designType(), "JPX");
        EXPECT_EQ(read.error.code, code);
        EXPECT_EQ(read.error.recoverySuggestion, text);
    }
}

TEST(JpxReader, TruncatedControlRecordIsSuccess) {
    JanomeFileLayout layout = layoutWithColorChanges(1, 0);
    layout.stitches = {0x01, 0x02, 0x80, 0x01};
    const auto read = readJpx(jpxFile(layout));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.stitches().size(), 1u);
}
