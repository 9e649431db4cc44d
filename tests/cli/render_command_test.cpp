#include <QImage>

#include "tool_runner.h"

namespace {

class RenderCommand : public ToolTest {};

}  // namespace

TEST_F(RenderCommand, WritesThePictureTheOptionsAskOrFails) {
    const auto input = sample("heart.pes");
    for (const std::string name : {"heart.svg", "heart.pdf"}) {
        const ToolRun run = runTool(
            {"render", input.string(), path(name), "--3d", "--jumps", "--background", "#ffffff"});
        EXPECT_EQ(run.exitCode, 0) << name << ": " << run.err;
        EXPECT_EQ(readText(folder.file(name)).substr(0, 4),
                  name.ends_with("svg") ? "<?xm" : "%PDF");
    }
    ToolRun run = runTool({"render", input.string(), path("heart.png"), "--size", "300",
                           "--structure", "--thread", "1"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    // The size is the longer side; the heart is wider than high.
    const QImage image(QString::fromStdString(path("heart.png")));
    EXPECT_EQ(image.width(), 300);
    EXPECT_LT(image.height(), 300);

    run = runTool({"render", input.string(), path("heart.gif")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err.rfind("hemlark: error 300: ", 0), 0u) << run.err;
    run = runTool({"render", input.string(), path("heart.png"), "--thread", "99"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("out of range"), std::string::npos) << run.err;
    EXPECT_EQ(
        runTool({"render", input.string(), path("heart.png"), "--background", "no-such-colour"})
            .exitCode,
        2);
    EXPECT_EQ(runTool({"render", input.string(), path("heart.png"), "--size", "0"}).exitCode, 2);
}
