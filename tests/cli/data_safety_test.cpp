// The tool never loses a user's file: read-only files stay, replaced files keep their mode,
// links stay links, inputs are never overwritten by accident, side files of other designs stay.
#include <sys/stat.h>

#include <fstream>

#include "normal_user_runner.h"
#include "tool_runner.h"

namespace {

using Arguments = std::vector<std::string>;
using std::filesystem::perms;

class DataSafety : public ToolTest {};

perms permissionsOf(const std::filesystem::path& file) {
    return std::filesystem::status(file).permissions();
}

}  // namespace

TEST_F(DataSafety, ReadOnlyTargetsAreRefusedAndLeftAsTheyWere) {
    const auto user = normalUser();
    if (!user) {
        GTEST_SKIP() << "running as root, and the user nobody cannot run the tool";
    }
    const auto input = sample("heart.dst");
    const perms readOnly = perms::owner_read | perms::group_read | perms::others_read;
    // An export, the JSON dump and a picture are all written the same way.
    for (const std::string name : {"target.pes", "target.json", "target.png"}) {
        const auto target = folder.path() / name;
        std::ofstream(target) << "keep me";
        std::filesystem::permissions(target, readOnly);
        handOver(folder.path(), *user);
        const ToolRun run = runToolAs(
            *user, {name.ends_with("png") ? "render" : "convert", input.string(), target.string()});
        EXPECT_EQ(run.exitCode, 1) << name;
        EXPECT_EQ(run.err, "hemlark: " + target.string() +
                               ": Permission denied (read-only file, left unchanged)\n");
        EXPECT_EQ(readText(target), "keep me");
        EXPECT_EQ(permissionsOf(target), readOnly);
    }
}

TEST_F(DataSafety, ReplacedFilesKeepTheirModeAndLinksAreWrittenThrough) {
    const auto input = sample("heart.dst");
    const auto shared = folder.path() / "shared.pes";
    std::filesystem::copy_file(sample("star.pes"), shared);
    const perms ownerAndGroup = perms::owner_read | perms::owner_write | perms::group_read;
    std::filesystem::permissions(shared, ownerAndGroup);
    const auto link = folder.path() / "link.pes";
    std::filesystem::create_symlink("shared.pes", link);
    const std::string before = readText(shared);

    for (const auto& target : {shared, link}) {
        const ToolRun run = runTool({"convert", input.string(), target.string()});
        EXPECT_EQ(run.exitCode, 0) << run.err;
    }
    EXPECT_EQ(permissionsOf(shared), ownerAndGroup);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_TRUE(readText(shared) != before);
}

TEST_F(DataSafety, AnOutputThatIsAnInputIsRefusedUnlessInPlace) {
    const auto design = sample("star.pcs").string();
    const auto other = sample("heart.dst").string();
    // The same file by other names: a hard link, and a symbolic link with a picture's name.
    const auto alias = (folder.path() / "alias.pcs").string();
    std::filesystem::create_hard_link(design, alias);
    const auto picture = (folder.path() / "star.png").string();
    std::filesystem::create_symlink("star.pcs", picture);
    const std::string before = readText(design);
    const std::vector<std::pair<Arguments, int>> cases = {
        {{"convert", design, design}, 2},
        {{"convert", design, alias}, 2},
        {{"convert", design, "--to", "pcs"}, 2},
        {{"convert", other, design, "--append", design}, 2},
        {{"render", design, picture}, 2},
        {{"convert", design, design, "--in-place"}, 0},
    };
    for (const auto& [arguments, exitCode] : cases) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, exitCode) << testing::PrintToString(arguments) << run.err;
        EXPECT_TRUE(exitCode == 0 || readText(design) == before)
            << testing::PrintToString(arguments);
    }
}

TEST_F(DataSafety, SideFileOfAnotherDesignIsKeptWithAWarning) {
    sample("heart.dst");
    sample("heart.threads");
    const auto other = sample("star.pes");
    ToolRun run = runTool({"convert", other.string(), (folder.path() / "heart.exp").string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "heart.threads"));
    EXPECT_NE(run.err.find("warning: " + (folder.path() / "heart.threads").string() + " was kept"),
              std::string::npos)
        << run.err;

    // A side file that belongs to no other design is still removed, without a word.
    std::ofstream(folder.path() / "lone.threads") << "stale";
    run = runTool({"convert", other.string(), (folder.path() / "lone.exp").string()});
    EXPECT_EQ(run.err, "");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "lone.threads"));
}

TEST_F(DataSafety, ColoursThatCannotBeMatchedAreReported) {
    // Threads of a palette that is not installed: the appended design's threads are matched
    // into this design's palette, which fails for each of them.
    const auto design = sample("heart.dst");
    std::string threads = readText(sample("heart.threads"));
    for (std::size_t at; (at = threads.find(">Janome<")) != std::string::npos;) {
        threads.replace(at, 8, ">Missing Palette<");
    }
    std::ofstream(folder.path() / "heart.threads") << threads;
    const ToolRun run = runTool({"convert", design.string(), (folder.path() / "out.pes").string(),
                                 "--append", sample("star.pes").string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("warning: 3 thread colours could not be matched"), std::string::npos)
        << run.err;
}
