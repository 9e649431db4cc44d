#include "tool_runner.h"

namespace {

class BatchConversion : public ToolTest {
protected:
    // count copies of a sample, named copy0.pes, copy1.pes, ...
    std::vector<std::string> copies(const std::string& name, int count) {
        const auto source = sample(name);
        std::vector<std::string> files;
        for (int i = 0; i < count; ++i) {
            const auto copy = folder_ / ("copy" + std::to_string(i) + source.extension().string());
            std::filesystem::copy_file(source, copy);
            files.push_back(copy.string());
        }
        return files;
    }
};

}  // namespace

TEST_F(BatchConversion, WritesEachInputWithTheNewExtensionIntoTheOutputFolder) {
    std::vector<std::string> arguments = {"convert"};
    for (const std::string& file : copies("heart.pes", 3))
        arguments.push_back(file);
    for (const std::string& option : {"--to", "dst", "--out-dir", (folder_ / "out").string()}) {
        arguments.push_back(option);
    }
    ToolRun run = runTool(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(
            std::filesystem::exists(folder_ / "out" / ("copy" + std::to_string(i) + ".dst")));
    }
    EXPECT_NE(run.out.find("Converted 3 of 3 files to dst"), std::string::npos) << run.out;
    // Standard error is no terminal here: one plain line per file.
    EXPECT_NE(run.err.find("[3/3] "), std::string::npos) << run.err;
}

TEST_F(BatchConversion, WithoutOutputFolderWritesBesideEachInput) {
    const auto input = sample("star.dst");
    ToolRun run = runTool({"convert", input.string(), "--to", "exp"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder_ / "star.exp"));
}

TEST_F(BatchConversion, FailingFileIsReportedAndTheOthersAreStillWritten) {
    std::vector<std::string> files = copies("star.pes", 4);
    const auto broken = folder_ / "broken.xyz";
    std::filesystem::copy_file(files[0], broken);
    files.insert(files.begin() + 2, broken.string());
    std::vector<std::string> arguments = {"convert"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    for (const std::string& option : {"--to", "jef", "--out-dir", (folder_ / "out").string()}) {
        arguments.push_back(option);
    }
    ToolRun run = runTool(arguments);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(
        run.err.find("hemlark: " + broken.string() + ": error 10: Unknown file format (UTI).\n"),
        std::string::npos)
        << run.err;
    EXPECT_NE(run.out.find("Converted 4 of 5 files to jef"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("1 failed"), std::string::npos) << run.out;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(
            std::filesystem::exists(folder_ / "out" / ("copy" + std::to_string(i) + ".jef")));
    }
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out" / "broken.jef"));
}

TEST_F(BatchConversion, ParallelJobsWriteTheSameFilesAsOneJob) {
    std::vector<std::string> files = copies("flower.pes", 6);
    for (const auto& [jobs, folder] : {std::pair{"1", "serial"}, {"2", "parallel"}}) {
        std::vector<std::string> arguments = {"convert"};
        arguments.insert(arguments.end(), files.begin(), files.end());
        for (const std::string& option :
             {std::string("--to"), std::string("pcs"), std::string("--jobs"), std::string(jobs),
              std::string("--out-dir"), (folder_ / folder).string(), std::string("--select-all"),
              std::string("--rotate"), std::string("90")}) {
            arguments.push_back(option);
        }
        ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
    }
    for (int i = 0; i < 6; ++i) {
        const std::string name = "copy" + std::to_string(i) + ".pcs";
        EXPECT_EQ(readText(folder_ / "serial" / name), readText(folder_ / "parallel" / name));
        EXPECT_FALSE(readText(folder_ / "serial" / name).empty());
    }
}

TEST_F(BatchConversion, InputsWithTheSameStemFailInsteadOfOverwritingEachOther) {
    const auto pes = sample("heart.pes");
    const auto dst = sample("heart.dst");
    ToolRun run = runTool({"convert", pes.string(), dst.string(), "--to", "exp"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("Another input is already converted to"), std::string::npos) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder_ / "heart.exp"));
}
