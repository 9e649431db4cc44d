#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "model/diagnostics.h"
#include "write_test_support.h"

namespace {

class ExportDispatch : public WriterTest {
protected:
    // A small design every writer accepts: centred, within every hoop, two colour blocks.
    static HMKDesign smallDesign() {
        return makeDesign({jump(-20, -20), plain(10, 10), plain(10, 10), change(0, 0), plain(10, 0),
                           plain(-10, 10)},
                          {makeThread("001", "Janome"), makeThread("002", "Janome")});
    }
    // Exports through the dispatch and returns what it logged.
    static std::string exportLogged(HMKDesign& design, const std::filesystem::path& path,
                                    HMKError* error, bool expected) {
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(design.exportDesignToURL(path, error), expected) << path;
        return ::testing::internal::GetCapturedStderr();
    }
    const std::vector<std::string> kSixFiles = {"a.dst", "a.exp", "a.jef",
                                                "a.pcs", "a.pec", "a.pes"};
};

TEST_F(ExportDispatch, RefusesADesignWithoutThreadsBeforeLookingAtStitches) {
    HMKError error;
    EXPECT_FALSE(HMKDesign().exportDesignToURL(file("a.dst"), &error));
    expectRefusal(error, 13, "Unable to export embroidery file (no threads found).");
    HMKDesign threadsOnly = makeDesign({}, {makeThread("1", "Undefined")});
    EXPECT_FALSE(threadsOnly.exportDesignToURL(file("a.dst"), &error));
    expectRefusal(error, 14, "Unable to export embroidery file (no stitches found).");
    EXPECT_TRUE(folderContents().empty());
    EXPECT_FALSE(HMKDesign().exportDesignToURL(file("a.dst")));  // no error asked for
}

TEST_F(ExportDispatch, RefusesExtensionsOtherThanTheSixWritableOnes) {
    for (const char* name : {"a.jef+", "a.pcd", "a.pcq", "a.jpx", "a.xyz", "noextension", "a.ds"}) {
        SCOPED_TRACE(name);
        HMKDesign design = smallDesign();
        HMKError error;
        const std::string log = exportLogged(design, file(name), &error, false);
        expectRefusal(error, 50, "Unsupported file format (UTI) for export.");
        EXPECT_EQ(design.designName(), name);
        EXPECT_NE(log.find("HMKDesign:exportDesignToURL:" + file(name).string() + "\n    Error: "),
                  std::string::npos)
            << log;
    }
    EXPECT_TRUE(folderContents().empty());
    HMKDesign design = smallDesign();
    EXPECT_FALSE(design.exportDesignToURL(file("a.xyz")));  // no error asked for
}

TEST_F(ExportDispatch, LogsOnlyAnUnsupportedTargetWithOrWithoutAnError) {
    std::vector<std::string> log;
    setDiagnosticSink([&](std::string_view line) { log.emplace_back(line); });
    HMKDesign design = smallDesign();
    EXPECT_TRUE(design.exportDesignToURL(file("Rose.DST")));
    EXPECT_TRUE(log.empty());
    HMKError error;
    EXPECT_FALSE(design.exportDesignToURL(file("Rose.JEF+"), &error));
    EXPECT_FALSE(design.exportDesignToURL(file("rose.pcd")));
    setDiagnosticSink(nullptr);
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0], "HMKDesign:exportDesignToURL:" + file("Rose.JEF+").string() +
                          "\n    Error: " + std::string(kHMKDesignErrorDomain) +
                          " 50: Unsupported file format (UTI) for export., fileExtension: jef+");
    EXPECT_EQ(log[1], "HMKDesign:exportDesignToURL:" + file("rose.pcd").string() +
                          "\n    Error: , fileExtension: pcd");
}

TEST_F(ExportDispatch, ChoosesTheWriterByTheLowerCasedExtension) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"Rose.DST", "DST", "LA:"},      {"rose.Pes", "PES", "#PES0001"},
        {"rose.pec", "PEC", "#PEC0001"}, {"rose.jef", "JEF", std::string("\x84\0\0\0", 4)},
        {"rose.exp", "EXP", "\x80\x02"}, {"rose.PCS", "PCS", "\x32"},
    };
    for (const auto& [name, type, magic] : cases) {
        HMKDesign design = smallDesign();
        HMKError error;
        EXPECT_TRUE(design.exportDesignToURL(file(name), &error)) << error.message();
        EXPECT_EQ(design.designType(), type);
        EXPECT_EQ(design.designName(), name);
        EXPECT_EQ(slice(read(file(name)), 0, magic.size()), bytesOf(magic)) << name;
    }
}

