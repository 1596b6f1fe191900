#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "SpawnProgram.h"

extern char** environ;

namespace vexal::testing {

ChildProcess::ChildProcess(std::vector<std::string> argv, const Options& options) {
    std::vector<std::string> env;
    for (char** e = environ; *e != nullptr; ++e) {
        if (strncmp(*e, "BINDER_HOST", 11) != 0) env.emplace_back(*e);
    }
    env.insert(env.end(), options.env.begin(), options.env.end());
    argv = withEmulator(std::move(argv));
    // Everything the child touches is made before fork: after it only async-signal-safe calls.
    std::vector<char*> args;
    for (auto& a : argv) args.push_back(a.data());
    args.push_back(nullptr);
    std::vector<char*> envp;
    for (auto& e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    std::vector<std::pair<int, rlimit>> limits;
    for (const auto& [resource, value] : options.limits)
        limits.push_back({resource, {value, value}});
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
        dup2(fds[1], STDERR_FILENO);
        for (const auto& [resource, value] : limits) {
            if (setrlimit(resource, &value) != 0) _exit(126);
        }
        execvpe(args[0], args.data(), envp.data());
        _exit(127);
    }
    close(fds[1]);
    err_ = fds[0];
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !reaped_) {
        kill(pid_, SIGKILL);
        reap(0);
    }
    if (err_ >= 0) close(err_);
}

bool ChildProcess::readSome(std::chrono::milliseconds timeout) {
    if (err_ < 0) return false;
    pollfd p{err_, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(timeout.count())) <= 0) return false;
    char buffer[4096];
    const ssize_t n = read(err_, buffer, sizeof(buffer));
    if (n <= 0) {
        close(err_);
        err_ = -1;
        return false;
    }
    output_.append(buffer, static_cast<size_t>(n));
    return true;
}

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (output_.find(text) == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        if (left.count() <= 0 || err_ < 0) return false;
        readSome(left);
    }
    return true;
}

bool ChildProcess::reap(int options) {
    if (pid_ <= 0) return false;
    if (!reaped_ && waitpid(pid_, &status_, options) == pid_) reaped_ = true;
    return reaped_;
}

int ChildProcess::waitForExit(std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!reap(WNOHANG)) {
        if (pid_ <= 0 || std::chrono::steady_clock::now() >= end) return -1;
        // Its standard error closes when it ends; until then whatever it writes wakes us early.
        if (!readSome(std::chrono::milliseconds(20)) && err_ < 0) poll(nullptr, 0, 5);
    }
    while (readSome(std::chrono::milliseconds(0))) {
    }
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
}

bool ChildProcess::running() {
    return pid_ > 0 && !reap(WNOHANG);
}

}  // namespace vexal::testing
