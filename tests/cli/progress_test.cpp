#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "cli/progress.h"

namespace {

std::string contents(std::FILE* file) {
    std::rewind(file);
    std::string text;
    char buffer[256];
    while (std::size_t read = std::fread(buffer, 1, sizeof buffer, file)) {
        text.append(buffer, read);
    }
    return text;
}

}  // namespace

TEST(Progress, WithoutTerminalPrintsOneLinePerFile) {
    std::FILE* file = std::tmpfile();
    HMKProgress progress(2, file, false);
    progress.succeeded("a.pes", "out/a.dst");
    progress.failed("b.xyz", makeError(10, "Unknown file format (UTI)."));
    progress.finish();
    EXPECT_EQ(contents(file),
              "[1/2] a.pes -> out/a.dst\n"
              "[2/2] hemlark: b.xyz: error 10: Unknown file format (UTI).\n");
    EXPECT_EQ(progress.failures(), 1u);
    std::fclose(file);
}

TEST(Progress, OnTerminalRedrawsOneBarAndKeepsFailuresAboveIt) {
    std::FILE* file = std::tmpfile();
    HMKProgress progress(2, file, true);
    progress.failed("b.xyz", makeError(10, "Unknown file format (UTI)."));
    progress.succeeded("a.pes", "out/a.dst");
    progress.finish();
    const std::string text = contents(file);
    EXPECT_NE(text.find("\r\033[K[" + std::string(15, '#') + std::string(15, '-') + "] 1/2"),
              std::string::npos);
    EXPECT_NE(text.find("hemlark: b.xyz: error 10: Unknown file format (UTI).\n"),
              std::string::npos);
    EXPECT_NE(text.find("[" + std::string(30, '#') + "] 2/2 a.pes\n"), std::string::npos);
    std::fclose(file);
}
