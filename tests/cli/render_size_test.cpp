// The size of rendered pictures: PNG in pixels (--size), SVG and PDF at the design's real size
// times --scale, and each option refused where it means nothing.
#include <cstdlib>

#include "tool_runner.h"

namespace {

class RenderSize : public ToolTest {};

// The number right after the first occurrence of prefix in the file, or -1.
double numberAfter(const std::string& text, const std::string& prefix) {
    const std::size_t at = text.find(prefix);
    return at == std::string::npos ? -1 : std::strtod(text.c_str() + at + prefix.size(), nullptr);
}

TEST_F(RenderSize, VectorPicturesAreRealSizeTimesTheScale) {
    // The heart is 60.6 mm wide; with half a stitch and 5 mm on either side, 70.95 mm.
    const auto input = sample("heart.pes");
    const struct {
        const char* file;
        std::vector<std::string> options;
        std::string prefix;
        double expected;
    } cases[] = {
        {"real.svg", {}, "width=\"", 70.95},
        {"double.svg", {"--scale", "2"}, "width=\"", 141.9},
        // Points, whole ones: 70.95 mm is 201.1 pt.
        {"real.pdf", {}, "/MediaBox [0 0 ", 201},
        {"half.pdf", {"--scale", "0.5"}, "/MediaBox [0 0 ", 101},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments{"render", input.string(), path(c.file)};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        ToolRun run = runTool(arguments);
        ASSERT_EQ(run.exitCode, 0) << c.file << ": " << run.err;
        EXPECT_NEAR(numberAfter(readText(folder.file(c.file)), c.prefix), c.expected, 0.6)
            << c.file;
    }
}

TEST_F(RenderSize, SizeIsForPngAndScaleForVectors) {
    const auto input = sample("star.dst");
    const struct {
        const char* file;
        const char* option;
        const char* value;
    } cases[] = {
        {"star.svg", "--size", "500"}, {"star.pdf", "--size", "500"}, {"star.png", "--scale", "2"}};
    for (const auto& c : cases) {
        ToolRun run = runTool({"render", input.string(), path(c.file), c.option, c.value});
        EXPECT_EQ(run.exitCode, 2) << c.file;
        EXPECT_NE(run.err.find(c.option), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder.file(c.file))) << c.file;
    }
}

}  // namespace
