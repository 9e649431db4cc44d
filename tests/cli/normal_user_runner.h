// Runs a program as a normal user and under a time limit, for the tool tests where file
// permissions matter (root may read and write almost anything) or where the tool once hung.
// Run as root, the child gives up root for the user "nobody"; when that is impossible the
// tests that need it skip with a message.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tool_runner.h"

struct NormalUser {
    uid_t uid;
    gid_t gid;
};

// The current user when not root; otherwise "nobody", if it exists and may run the tool.
std::optional<NormalUser> normalUser();

// Makes user the owner of path and everything in it, so that the user may write there.
void handOver(const std::filesystem::path& path, const NormalUser& user);

// The program with these arguments, as user (as the current user when none); killed after
// timeoutSeconds, which then gives exit code -1.
ToolRun runProgram(const std::vector<std::string>& arguments, const std::optional<NormalUser>& user,
                   int timeoutSeconds = 30);

// hemlark with these arguments, as the normal user.
ToolRun runToolAs(const NormalUser& user, const std::vector<std::string>& arguments);
