// The command line as a newcomer meets it: mistakes exit 2 with one plain message, options
// take what users type, help speaks the user's language, and the set-up script is quiet.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

#include "cli/design_json.h"
#include "model/color_list.h"
#include "normal_user_runner.h"
#include "tool_runner.h"

namespace {

using Arguments = std::vector<std::string>;

class Usage : public ToolTest {
protected:
    // Where the last stitch that is not a jump ends, in a JSON dump.
    HMKPoint lastStitchOfDump(const std::filesystem::path& dump) {
        HMKPoint needle;
        HMKPoint last;
        const HMKJson json = HMKJson::parse(readText(dump));
        for (const auto& record : json["records"]) {
            needle.x += record[0].get<double>();
            needle.y += record[1].get<double>();
            last = (record[2].get<int>() & kRecordJumpFlag) ? last : needle;
        }
        return last;
    }
};

// True when a parenthesis holds a single camel-case word ("(selectAll)").
bool namesAMethod(const std::string& text) {
    for (std::size_t open = text.find('('); open != std::string::npos;
         open = text.find('(', open + 1)) {
        const std::string word = text.substr(open + 1, text.find(')', open) - open - 1);
        if (!word.empty() && std::islower(static_cast<unsigned char>(word[0])) &&
            std::all_of(word.begin(), word.end(),
                        [](unsigned char c) { return std::isalpha(c); }) &&
            std::any_of(word.begin(), word.end(),
                        [](unsigned char c) { return std::isupper(c); })) {
            return true;
        }
    }
    return false;
}

std::size_t characterIndex(const std::string& line, const std::string& text) {
    const std::string before = line.substr(0, line.find(text));
    return std::count_if(before.begin(), before.end(),
                         [](unsigned char byte) { return (byte & 0xC0) != 0x80; });
}

}  // namespace

TEST_F(Usage, MistakesExitTwoWithOnePlainMessage) {
    const std::string input = sample("heart.dst").string();
    const std::string out = (folder.path() / "out.dst").string();
    const std::vector<std::pair<Arguments, std::string>> cases = {
        {{"convert", input, out, "--select-all", "--flip", "x"}, "--flip: expects V or H"},
        {{"convert", input, out, "--optimize", "XYZ"}, "--optimize: 'XYZ' is no format"},
        {{"convert", input, out, "--rotate", "4.5"}, "--rotate: '4.5' is not a whole number"},
        {{"convert", input, out, "--delete-thread", "9"},
         "--delete-thread 9: thread 9 is out of range (0 to 3)"},
        {{"convert", input, out, "--move-thread", "0,-1"}, "thread -1 is out of range"},
        {{"convert", input, out, "--at", "1,2"}, "--at: must follow --append"},
        {{"convert", input, (folder.path() / "out.pes").string(), "--hoop", "Janome,0"},
         "--hoop Janome,0: .pes files record no hoop"},
        {{"convert", input, (folder.path() / "out.jef").string(), "--hoop", "Pfaff,2"},
         "--hoop Pfaff,2: .jef files take a Janome hoop"},
        {{"convert", input, (folder.path() / "out.xyz").string()},
         "hemlark cannot write .xyz files"},
        {{"convert", input, out, "--palette", "Janom"}, "no palette named \"Janom\""},
        {{"convert", input, "--to", "xyz"}, "--to: hemlark cannot write .xyz files"},
        {{"convert", input, "--to", "pes", "--jobs", "-1"}, "--jobs: must be 0 or more, got -1"},
        {{"render", input, (folder.path() / "out.png").string(), "--thread", "9"},
         "--thread 9: thread 9 is out of range"},
    };
    for (const auto& [arguments, message] : cases) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_EQ(run.err.rfind("hemlark: ", 0), 0u) << run.err;
        EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(out)) << message;
    }
}

TEST_F(Usage, OptionsTakeWhatUsersType) {
    const std::string input = sample("heart.dst").string();
    const auto lower = folder.path() / "lower.json";
    const auto upper = folder.path() / "upper.json";
    for (const auto& [dump, orientation] : {std::pair(lower, "h"), std::pair(upper, "H")}) {
        EXPECT_EQ(runTool({"convert", input, dump.string(), "--select-all", "--flip", orientation})
                      .exitCode,
                  0);
    }
    EXPECT_EQ(readText(lower), readText(upper));

    // Batch outputs get lower-case extensions; --log may follow the subcommand.
    const ToolRun run =
        runTool({"convert", input, "--to", ".DST", "--out-dir", (folder.path() / "out").string(),
                 "--log", (folder.path() / "log").string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "out" / "heart.dst"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "log"));
}

