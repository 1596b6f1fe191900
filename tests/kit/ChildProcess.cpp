#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
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
        if (options.withStdout) dup2(fds[1], STDOUT_FILENO);
        for (const auto& [resource, value] : limits) {
            if (setrlimit(resource, &value) != 0) _exit(126);
        }
        for (int capability : options.dropCapabilities) {
            if (prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0) _exit(126);
        }
        execvpe(args[0], args.data(), envp.data());
        _exit(127);
    }
    close(fds[1]);
    if (pid_ < 0) {
        close(fds[0]);
        closed_ = true;
        return;
    }
    stop_ = eventfd(0, EFD_CLOEXEC);
    reader_ = std::thread(&ChildProcess::drain, this, fds[0]);
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !reaped_) {
        kill(pid_, SIGKILL);
        reap(0);
    }
    // A child of the child may still hold the pipe open: the reader is told to stop, not waited
    // for the pipe's end.
    if (reader_.joinable()) {
        const uint64_t one = 1;
        [[maybe_unused]] const ssize_t told = write(stop_, &one, sizeof(one));
        reader_.join();
    }
    if (stop_ >= 0) close(stop_);
}

void ChildProcess::drain(int fd) {
    char buffer[4096];
    for (;;) {
        pollfd ready[2] = {{fd, POLLIN, 0}, {stop_, POLLIN, 0}};
        if (poll(ready, 2, -1) < 0 && errno == EINTR) continue;
        // Whatever the pipe still holds is read before a stop is obeyed.
        const ssize_t n = ready[0].revents != 0 ? read(fd, buffer, sizeof(buffer)) : 0;
        if (n < 0 && errno == EINTR) continue;
        std::lock_guard<std::mutex> lock(mutex_);
        if (n <= 0) {
            closed_ = true;
            changed_.notify_all();
            break;
        }
        output_.append(buffer, static_cast<size_t>(n));
        changed_.notify_all();
    }
    close(fd);
}

std::string ChildProcess::output() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return output_;
}

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, timeout,
                      [&] { return closed_ || output_.find(text) != std::string::npos; });
    return output_.find(text) != std::string::npos;
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
        // Its standard error closes when it ends, which wakes us; a child of its own may keep
        // the pipe open, so the wait for its exit goes on in short steps.
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::milliseconds(closed_ ? 5 : 20));
    }
    // What it wrote before it ended is all there once the pipe closed.
    if (reader_.joinable()) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(1), [&] { return closed_; });
    }
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
}

bool ChildProcess::running() {
    return pid_ > 0 && !reap(WNOHANG);
}

}  // namespace vexal::testing
