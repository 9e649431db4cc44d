// Runs the built hemlark tool as a subprocess and gives each test its own scratch folder
// holding copies of the bundled samples.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "model/design.h"

struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// hemlark with these arguments (no shell expansion happens).
ToolRun runTool(const std::vector<std::string>& arguments);

std::string readText(const std::filesystem::path& file);

// The design read directly, as the tool reads it (the test fails if it cannot be read).
HMKDesign imported(const std::filesystem::path& file);

class ToolTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A copy of samples/name in the scratch folder (the test fails if the sample is missing).
    std::filesystem::path sample(const std::string& name);

    std::filesystem::path folder_;
};