TEST_F(Usage, EditsWithoutASelectionWarn) {
    const std::string input = sample("heart.dst").string();
    const ToolRun run =
        runTool({"convert", input, (folder.path() / "out.dst").string(), "--rotate", "45"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err.rfind("hemlark: " + input + ": warning: --rotate 45 changes nothing", 0), 0u)
        << run.err;
}

TEST_F(Usage, AppendAtPutsTheAppendedDesignsOriginThere) {
    const std::string input = sample("heart.dst").string();
    const std::string star = sample("star.pes").string();
    const auto pasted = folder.path() / "pasted.json";
    const auto placed = folder.path() / "placed.json";
    ASSERT_EQ(runTool({"convert", input, pasted.string(), "--append", star}).exitCode, 0);
    ASSERT_EQ(
        runTool({"convert", input, placed.string(), "--append", star, "--at", "100,0"}).exitCode,
        0);
    // Pasting puts the origin at (10, -10); --at moves it, and all of the design with it.
    EXPECT_NEAR(lastStitchOfDump(placed).x - lastStitchOfDump(pasted).x, 90, 0.01);
    EXPECT_NEAR(lastStitchOfDump(placed).y - lastStitchOfDump(pasted).y, 10, 0.01);
}

TEST_F(Usage, HelpAndListsReadWell) {
    for (const char* command : {"info", "convert", "render", "palettes", "hoops", "machines"}) {
        const ToolRun run = runTool({command, "--help"});
        EXPECT_NE(run.out.find("Usage: hemlark " + std::string(command)), std::string::npos);
        // No platform type identifiers, no method names such as "(selectAll)".
        EXPECT_EQ(run.out.find("UTI"), std::string::npos) << run.out;
        EXPECT_FALSE(namesAMethod(run.out)) << run.out;
    }
    // The notes column starts at the same character on every line that has notes.
    std::istringstream hoops(runTool({"hoops"}).out);
    std::set<std::size_t> notesColumns;
    for (std::string line; std::getline(hoops, line);) {
        for (const char* note : {"round", "multi-position"}) {
            if (line.find(note) != std::string::npos) {
                notesColumns.insert(characterIndex(line, note));
                break;
            }
        }
    }
    EXPECT_EQ(notesColumns.size(), 1u);
}

TEST_F(Usage, PaletteNamesTakeAnyCaseAndMistakesGetASuggestion) {
    if (!HMKColorList::named("Janome")) {
        GTEST_SKIP() << "the Janome palette is not installed";
    }
    EXPECT_EQ(runTool({"palettes", "JANOME"}).out, runTool({"palettes", "Janome"}).out);
    const ToolRun run = runTool({"palettes", "Janom"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("did you mean \"Janome\"?"), std::string::npos) << run.err;
    EXPECT_EQ(runTool({"convert", sample("heart.dst").string(),
                       (folder.path() / "out.dst").string(), "--palette", "janome"})
                  .exitCode,
              0);
}

TEST_F(Usage, InstallDepsIsQuietWhenAllIsThereAndClearWithoutRoot) {
    const std::string script = std::string(HEMLARK_SAMPLES_DIR) + "/../scripts/install-deps";
    const auto fakes = folder.path() / "bin";
    std::filesystem::create_directory(fakes);
    auto fake = [&](const std::string& name, const std::string& body) {
        std::ofstream(fakes / name) << "#!/bin/sh\n" << body << "\n";
        std::filesystem::permissions(fakes / name, std::filesystem::perms::owner_all);
    };
    // Everything is installed where the tests run, so the package manager is never asked.
    fake("apt-get", "echo apt-get was run; exit 1");
    fake("sudo", "echo sudo was run; exit 1");
    const std::string path = fakes.string() + ":" + std::getenv("PATH");
    ToolRun run = runProgram({"/usr/bin/env", "PATH=" + path, script}, std::nullopt);
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_EQ(run.out + run.err, "");

    // A user without root and without sudo, with every package missing, is told what to do.
    std::filesystem::remove(fakes / "sudo");
    fake("id", "echo 1000");
    fake("dpkg-query", "exit 1");
    for (const char* tool : {"bash", "grep"}) {
        std::filesystem::create_symlink(std::filesystem::path("/bin") / tool, fakes / tool);
    }
    run = runProgram({"/usr/bin/env", "PATH=" + fakes.string(), script}, std::nullopt);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("sudo is not available"), std::string::npos) << run.err;
}