TEST_F(ExportDispatch, PassesTheWritersErrorOn) {
    HMKDesign design = smallDesign();
    HMKError error;
    EXPECT_FALSE(design.exportDesignToURL(file("missing/rose.dst"), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_TRUE(folderContents().empty());

    design.stitches()[0].deltaX += 1000;  // the writer's own refusal comes through as well
    exportLogged(design, file("rose.pes"), &error, false);
    EXPECT_EQ(error.code, 201);
}

TEST_F(ExportDispatch, RemovesAStaleSideFileOnlyAfterASuccessfulExportOfADesignNotUsingIt) {
    // name, design uses the side file, export succeeds, side file stays
    const std::tuple<std::string, bool, bool, bool> cases[] = {{"rose.dst", false, true, false},
                                                               {"rose.pes", false, false, true},
                                                               {"rose.exp", true, true, true}};
    for (const auto& [name, useThreadFile, succeeds, kept] : cases) {
        SCOPED_TRACE(name);
        HMKDesign design = smallDesign();
        design.setDesignLocation(file(name));
        design.setUseThreadFile(useThreadFile);
        if (!succeeds)
            design.stitches()[0].deltaX += 1000;
        writeExisting(file("rose.threads"), bytesOf("side file"));
        exportLogged(design, file(name), nullptr, succeeds);
        EXPECT_EQ(std::filesystem::exists(file("rose.threads")), kept);
        if (!succeeds) {
            EXPECT_EQ(read(file("rose.threads")), bytesOf("side file"));
        }
        if (useThreadFile) {
            EXPECT_EQ(design.threads()[0].key, "001");  // not replaced by placeholders
        }
    }
}

// Every refusal and every failed write leaves an existing target byte for byte as it was
// and no temporary file behind.
TEST_F(ExportDispatch, ARefusedExportLeavesTheExistingFileUntouched) {
    const Bytes existing = bytesOf("an older design");
    for (const auto& name : kSixFiles)
        writeExisting(file(name), existing);
    HMKDesign design = smallDesign();
    design.setBounds(5, -10, 10, 10);  // DST: 130
    EXPECT_FALSE(design.exportDstDesignToURL(file("a.dst")));
    design.setBounds(0, 0, 700, 10);  // PES: 201; JEF and PCS: hoop refusals
    EXPECT_FALSE(design.exportPesDesignToURL(file("a.pes")));
    EXPECT_FALSE(design.exportJefDesignToURL(file("a.jef")));
    design.setBounds(0, 0, 1300, 10);
    EXPECT_FALSE(design.exportPcsDesignToURL(file("a.pcs")));
    for (const auto& name : kSixFiles)
        EXPECT_EQ(read(file(name)), existing) << name;
    EXPECT_EQ(folderContents(), kSixFiles);
}

TEST_F(ExportDispatch, AFailingWriteLeavesTheExistingFileUntouchedAndNoTemporaryFile) {
    const Bytes existing = bytesOf("an older design");
    for (const auto& name : kSixFiles)
        writeExisting(file(name), existing);

    // A file-size limit makes every write fail part-way, even for a privileged user.
    struct sigaction ignore {};
    struct sigaction previousAction {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignore, &previousAction);
    rlimit previousLimit{};
    getrlimit(RLIMIT_FSIZE, &previousLimit);
    rlimit limit = previousLimit;
    limit.rlim_cur = 16;  // below the smallest of the six files
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::vector<HMKDesign> designs(kSixFiles.size(), smallDesign());
    std::vector<HMKError> errors(kSixFiles.size());
    std::vector<int> results;
    for (std::size_t i = 0; i < kSixFiles.size(); ++i) {
        ::testing::internal::CaptureStderr();
        results.push_back(designs[i].exportDesignToURL(file(kSixFiles[i]), &errors[i]));
        ::testing::internal::GetCapturedStderr();
    }
    setrlimit(RLIMIT_FSIZE, &previousLimit);
    sigaction(SIGXFSZ, &previousAction, nullptr);

    for (std::size_t i = 0; i < kSixFiles.size(); ++i) {
        SCOPED_TRACE(kSixFiles[i]);
        EXPECT_FALSE(results[i]);
        EXPECT_EQ(errors[i].domain, kHMKPosixErrorDomain);
        EXPECT_EQ(errors[i].code, EFBIG);
        EXPECT_EQ(designs[i].designType(), "");
        EXPECT_EQ(read(file(kSixFiles[i])), existing);
    }
    EXPECT_EQ(folderContents(), kSixFiles);
}

TEST_F(ExportDispatch, AFailedWriteLeavesTheThreadsAndTypeOfTheDesign) {
    HMKDesign design = smallDesign();
    design.setDesignType("JEF");
    EXPECT_FALSE(design.exportDstDesignToURL(file("missing/a.dst")));
    EXPECT_FALSE(design.exportExpDesignToURL(file("missing/a.exp")));
    EXPECT_EQ(design.threads()[0].key, "001");
    EXPECT_EQ(design.designType(), "JEF");
}

}  // namespace
