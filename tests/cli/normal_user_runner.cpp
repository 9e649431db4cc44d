#include "normal_user_runner.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

// In the child: becomes user for good (groups first, while still allowed to change them).
bool becomeUser(const std::optional<NormalUser>& user) {
    if (!user || ::geteuid() != 0) {
        return true;
    }
    return ::setgroups(0, nullptr) == 0 && ::setgid(user->gid) == 0 && ::setuid(user->uid) == 0;
}

std::filesystem::path captureFile(const char* name) {
    static int counter = 0;
    return std::filesystem::temp_directory_path() /
           ("hemlark-run-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + name);
}

}  // namespace

std::optional<NormalUser> normalUser() {
    if (::geteuid() != 0) {
        return NormalUser{::getuid(), ::getgid()};
    }
    const passwd* nobody = ::getpwnam("nobody");
    if (!nobody) {
        return std::nullopt;
    }
    const NormalUser user{nobody->pw_uid, nobody->pw_gid};
    // The tool lies in the build folder, which that user may not be allowed to reach.
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(becomeUser(user) && ::access(HEMLARK_TOOL, X_OK) == 0 ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(user) : std::nullopt;
}

void handOver(const std::filesystem::path& path, const NormalUser& user) {
    if (::lchown(path.c_str(), user.uid, user.gid) != 0) {
        ADD_FAILURE() << "cannot hand " << path << " over";
    }
    if (std::filesystem::is_directory(std::filesystem::symlink_status(path))) {
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            handOver(entry.path(), user);
        }
    }
}

ToolRun runProgram(const std::vector<std::string>& arguments, const std::optional<NormalUser>& user,
                   int timeoutSeconds) {
    const std::filesystem::path out = captureFile(".out");
    const std::filesystem::path err = captureFile(".err");
    // Everything the child needs is made before the fork: only system calls follow it.
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int outFile = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int errFile = ::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (outFile >= 0 && errFile >= 0 && ::dup2(outFile, 1) >= 0 && ::dup2(errFile, 2) >= 0 &&
            becomeUser(user)) {
            ::execv(argv[0], argv.data());
        }
        ::_exit(127);
    }
    ToolRun run;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            run.err = "(killed after " + std::to_string(timeoutSeconds) + " s)\n";
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = readText(out);
    run.err += readText(err);
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return run;
}

ToolRun runToolAs(const NormalUser& user, const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {HEMLARK_TOOL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, user);
}
