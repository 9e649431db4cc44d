#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "tool_runner.h"

namespace fs = std::filesystem;

namespace {

// The tool looks for the disk service on the system bus; here there is none.
class WithoutDiskService {
public:
    WithoutDiskService() { setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1); }
    ~WithoutDiskService() { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }
};

}  // namespace

TEST_F(ToolTest, ExportIntoAFolderFollowsTheMachinesFoldersAndFormats) {
    const std::string design = sample("heart.jef").string();
    const fs::path stick = folder.file("STICK");
    fs::create_directories(stick);
    struct Case {
        std::vector<std::string> options;
        int exitCode;
        const char* result;  // the file written, or part of the error
    };
    const Case cases[] = {
        {{"--machine", "1"}, 0, "EMB/EmbF/heart.jef"},
        {{"--machine", "5", "--name", "EmbF6/rose"}, 0, "EmbF6/rose.jef"},
        {{"--machine", "0", "--format", "PES"}, 0, "heart.pes"},
        {{"--machine", "7", "--name", "star.DST"}, 0, "EMB/EmbF/star.DST"},
        {{"--machine", "1", "--format", "dst"}, 1, "only JEF files"},
        {{"--machine", "2", "--name", "EmbF5/sub/rose.jef"}, 1, "directly in EmbF5"},
        {{"--machine", "0", "--name", "new/rose.jef"}, 1, "reads no new folders"},
        {{"--machine", "1", "--name", "rose.pes", "--format", "jef"}, 2, "--format is jef"},
        {{"--machine", "9"}, 2, "--machine"},
    };
    for (const Case& test : cases) {
        std::vector<std::string> arguments{"export", design, "--dir", stick.string()};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, test.exitCode) << test.result << run.err;
        if (test.exitCode == 0) {
            EXPECT_TRUE(fs::exists(stick / test.result)) << test.result;
            EXPECT_NE(run.out.find("Design exported: " + (stick / test.result).string()),
                      std::string::npos)
                << run.out;
        } else {
            EXPECT_NE(run.err.find(test.result), std::string::npos) << run.err;
        }
    }
    EXPECT_EQ(runTool({"export", design, "--machine", "1"}).exitCode, 2);
    EXPECT_EQ(runTool({"export", design, "--machine", "1", "--dir", "nowhere"}).exitCode, 1);
}

TEST_F(ToolTest, ExportWithEjectCleansTheFolderAndWarnsThatItIsNoVolume) {
    const WithoutDiskService noService;
    const fs::path stick = folder.file("STICK");
    fs::create_directories(stick / ".Trashes");
    std::ofstream(stick / "._heart.jef") << "x";
    const ToolRun run = runTool({"export", sample("heart.jef").string(), "--machine", "2", "--dir",
                                 stick.string(), "--eject"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(fs::exists(stick / "EmbF5/heart.jef"));
    EXPECT_FALSE(fs::exists(stick / ".Trashes"));
    EXPECT_FALSE(fs::exists(stick / "._heart.jef"));
    EXPECT_NE(run.err.find("warning: not ejected"), std::string::npos) << run.err;
}

TEST_F(ToolTest, VolumesSaysSoWhenTheDiskServiceIsMissing) {
    const WithoutDiskService noService;
    const ToolRun run = runTool({"volumes", "--machine", "1"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("UDisks2 is not available"), std::string::npos) << run.err;
    EXPECT_EQ(runTool({"export", sample("heart.jef").string(), "--machine", "1", "--volume",
                       "/media/STICK"})
                  .exitCode,
              1);
}
