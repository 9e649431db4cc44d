#include <signal.h>
#include <sys/resource.h>

#include "model/diagnostics.h"
#include "support/test_support.h"

namespace {

// A small design every writer accepts: centred, within every hoop, two colour blocks, of a
// type no writer makes.
HMKDesign smallDesign() {
    return makeDesign(
        {jump(-20, -20), stitch(10, 10), stitch(10, 10), change(), stitch(10, 0), stitch(-10, 10)},
        {makeThread("001", "Janome"), makeThread("002", "Janome")}, "VP3");
}

const std::vector<std::string> kSixFiles = {"a.dst", "a.exp", "a.jef", "a.pcs", "a.pec", "a.pes"};

// Collects the diagnostic lines logged while it lives.
struct DiagnosticLog {
    DiagnosticLog() {
        setDiagnosticSink([this](std::string_view line) { lines.emplace_back(line); });
    }
    ~DiagnosticLog() { setDiagnosticSink(nullptr); }
    std::vector<std::string> lines;
};

}  // namespace

// The writer is chosen by the lower-cased extension; other extensions are refused and logged
// whether or not the caller asked for the error.
TEST(ExportDispatch, ChoosesTheWriterByTheLowerCasedExtensionOrRefusesAndLogs) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"Rose.DST", "DST", "LA:"},
        {"rose.Pes", "PES", "#PES0001"},
        {"rose.pec", "PEC", "#PEC0001"},
        {"rose.jef", "JEF", std::string("\x84\0\0\0", 4)},
        {"rose.exp", "EXP", "\x80\x02"},
        {"rose.PCS", "PCS", "\x32"},
        {"a.jef+", "", ""},
        {"a.pcd", "", ""},
        {"a.jpx", "", ""},
        {"noextension", "", ""},
    };
    ScratchFolder folder;
    DiagnosticLog log;
    for (const auto& [name, type, magic] : cases) {
        HMKDesign design = smallDesign();
        HMKError error;
        EXPECT_EQ(design.exportDesignToURL(folder.file(name), &error), !type.empty()) << name;
        EXPECT_EQ(design.designType(), type.empty() ? "VP3" : type);
        EXPECT_EQ(design.designName(), name);
        if (type.empty())
            expectDesignError(error, 50, "Unsupported file format (UTI) for export.");
        else
            EXPECT_EQ(slice(folder.read(name), 0, magic.size()), Bytes(magic.begin(), magic.end()));
    }
    EXPECT_FALSE(smallDesign().exportDesignToURL(folder.file("rose.pcq")));
    ASSERT_EQ(log.lines.size(), 5u);
    EXPECT_EQ(log.lines[0],
              "HMKDesign:exportDesignToURL:" + folder.file("a.jef+").string() +
                  "\n    Error: " + std::string(kHMKDesignErrorDomain) +
                  " 50: Unsupported file format (UTI) for export., fileExtension: jef+");
    EXPECT_EQ(log.lines[4], "HMKDesign:exportDesignToURL:" + folder.file("rose.pcq").string() +
                                "\n    Error: , fileExtension: pcq");
    // Empty designs are refused before anything is written.
    HMKError error;
    EXPECT_FALSE(HMKDesign().exportDesignToURL(folder.file("empty.dst"), &error));
    expectDesignError(error, 13, "Unable to export embroidery file (no threads found).");
    HMKDesign threadsOnly = makeDesign({}, {makeThread("1")});
    EXPECT_FALSE(threadsOnly.exportDesignToURL(folder.file("empty.dst"), &error));
    expectDesignError(error, 14, "Unable to export embroidery file (no stitches found).");
    EXPECT_FALSE(std::filesystem::exists(folder.file("empty.dst")));
}

TEST(ExportDispatch, PassesTheWritersErrorOnAndKeepsTheSideFileInLine) {
    ScratchFolder folder;
    HMKDesign design = smallDesign();
    HMKError error;
    EXPECT_FALSE(design.exportDesignToURL(folder.file("missing/rose.dst"), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_EQ(design.threads()[0].key, "001");  // a failed write leaves threads and type
    EXPECT_EQ(design.designType(), "VP3");

    // A stale side file is removed only after a successful export of a design not using it.
    // name, design uses the side file, export succeeds, side file stays
    const std::tuple<std::string, bool, bool, bool> cases[] = {{"rose.dst", false, true, false},
                                                               {"rose.pes", false, false, true},
                                                               {"rose.exp", true, true, true}};
    for (const auto& [name, useThreadFile, succeeds, kept] : cases) {
        SCOPED_TRACE(name);
        HMKDesign design = smallDesign();
        design.setDesignLocation(folder.file(name));
        design.setUseThreadFile(useThreadFile);
        if (!succeeds)
            design.stitches()[0].deltaX += 1000;  // not centred: PES refuses with 201
        folder.write("rose.threads", "side file");
        EXPECT_EQ(design.exportDesignToURL(folder.file(name), &error), succeeds);
        EXPECT_EQ(std::filesystem::exists(folder.file("rose.threads")), kept);
        if (useThreadFile) {
            EXPECT_EQ(design.threads()[0].key, "001");
        }  // not replaced by placeholders
    }
}

// Every refusal and every failed write leaves an existing target byte for byte as it was
// and no temporary file behind.
TEST(ExportDispatch, RefusedAndFailedWritesLeaveTheExistingFileUntouched) {
    ScratchFolder folder;
    const std::string existing = "an older design";
    for (const auto& name : kSixFiles)
        folder.write(name, existing);
    HMKDesign design = smallDesign();
    design.setBounds(5, -10, 10, 10);  // DST: 130
    EXPECT_FALSE(design.exportDstDesignToURL(folder.file("a.dst")));
    design.setBounds(0, 0, 700, 10);  // PES: 201; JEF and PCS: hoop refusals
    EXPECT_FALSE(design.exportPesDesignToURL(folder.file("a.pes")));
    EXPECT_FALSE(design.exportJefDesignToURL(folder.file("a.jef")));
    design.setBounds(0, 0, 1300, 10);
    EXPECT_FALSE(design.exportPcsDesignToURL(folder.file("a.pcs")));

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
    for (std::size_t i = 0; i < kSixFiles.size(); ++i)
        results.push_back(designs[i].exportDesignToURL(folder.file(kSixFiles[i]), &errors[i]));
    setrlimit(RLIMIT_FSIZE, &previousLimit);
    sigaction(SIGXFSZ, &previousAction, nullptr);

    for (std::size_t i = 0; i < kSixFiles.size(); ++i) {
        SCOPED_TRACE(kSixFiles[i]);
        EXPECT_FALSE(results[i]);
        EXPECT_EQ(errors[i].domain, kHMKPosixErrorDomain);
        EXPECT_EQ(errors[i].code, EFBIG);
        EXPECT_EQ(designs[i].designType(), "VP3");
        EXPECT_EQ(designs[i].threads()[0].key, "001");
        EXPECT_EQ(folder.read(kSixFiles[i]), Bytes(existing.begin(), existing.end()));
    }
    EXPECT_EQ(folder.names(), kSixFiles);
}
