#include "tool_runner.h"

namespace {

using Arguments = std::vector<std::string>;

// "convert", the files, then the options.
Arguments convert(const Arguments& files, const Arguments& options) {
    Arguments arguments = {"convert"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
}

class BatchConversion : public ToolTest {
protected:
    // count copies of a sample, named copy0.pes, copy1.pes, ...
    Arguments copies(const std::string& name, int count) {
        const auto source = sample(name);
        Arguments files;
        for (int i = 0; i < count; ++i) {
            const auto copy = folder_ / ("copy" + std::to_string(i) + source.extension().string());
            std::filesystem::copy_file(source, copy);
            files.push_back(copy.string());
        }
        return files;
    }

    std::filesystem::path output(const std::string& folder, int index, const std::string& format) {
        return folder_ / folder / ("copy" + std::to_string(index) + "." + format);
    }
};

}  // namespace

TEST_F(BatchConversion, WritesEachInputWithTheNewExtensionIntoTheOutputFolder) {
    ToolRun run = runTool(
        convert(copies("heart.jef", 3), {"--to", "dst", "--out-dir", (folder_ / "out").string()}));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(std::filesystem::exists(output("out", i, "dst")));
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
    Arguments files = copies("star.exp", 4);
    const auto broken = folder_ / "broken.xyz";
    std::filesystem::copy_file(files[0], broken);
    files.insert(files.begin() + 2, broken.string());
    ToolRun run = runTool(convert(files, {"--to", "jef", "--out-dir", (folder_ / "out").string()}));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("hemlark: " + broken.string() +
                           ": error 10: Unknown file format: .xyz is not a design format.\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.out.find("Converted 4 of 5 files to jef"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("1 failed"), std::string::npos) << run.out;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(std::filesystem::exists(output("out", i, "jef")));
    }
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out" / "broken.jef"));
}

TEST_F(BatchConversion, ParallelJobsWriteTheSameFilesAsOneJob) {
    const Arguments files = copies("flower.jef", 6);
    for (const auto& [jobs, folder] : {std::pair{"1", "serial"}, {"2", "parallel"}}) {
        ToolRun run = runTool(
            convert(files, {"--to", "pcs", "--jobs", jobs, "--out-dir", (folder_ / folder).string(),
                            "--select-all", "--rotate", "90"}));
        EXPECT_EQ(run.exitCode, 0) << run.err;
    }
    for (int i = 0; i < 6; ++i) {
        EXPECT_FALSE(readText(output("serial", i, "pcs")).empty());
        EXPECT_TRUE(readText(output("serial", i, "pcs")) == readText(output("parallel", i, "pcs")));
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
