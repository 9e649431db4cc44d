#include <QImage>

#include "platform/design_picture.h"
#include "tool_runner.h"

namespace {

class RenderCommand : public ToolTest {};

}  // namespace

TEST_F(RenderCommand, WritesThePictureFormatTheExtensionNames) {
    const auto input = sample("flower.pes");
    const std::pair<const char*, std::string> cases[] = {
        {"flower.png", "\x89PNG"}, {"flower.svg", "<?xml"}, {"flower.pdf", "%PDF"}};
    for (const auto& [name, signature] : cases) {
        ToolRun run = runTool({"render", input.string(), (folder_ / name).string(), "--3d",
                               "--jumps", "--background", "#ffffff"});
        EXPECT_EQ(run.exitCode, 0) << name << ": " << run.err;
        EXPECT_EQ(readText(folder_ / name).substr(0, signature.size()), signature) << name;
    }
}

TEST_F(RenderCommand, SizeIsTheLongerSideOfThePicture) {
    const auto input = sample("heart.pes");
    ToolRun run = runTool({"render", input.string(), (folder_ / "heart.png").string(), "--size",
                           "300", "--structure", "--thread", "1"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    QImage image((folder_ / "heart.png").c_str());
    EXPECT_EQ(std::max(image.width(), image.height()), 300);
    // The heart is wider than high.
    EXPECT_EQ(image.width(), 300);
    EXPECT_LT(image.height(), 300);
}

TEST_F(RenderCommand, FailuresAndUsageErrors) {
    const auto input = sample("star.dst");
    ToolRun run = runTool({"render", input.string(), (folder_ / "star.gif").string()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err.rfind("hemlark: error " + std::to_string(kPictureFormatError) + ": ", 0), 0u)
        << run.err;

    run = runTool({"render", input.string(), (folder_ / "star.png").string(), "--thread", "99"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("out of range"), std::string::npos) << run.err;

    run = runTool({"render", input.string(), (folder_ / "star.png").string(), "--background",
                   "no-such-colour"});
    EXPECT_EQ(run.exitCode, 2);
    run = runTool({"render", input.string(), (folder_ / "star.png").string(), "--size", "0"});
    EXPECT_EQ(run.exitCode, 2);
}
