#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"
#include "model/design.h"

namespace {

// An empty side-file array matches a design without threads: a reader that ran and failed
// before making any thread therefore still leaves useThreadFile set.
constexpr std::string_view kEmptySideFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array/>\n</plist>\n";

}  // namespace

TEST(ImportDispatch, EveryKnownExtensionRunsAReaderThenTheSideFile) {
    ScratchFolder folder;
    // EXP has no header: an unreadable file reads as an empty design (see below).
    for (std::string_view extension : {"jef", "jef+", "jpx", "pes", "pec", "sew", "dst", "vp3",
                                       "ksm", "pcs", "pcd", "pcq", "PCQ", "Jef+"}) {
        SCOPED_TRACE(extension);
        const std::string name = "missing." + std::string(extension);
        folder.write("missing.threads", kEmptySideFile);
        HMKDesign design;
        HMKError error;
        EXPECT_FALSE(design.importDesignFromURL(folder.file(name), &error));
        EXPECT_NE(error.code, 0);
        EXPECT_TRUE(design.useThreadFile());
        EXPECT_EQ(design.designName(), name);
        EXPECT_EQ(design.designLocation(), folder.file(name));
    }
}

TEST(ImportDispatch, UnreadableExpFileIsAnEmptyDesign) {
    ScratchFolder folder;
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDesignFromURL(folder.file("missing.exp"), &error));
    EXPECT_EQ(error.code, 11);
    EXPECT_EQ(design.numberOfThreads(), 1u);
}

TEST(ImportDispatch, UnknownExtensionFailsWithoutRunningAReader) {
    ScratchFolder folder;
    folder.write("design.threads", kEmptySideFile);
    // A valid DST file under a foreign name: its content is never looked at.
    const auto path = folder.write("design.xyz", dstFile({{0x01, 0x00, 0x03}}));
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDesignFromURL(path, &error));
    EXPECT_EQ(error.code, 10);
    EXPECT_EQ(error.recoverySuggestion, "Unknown file format (UTI).");
    EXPECT_FALSE(design.useThreadFile());
    EXPECT_TRUE(design.designType().empty());
    EXPECT_EQ(design.designName(), "design.xyz");
}

TEST(ImportDispatch, ExtensionIsComparedLowerCased) {
    ScratchFolder folder;
    const auto path = folder.write("Rose.DST", dstFile({{0x01, 0x00, 0x03}, {0x02, 0x00, 0x03}}));
    HMKDesign design;
    ASSERT_TRUE(design.importDesignFromURL(path));
    EXPECT_EQ(design.designType(), "DST");
    EXPECT_EQ(design.designName(), "Rose.DST");
    EXPECT_EQ(design.displayRange(), (HMKRange{0, 2}));
    EXPECT_FALSE(design.useThreadFile());
}

TEST(ImportDispatch, JefPlusGoesToTheJefReader) {
    ScratchFolder folder;
    JanomeFileLayout layout;
    layout.stitches = {0x01, 0x01, 0x80, 0x10};
    HMKDesign design;
    ASSERT_TRUE(design.importDesignFromURL(folder.write("design.jef+", jefFile(layout))));
    EXPECT_EQ(design.designType(), "JEF+");
}

TEST(ImportDispatch, ClearsThePreviousDesign) {
    ScratchFolder folder;
    HMKDesign design;
    ASSERT_TRUE(design.importDesignFromURL(folder.write("a.dst", dstFile({{1, 0, 3}, {1, 0, 3}}))));
    ASSERT_TRUE(design.importDesignFromURL(folder.write("b.dst", dstFile({{1, 0, 3}}))));
    EXPECT_EQ(design.stitches().size(), 1u);
    EXPECT_EQ(design.threads().size(), 1u);
}

TEST(ImportDispatch, DesignWithOnlyTheEndRecordHoldsNoStitches) {
    ScratchFolder folder;
    Bytes bytes = dstHeader();
    appendBytes(bytes, {0x00, 0x00, 0xF3, 0x1A});
    ASSERT_EQ(bytes.size(), 516u);
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDesignFromURL(folder.write("empty.dst", bytes), &error));
    EXPECT_EQ(error.code, 11);
    EXPECT_EQ(error.recoverySuggestion, "File holds no stitches.");
    EXPECT_EQ(design.threads().size(), 1u);
}

TEST(ImportDispatch, DesignWithoutThreadsFails) {
    ScratchFolder folder;
    JanomeFileLayout layout;
    layout.colorCodes.clear();
    layout.tensions.clear();
    layout.stitches = {0x01, 0x01, 0x80, 0x10};
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDesignFromURL(folder.write("bare.jpx", jpxFile(layout)), &error));
    EXPECT_EQ(error.code, 12);
    EXPECT_EQ(error.recoverySuggestion, "File holds no threads.");
    EXPECT_EQ(design.stitches().size(), 1u);
}

TEST(ImportDispatch, ReaderErrorsArePassedOn) {
    ScratchFolder folder;
    HMKDesign design;
    HMKError error;
    EXPECT_FALSE(design.importDesignFromURL(folder.write("short.dst", Bytes(515, ' ')), &error));
    EXPECT_EQ(error.code, 123);
    EXPECT_FALSE(design.importDesignFromURL(folder.write("bad.dst", dstFile({{0, 0, 0}})), &error));
    EXPECT_EQ(error.code, 111);
}

TEST(ImportDispatch, FailsWithoutBuildingAnErrorWhenNoneWasAskedFor) {
    HMKDesign design;
    EXPECT_FALSE(design.importDesignFromURL("design.xyz"));
}

TEST(ImportDispatch, SideFileWithTheRightCountReplacesTheThreads) {
    ScratchFolder folder;
    const auto path = folder.write("rose.dst", dstFile({{0x01, 0x00, 0x03}, {0, 0, 0xC3}}));
    HMKDesign source;
    source.threads() = {HMKThread(HMKColor(1, 0, 0), "Red", "100", "P", "Palette P"),
                        HMKThread(HMKColor(0, 0, 1), "Blue", "200", "P", "Palette P")};
    source.exportThreadsForDesign(path);

    HMKDesign design;
    ASSERT_TRUE(design.importDesignFromURL(path));
    EXPECT_TRUE(design.useThreadFile());
    ASSERT_EQ(design.threads().size(), 2u);
    EXPECT_EQ(design.threads()[1].name, "Blue");
}

TEST(ImportDispatch, SideFileWithAnotherCountIsIgnored) {
    ScratchFolder folder;
    const auto path = folder.write("rose.dst", dstFile({{0, 0, 0xC3}, {0, 0, 0xC3}, {0, 0, 0xC3}}));
    HMKDesign source;
    source.threads().assign(3, HMKThread(HMKColor(1, 0, 0), "Red", "100", "P", "Palette P"));
    source.exportThreadsForDesign(path);

    HMKDesign design;
    design.setUseThreadFile(true);
    ASSERT_TRUE(design.importDesignFromURL(path));
    EXPECT_FALSE(design.useThreadFile());
    ASSERT_EQ(design.threads().size(), 4u);
    EXPECT_EQ(design.threads()[3].key, "4");
}
