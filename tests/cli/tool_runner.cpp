#include "tool_runner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::string quoted(const std::string& argument) {
    std::string text = "'";
    for (char c : argument) {
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return text + "'";
}

std::filesystem::path scratchRoot() {
    static const std::filesystem::path root =
        std::filesystem::temp_directory_path() / ("hemlark-cli-tests-" + std::to_string(getpid()));
    return root;
}

}  // namespace

std::string readText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

HMKDesign imported(const std::filesystem::path& file) {
    HMKDesign design;
    HMKError error;
    EXPECT_TRUE(design.importDesignFromURL(file, &error)) << error.message();
    return design;
}

ToolRun runTool(const std::vector<std::string>& arguments) {
    static std::atomic<int> counter = 0;
    std::filesystem::create_directories(scratchRoot());
    const std::filesystem::path base = scratchRoot() / ("run" + std::to_string(counter++));
    std::string command = quoted(HEMLARK_TOOL);
    for (const std::string& argument : arguments) {
        command += " " + quoted(argument);
    }
    command += " >" + quoted(base.string() + ".out") + " 2>" + quoted(base.string() + ".err");
    ToolRun run;
    const int status = std::system(command.c_str());
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = readText(base.string() + ".out");
    run.err = readText(base.string() + ".err");
    return run;
}

void ToolTest::SetUp() {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    folder_ = scratchRoot() / (std::string(test->test_suite_name()) + "." + test->name());
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
}

void ToolTest::TearDown() {
    std::filesystem::remove_all(folder_);
}

std::filesystem::path ToolTest::sample(const std::string& name) {
    const std::filesystem::path source = std::filesystem::path(HEMLARK_SAMPLES_DIR) / name;
    EXPECT_TRUE(std::filesystem::exists(source))
        << source << " is missing: run scripts/make-samples";
    const std::filesystem::path copy = folder_ / name;
    std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing);
    return copy;
}
