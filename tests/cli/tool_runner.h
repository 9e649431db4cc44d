// Runs the built hemlark tool as a subprocess, and gives each tool test a scratch folder for
// copies of the bundled samples and for what the tool writes.
#pragma once

#include <sys/wait.h>

#include "support/test_support.h"

struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline std::string readText(const std::filesystem::path& file) {
    const Bytes bytes = readWholeFile(file).value_or(Bytes{});
    return std::string(bytes.begin(), bytes.end());
}

// hemlark with these arguments (no shell expansion happens).
inline ToolRun runTool(const std::vector<std::string>& arguments) {
    const auto quoted = [](const std::string& text) {
        std::string quoted = "'";
        for (char c : text)
            quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return quoted + "'";
    };
    ScratchFolder output;
    std::string command = quoted(HEMLARK_TOOL);
    for (const std::string& argument : arguments)
        command += " " + quoted(argument);
    command += " >" + quoted(output.file("out")) + " 2>" + quoted(output.file("err"));
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(output.file("out")),
            readText(output.file("err"))};
}

// The design read directly, as the tool reads it (the test fails if it cannot be read).
inline HMKDesign imported(const std::filesystem::path& file) {
    HMKDesign design;
    HMKError error;
    EXPECT_TRUE(design.importDesignFromURL(file, &error)) << error.message();
    return design;
}

class ToolTest : public ::testing::Test {
protected:
    // A copy of samples/name in the scratch folder.
    std::filesystem::path sample(const std::string& name) {
        std::filesystem::copy_file(std::filesystem::path(HEMLARK_SAMPLES_DIR) / name,
                                   folder.file(name));
        return folder.file(name);
    }
    std::string path(std::string_view name) const { return folder.file(name).string(); }

    ScratchFolder folder;
};
