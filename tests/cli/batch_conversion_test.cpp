#include "tool_runner.h"

namespace {

class BatchConversion : public ToolTest {
protected:
    // "convert", count copies of a sample (copy0.jef, copy1.jef, ...), then the options.
    std::vector<std::string> convertCopies(const std::string& name, int count,
                                           const std::vector<std::string>& options) {
        const auto source = sample(name);
        std::vector<std::string> arguments = {"convert"};
        for (int i = 0; i < count; ++i) {
            arguments.push_back(path("copy" + std::to_string(i) + source.extension().string()));
            std::filesystem::copy_file(source, arguments.back());
        }
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }
};

}  // namespace

TEST_F(BatchConversion, WritesEachInputWithTheNewExtensionAndReportsFailingFiles) {
    std::vector<std::string> arguments =
        convertCopies("star.exp", 4, {"--to", "jef", "--out-dir", path("out")});
    std::filesystem::copy_file(arguments[1], folder.file("broken.xyz"));
    arguments.insert(arguments.begin() + 3, path("broken.xyz"));
    ToolRun run = runTool(arguments);
    EXPECT_EQ(run.exitCode, 1);
    // Standard error is no terminal here: one plain line per file.
    EXPECT_NE(
        run.err.find("hemlark: " + path("broken.xyz") + ": error 10: Unknown file format (UTI).\n"),
        std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("[5/5] "), std::string::npos) << run.err;
    EXPECT_NE(run.out.find("Converted 4 of 5 files to jef"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("; 1 failed"), std::string::npos) << run.out;
    for (int i = 0; i < 4; ++i)
        EXPECT_FALSE(folder.read("out/copy" + std::to_string(i) + ".jef").empty());
    // Without an output folder beside each input; inputs with the same stem fail instead of
    // overwriting each other.
    run = runTool(
        {"convert", sample("heart.pes").string(), sample("heart.dst").string(), "--to", "exp"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("Another input is already converted to"), std::string::npos) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.file("heart.exp")));
}

TEST_F(BatchConversion, ParallelJobsWriteTheSameFilesAsOneJob) {
    auto serial = convertCopies("flower.jef", 6, {"--to", "pcs", "--select-all", "--rotate", "90"});
    auto parallel = serial;
    serial.insert(serial.end(), {"--jobs", "1", "--out-dir", path("serial")});
    parallel.insert(parallel.end(), {"--jobs", "2", "--out-dir", path("parallel")});
    EXPECT_EQ(runTool(serial).exitCode, 0);
    EXPECT_EQ(runTool(parallel).exitCode, 0);
    for (int i = 0; i < 6; ++i) {
        const std::string name = "/copy" + std::to_string(i) + ".pcs";
        EXPECT_FALSE(folder.read("serial" + name).empty());
        EXPECT_TRUE(folder.read("serial" + name) == folder.read("parallel" + name));
    }
}
