// What the tool says when an input is not what it should be: the operating system's reason
// for a file it cannot read, any file name printed whatever its bytes, and warnings for files
// that read but look wrong.
#include <sys/stat.h>

#include <fstream>
#include <tuple>

#include "cli/design_json.h"
#include "normal_user_runner.h"
#include "tool_runner.h"

namespace {

class ErrorMessages : public ToolTest {};

// The file on the command line of `hemlark info`, and what the operating system says.
struct FileCase {
    std::filesystem::path file;
    std::string reason;
};

void expectSystemError(const ToolRun& text, const ToolRun& json, const FileCase& c) {
    const std::string message = c.file.string() + ": " + c.reason;
    EXPECT_EQ(text.exitCode, 1) << c.file;
    EXPECT_EQ(text.err, "hemlark: " + message + "\n");
    EXPECT_EQ(json.exitCode, 1) << c.file;
    EXPECT_EQ(HMKJson::parse(json.out),
              (HMKJson{{"error", {{"system", true}, {"message", message}}}}));
}

}  // namespace

TEST_F(ErrorMessages, InputsThatCannotBeReadGetTheSystemsReasonWithoutANumber) {
    std::filesystem::create_directory(folder.path() / "folder.dst");
    ASSERT_EQ(::mkfifo((folder.path() / "pipe.dst").c_str(), 0644), 0);
    const std::vector<FileCase> cases = {
        {folder.path() / "missing.dst", "No such file or directory"},
        {folder.path() / "folder.dst", "Is a directory"},
        // A FIFO once blocked the tool for good, hence the time limit.
        {folder.path() / "pipe.dst", "Not a regular file"},
    };
    for (const FileCase& c : cases) {
        expectSystemError(
            runProgram({HEMLARK_TOOL, "info", c.file.string()}, std::nullopt, 10),
            runProgram({HEMLARK_TOOL, "info", "--json", c.file.string()}, std::nullopt, 10), c);
    }
}

TEST_F(ErrorMessages, UnreadableInputIsPermissionDenied) {
    const auto user = normalUser();
    if (!user) {
        GTEST_SKIP() << "running as root, and the user nobody cannot run the tool";
    }
    const FileCase locked{sample("heart.dst"), "Permission denied"};
    std::filesystem::permissions(locked.file, std::filesystem::perms::none);
    handOver(folder.path(), *user);  // the file, not its folder, is what may not be read
    expectSystemError(runToolAs(*user, {"info", locked.file.string()}),
                      runToolAs(*user, {"info", "--json", locked.file.string()}), locked);
}

TEST_F(ErrorMessages, NamesThatAreNotUtf8StillPrint) {
    // A Latin-1 name, as old USB sticks and zip files carry them.
    const auto design = folder.path() / "caf\xe9.dst";
    std::filesystem::copy_file(sample("heart.dst"), design);
    ToolRun run = runTool({"info", design.string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out.rfind("caf\xe9.dst (DST", 0), 0u) << run.out;

    const auto dump = folder.path() / "dump.json";
    for (const ToolRun& json : {runTool({"info", "--json", design.string()}),
                                runTool({"convert", design.string(), dump.string()})}) {
        EXPECT_EQ(json.exitCode, 0) << json.err;
    }
    // JSON holds UTF-8 only: the byte that is not becomes U+FFFD.
    EXPECT_EQ(HMKJson::parse(runTool({"info", "--json", design.string()}).out)["name"],
              "caf\xef\xbf\xbd.dst");
    EXPECT_EQ(HMKJson::parse(readText(dump))["name"], "caf\xef\xbf\xbd.dst");
}

TEST_F(ErrorMessages, FilesThatReadButLookWrongGetAWarning) {
    // A DST file cut off after a few hundred records.
    const auto cut = folder.path() / "cut.dst";
    std::ofstream(cut, std::ios::binary) << readText(sample("heart.dst")).substr(0, 1500);
    // Bytes that the EXP reader takes for 1,000 moves of 12.7 mm to the upper right.
    const auto huge = folder.path() / "huge.exp";
    std::ofstream(huge, std::ios::binary) << std::string(2000, '\x7f');
    // The file's own numbers: 988 bytes after the header hold 329 whole records.
    const std::vector<std::tuple<std::filesystem::path, std::string, std::string>> cases = {
        {cut, "warning: the header announces ", "records, the file holds 329;"},
        {huge, "warning: the design measures ", "more than any hoop holds"},
    };
    for (const auto& [file, warning, detail] : cases) {
        const ToolRun run = runTool({"info", file.string()});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.err.rfind("hemlark: " + file.string() + ": " + warning, 0), 0u) << run.err;
        EXPECT_NE(run.err.find(detail), std::string::npos) << run.err;
        const HMKJson json = HMKJson::parse(runTool({"info", "--json", file.string()}).out);
        EXPECT_EQ(json["warnings"].size(), 1u) << file;
    }
}
