#include "support/test_support.h"

namespace {

// An empty side-file array matches a design without threads: a reader that ran and failed
// before making any thread therefore still leaves useThreadFile set.
constexpr std::string_view kEmptySideFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array/>\n</plist>\n";

// A DST file (its header tags are only looked for) holding the records.
Bytes dstFile(std::initializer_list<std::uint8_t> records) {
    return DesignBytes()
        .text("LA:ST:CO:+X:-X:+Y:-Y:AX:AY:")
        .padTo(512, ' ')
        .bytes(records)
        .bytes({0, 0, 0xF3, 0x1A});
}

ReadOutcome import(const std::filesystem::path& path) {
    ReadOutcome result;
    result.ok = result.design.importDesignFromURL(path, &result.error);
    return result;
}

}  // namespace

TEST(ImportDispatch, TheLowerCasedExtensionAloneChoosesTheReaderAndTheSideFileFollows) {
    // Each reader fails on a missing file with its own "too short" error; EXP reads it as an
    // empty design, which holds no stitches. The side file is applied whatever the outcome.
    const std::tuple<std::string_view, int, std::string_view> cases[] = {
        {"jef", 20, ""},     {"Jef+", 20, ""},   {"jpx", 210, "JPX"}, {"pes", 30, "PES"},
        {"pec", 30, "PEC"},  {"sew", 90, "SEW"}, {"dst", 123, "DST"}, {"vp3", 150, "VP3"},
        {"ksm", 170, "KSM"}, {"pcs", 160, ""},   {"pcd", 160, ""},    {"PCQ", 160, ""},
        {"exp", 11, "EXP"},
    };
    ScratchFolder folder;
    folder.write("missing.threads", kEmptySideFile);
    for (const auto& [extension, code, type] : cases) {
        SCOPED_TRACE(extension);
        const std::string name = "missing." + std::string(extension);
        const auto read = import(folder.file(name));
        EXPECT_FALSE(read.ok);
        EXPECT_EQ(read.error.code, code);
        EXPECT_EQ(read.design.designType(), type);
        EXPECT_EQ(read.design.useThreadFile(), extension != "exp");  // EXP made a thread
        EXPECT_EQ(read.design.designName(), name);
        EXPECT_EQ(read.design.designLocation(), folder.file(name));
    }
    // A valid DST under a foreign name: its content is never looked at.
    folder.write("design.threads", kEmptySideFile);
    const auto foreign = import(folder.write("design.xyz", dstFile({0x01, 0x00, 0x03})));
    expectDesignError(foreign.error, 10, "Unknown file format (UTI).");
    EXPECT_FALSE(foreign.design.useThreadFile());
    EXPECT_TRUE(foreign.design.designType().empty());
    EXPECT_FALSE(HMKDesign().importDesignFromURL("design.xyz"));  // no error asked for
}

TEST(ImportDispatch, ReplacesThePreviousDesignAndRefusesOneWithoutStitchesOrThreads) {
    ScratchFolder folder;
    HMKDesign design;
    ASSERT_TRUE(
        design.importDesignFromURL(folder.write("a.dst", dstFile({1, 0, 3, 1, 0, 3, 0, 0, 0xC3}))));
    ASSERT_TRUE(design.importDesignFromURL(folder.write("Rose.DST", dstFile({1, 0, 3, 2, 0, 3}))));
    EXPECT_EQ(design.designType(), "DST");
    EXPECT_EQ(design.designName(), "Rose.DST");
    EXPECT_EQ(design.stitches().size(), 2u);
    EXPECT_EQ(design.threads().size(), 1u);
    EXPECT_EQ(design.displayRange(), (HMKRange{0, 2}));
    EXPECT_FALSE(design.useThreadFile());

    const auto noStitches = import(folder.write("empty.dst", dstFile({})));
    expectDesignError(noStitches.error, 11, "File holds no stitches.");
    EXPECT_EQ(noStitches.design.threads().size(), 1u);
    // A JPX file without colours and one stitch.
    const auto noThreads = import(
        folder.write("bare.jpx", DesignBytes().u32le(120).padTo(120).bytes({1, 1, 0x80, 0x10})));
    expectDesignError(noThreads.error, 12, "File holds no threads.");
    EXPECT_EQ(noThreads.design.stitches().size(), 1u);
}

TEST(ImportDispatch, SideFileReplacesTheThreadsOnlyWhenTheCountMatches) {
    ScratchFolder folder;
    const auto path = folder.write("rose.dst", dstFile({0x01, 0x00, 0x03, 0, 0, 0xC3}));
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
    EXPECT_EQ(design.threads()[1], HMKThread::fromPaletteKey("2", "Undefined"));
}
