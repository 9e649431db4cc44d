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
};

TEST_F(ExportDispatch, RefusesADesignWithoutThreadsBeforeLookingAtStitches) {
    HMKDesign empty;
    HMKError error;
    EXPECT_FALSE(empty.exportDesignToURL(file("a.dst"), &error));
    EXPECT_EQ(error.code, 13);
    EXPECT_EQ(error.message(), "Unable to export embroidery file (no threads found).");

    HMKDesign threadsOnly = makeDesign({}, {makeThread("1", "Undefined")});
    EXPECT_FALSE(threadsOnly.exportDesignToURL(file("a.dst"), &error));
    EXPECT_EQ(error.code, 14);
    EXPECT_EQ(error.message(), "Unable to export embroidery file (no stitches found).");
    EXPECT_TRUE(folderContents().empty());
}

TEST_F(ExportDispatch, FailsWithoutAnErrorObjectWhenNoneIsAsked) {
    HMKDesign empty;
    EXPECT_FALSE(empty.exportDesignToURL(file("a.dst")));
    HMKDesign design = smallDesign();
    EXPECT_FALSE(design.exportDesignToURL(file("a.xyz")));
}

TEST_F(ExportDispatch, RefusesExtensionsOtherThanTheSixWritableOnes) {
    for (const char* name : {"a.jef+", "a.pcd", "a.pcq", "a.jpx", "a.xyz", "noextension", "a.ds"}) {
        HMKDesign design = smallDesign();
        HMKError error;
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(design.exportDesignToURL(file(name), &error)) << name;
        std::string log = ::testing::internal::GetCapturedStderr();
        EXPECT_EQ(error.code, 50) << name;
        EXPECT_EQ(error.message(), "Unsupported file format (UTI) for export.");
        EXPECT_EQ(design.designName(), name);
        EXPECT_NE(log.find("HMKDesign:exportDesignToURL:" + file(name).string() + "\n    Error: "),
                  std::string::npos)
            << log;
    }
    EXPECT_TRUE(folderContents().empty());
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

struct FormatCase {
    std::string name;
    std::string type;
    std::size_t magicLength;
    std::string magic;
};

TEST_F(ExportDispatch, ChoosesTheWriterByTheLowerCasedExtension) {
    const FormatCase cases[] = {
        {"Rose.DST", "DST", 3, "LA:"},      {"rose.Pes", "PES", 8, "#PES0001"},
        {"rose.pec", "PEC", 8, "#PEC0001"}, {"rose.jef", "JEF", 4, std::string("\x84\0\0\0", 4)},
        {"rose.exp", "EXP", 2, "\x80\x02"}, {"rose.PCS", "PCS", 1, "\x32"},
    };
    for (const FormatCase& c : cases) {
        HMKDesign design = smallDesign();
        HMKError error;
        ::testing::internal::CaptureStderr();
        bool written = design.exportDesignToURL(file(c.name), &error);
        ::testing::internal::GetCapturedStderr();
        ASSERT_TRUE(written) << c.name << ": " << error.message();
        EXPECT_EQ(design.designType(), c.type);
        EXPECT_EQ(design.designName(), c.name);
        EXPECT_EQ(slice(read(file(c.name)), 0, c.magicLength), bytesOf(c.magic)) << c.name;
    }
}

TEST_F(ExportDispatch, PassesTheWritersErrorOn) {
    HMKDesign design = smallDesign();
    HMKError error;
    EXPECT_FALSE(design.exportDesignToURL(file("missing/rose.dst"), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_TRUE(folderContents().empty());

    HMKDesign offCentre = smallDesign();  // the writer's own refusal comes through as well
    offCentre.stitches()[0].deltaX += 1000;
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(offCentre.exportDesignToURL(file("rose.pes"), &error));
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(error.code, 201);
}

TEST_F(ExportDispatch, RemovesAStaleSideFileAfterASuccessfulExport) {
    HMKDesign design = smallDesign();
    design.setDesignLocation(file("rose.dst"));
    writeExisting(file("rose.threads"), bytesOf("stale"));
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(design.exportDesignToURL(file("rose.dst")));
    ::testing::internal::GetCapturedStderr();
    EXPECT_FALSE(std::filesystem::exists(file("rose.threads")));
}

TEST_F(ExportDispatch, LeavesTheSideFileAloneWhenTheExportFails) {
    HMKDesign design = smallDesign();
    design.setDesignLocation(file("rose.pes"));
    design.stitches()[0].deltaX += 1000;
    writeExisting(file("rose.threads"), bytesOf("kept"));
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(design.exportDesignToURL(file("rose.pes")));
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(read(file("rose.threads")), bytesOf("kept"));
}

TEST_F(ExportDispatch, KeepsTheSideFileWhenTheDesignUsesIt) {
    HMKDesign design = smallDesign();
    design.setDesignLocation(file("rose.exp"));
    design.setUseThreadFile(true);
    writeExisting(file("rose.threads"), bytesOf("kept"));
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(design.exportDesignToURL(file("rose.exp")));
    ::testing::internal::GetCapturedStderr();
    EXPECT_TRUE(std::filesystem::exists(file("rose.threads")));
    EXPECT_EQ(design.threads()[0].key, "001");
}

// Every refusal and every failed write leaves an existing target byte for byte as it was
// and no temporary file behind.
TEST_F(ExportDispatch, ARefusedExportLeavesTheExistingFileUntouched) {
    const Bytes existing = bytesOf("an older design");
    for (const char* name : {"a.dst", "a.pes", "a.pec", "a.jef", "a.exp", "a.pcs"}) {
        writeExisting(file(name), existing);
    }
    HMKDesign design = smallDesign();
    design.setBounds(5, -10, 10, 10);  // DST: 130
    EXPECT_FALSE(design.exportDstDesignToURL(file("a.dst")));
    HMKDesign offCentre = smallDesign();
    offCentre.setBounds(0, 0, 700, 10);  // PES: 201; JEF and PCS: hoop refusals
    EXPECT_FALSE(offCentre.exportPesDesignToURL(file("a.pes")));
    EXPECT_FALSE(offCentre.exportJefDesignToURL(file("a.jef")));
    offCentre.setBounds(0, 0, 1300, 10);
    EXPECT_FALSE(offCentre.exportPcsDesignToURL(file("a.pcs")));
    for (const char* name : {"a.dst", "a.pes", "a.jef", "a.pcs"}) {
        EXPECT_EQ(read(file(name)), existing) << name;
    }
    EXPECT_EQ(folderContents(),
              (std::vector<std::string>{"a.dst", "a.exp", "a.jef", "a.pcs", "a.pec", "a.pes"}));
}

TEST_F(ExportDispatch, AFailingWriteLeavesTheExistingFileUntouchedAndNoTemporaryFile) {
    const Bytes existing = bytesOf("an older design");
    const char* names[] = {"a.dst", "a.pes", "a.pec", "a.jef", "a.exp", "a.pcs"};
    for (const char* name : names)
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

    std::vector<HMKError> errors;
    std::vector<bool> results;
    for (const char* name : names) {
        HMKDesign design = smallDesign();
        HMKError error;
        ::testing::internal::CaptureStderr();
        results.push_back(design.exportDesignToURL(file(name), &error));
        ::testing::internal::GetCapturedStderr();
        errors.push_back(error);
        EXPECT_EQ(design.designType(), "") << name;
    }
    setrlimit(RLIMIT_FSIZE, &previousLimit);
    sigaction(SIGXFSZ, &previousAction, nullptr);

    for (std::size_t i = 0; i < std::size(names); ++i) {
        EXPECT_FALSE(results[i]) << names[i];
        EXPECT_EQ(errors[i].domain, kHMKPosixErrorDomain) << names[i];
        EXPECT_EQ(errors[i].code, EFBIG) << names[i];
        EXPECT_EQ(read(file(names[i])), existing) << names[i];
    }
    EXPECT_EQ(folderContents(),
              (std::vector<std::string>{"a.dst", "a.exp", "a.jef", "a.pcs", "a.pec", "a.pes"}));
}

TEST_F(ExportDispatch, AFailedWriteLeavesTheThreadsAndTypeOfTheDesign) {
    HMKDesign design = smallDesign();
    design.setDesignType("JEF");
    HMKError error;
    EXPECT_FALSE(design.exportDstDesignToURL(file("missing/a.dst"), &error));
    EXPECT_FALSE(design.exportExpDesignToURL(file("missing/a.exp"), &error));
    EXPECT_EQ(design.threads()[0].key, "001");
    EXPECT_EQ(design.designType(), "JEF");
}

}  // namespace
