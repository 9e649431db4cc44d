#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"

namespace {

// An empty side-file array matches a design without threads: a reader that ran and failed
// before making any thread therefore still leaves useThreadFile set.
constexpr std::string_view kEmptySideFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array/>\n</plist>\n";

ReadOutcome import(const std::filesystem::path& path) {
    ReadOutcome result;
    result.ok = result.design.importDesignFromURL(path, &result.error);
    return result;
}

}  // namespace

TEST(ImportDispatch, EveryKnownExtensionRunsAReaderThenTheSideFile) {
    ScratchFolder folder;
    for (std::string_view extension : {"jef", "jef+", "jpx", "pes", "pec", "sew", "dst", "vp3",
                                       "ksm", "pcs", "pcd", "pcq", "PCQ", "Jef+"}) {
        SCOPED_TRACE(extension);
        const std::string name = "missing." + std::string(extension);
        folder.write("missing.threads", kEmptySideFile);
        const auto read = import(folder.file(name));
        EXPECT_FALSE(read.ok);
        EXPECT_NE(read.error.code, 0);
        EXPECT_TRUE(read.design.useThreadFile());
        EXPECT_EQ(read.design.designName(), name);
        EXPECT_EQ(read.design.designLocation(), folder.file(name));
    }
    // EXP has no header: an unreadable file reads as an empty design, which holds no stitches.
    const auto exp = import(folder.file("missing.exp"));
    EXPECT_EQ(exp.error.code, 11);
    EXPECT_EQ(exp.design.numberOfThreads(), 1u);
}

TEST(ImportDispatch, UnknownExtensionFailsWithoutRunningAReader) {
    ScratchFolder folder;
    folder.write("design.threads", kEmptySideFile);
    // A valid DST file under a foreign name: its content is never looked at.
    const auto read = import(folder.write("design.xyz", dstFile({{0x01, 0x00, 0x03}})));
    expectFailure(read, 10, "Unknown file format (UTI).");
    EXPECT_FALSE(read.design.useThreadFile());
    EXPECT_TRUE(read.design.designType().empty());
    EXPECT_EQ(read.design.designName(), "design.xyz");
    EXPECT_FALSE(HMKDesign().importDesignFromURL("design.xyz"));  // no error asked for
}

TEST(ImportDispatch, ExtensionIsComparedLowerCased) {
    ScratchFolder folder;
    const auto read = import(folder.write("Rose.DST", dstFile({{1, 0, 3}, {2, 0, 3}})));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(read.design.designType(), "DST");
    EXPECT_EQ(read.design.designName(), "Rose.DST");
    EXPECT_EQ(read.design.displayRange(), (HMKRange{0, 2}));
    EXPECT_FALSE(read.design.useThreadFile());
    const auto jefPlus =
        import(folder.write("design.jef+", jefFile({.stitches = {1, 1, 0x80, 0x10}})));
    ASSERT_TRUE(jefPlus.ok);
    EXPECT_EQ(jefPlus.design.designType(), "JEF+");
}

TEST(ImportDispatch, ClearsThePreviousDesign) {
    ScratchFolder folder;
    HMKDesign design;
    ASSERT_TRUE(design.importDesignFromURL(folder.write("a.dst", dstFile({{1, 0, 3}, {1, 0, 3}}))));
    ASSERT_TRUE(design.importDesignFromURL(folder.write("b.dst", dstFile({{1, 0, 3}}))));
    EXPECT_EQ(design.stitches().size(), 1u);
    EXPECT_EQ(design.threads().size(), 1u);
}

TEST(ImportDispatch, DesignWithoutStitchesOrThreadsFails) {
    ScratchFolder folder;
    const auto noStitches = import(folder.write("empty.dst", dstFile({})));
    expectFailure(noStitches, 11, "File holds no stitches.");
    EXPECT_EQ(noStitches.design.threads().size(), 1u);

    const auto noThreads = import(folder.write(
        "bare.jpx", jpxFile({.colorCodes = {}, .tensions = {}, .stitches = {1, 1, 0x80, 0x10}})));
    expectFailure(noThreads, 12, "File holds no threads.");
    EXPECT_EQ(noThreads.design.stitches().size(), 1u);
}

TEST(ImportDispatch, ReaderErrorsArePassedOn) {
    ScratchFolder folder;
    EXPECT_EQ(import(folder.write("short.dst", Bytes(515, ' '))).error.code, 123);
    EXPECT_EQ(import(folder.write("bad.dst", dstFile({{0, 0, 0}}))).error.code, 111);
}

TEST(ImportDispatch, SideFileReplacesTheThreadsOnlyWhenTheCountMatches) {
    ScratchFolder folder;
    const auto path = folder.write("rose.dst", dstFile({{0x01, 0x00, 0x03}, {0, 0, 0xC3}}));
    HMKDesign source;
    source.threads() = {HMKThread(HMKColor(1, 0, 0), "Red", "100", "P", "Palette P"),
                        HMKThread(HMKColor(0, 0, 1), "Blue", "200", "P", "Palette P")};
    source.exportThreadsForDesign(path);
    const auto matching = import(path);
    ASSERT_TRUE(matching.ok);
    EXPECT_TRUE(matching.design.useThreadFile());
    EXPECT_EQ(matching.design.threads(), source.threads());

    source.threads().push_back(source.threads()[0]);
    source.exportThreadsForDesign(path);
    HMKDesign design;
    design.setUseThreadFile(true);
    ASSERT_TRUE(design.importDesignFromURL(path));
    EXPECT_FALSE(design.useThreadFile());
    ASSERT_EQ(design.threads().size(), 2u);
    EXPECT_EQ(design.threads()[1].key, "2");
}
