#include <gtest/gtest.h>

#include <cstdio>

#include "cli/progress.h"

namespace {

// What the progress reports about the files, as written to a temporary stream.
std::string reported(bool terminal, const std::string& firstName) {
    std::FILE* file = std::tmpfile();
    HMKProgress progress(2, file, terminal);
    progress.failed("b.xyz", makeError(10, "Unknown file format (UTI)."));
    progress.succeeded(firstName, "out/a.dst");
    progress.finish();
    EXPECT_EQ(progress.failures(), 1u);
    std::string text(std::ftell(file), '\0');
    std::rewind(file);
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    return text;
}

}  // namespace

TEST(Progress, PrintsOneLinePerFileOrRedrawsOneBarKeepingFailuresAboveIt) {
    EXPECT_EQ(
        reported(false, "a.pes"),
        "[1/2] hemlark: b.xyz: error 10: Unknown file format (UTI).\n[2/2] a.pes -> out/a.dst\n");
    const std::string bar = reported(true, "a.pes");
    EXPECT_NE(bar.find("\r\033[K[" + std::string(15, '#') + std::string(15, '-') + "] 1/2"),
              std::string::npos);
    EXPECT_NE(bar.find("hemlark: b.xyz: error 10: Unknown file format (UTI).\n"),
              std::string::npos);
    EXPECT_NE(bar.find("[" + std::string(30, '#') + "] 2/2 a.pes\n"), std::string::npos);
    // Names up to 32 characters are shown whole, longer ones cut from the left.
    const std::string name32 = std::string(26, 'n') + "32.pes", name33 = "3" + name32;
    EXPECT_NE(reported(true, name32).find("2/2 " + name32 + "\n"), std::string::npos);
    EXPECT_NE(reported(true, name33).find("2/2 ..." + name33.substr(4) + "\n"), std::string::npos);
}
