#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace vexal::testing {

// A program the build made (troxd, a test service), run as a child with its standard error on a
// pipe. Resource limits are set in the child only, so the test process keeps its own. Killed
// (SIGKILL) and reaped on destruction unless it was already reaped.
class ChildProcess {
  public:
    struct Options {
        // NAME=VALUE added to the test's environment, after BINDER_HOST_* variables of the test
        // process were left out (the child gets the directory it is told).
        std::vector<std::string> env;
        using Limits = std::vector<std::pair<int, rlim_t>>;
        Limits limits;  // RLIMIT_*, soft and hard
    };
    ChildProcess(std::vector<std::string> argv, const Options& options);
    explicit ChildProcess(std::vector<std::string> argv) : ChildProcess(std::move(argv), {}) {}
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    // Reads standard error until it holds text; false once the timeout passed or the pipe closed
    // without it.
    bool waitForOutput(const std::string& text,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10));
    const std::string& output() const { return output_; }
    // The exit status (128 + signal when killed), or -1 while it still runs after the timeout.
    int waitForExit(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    // False once it ended (it is reaped then).
    bool running();

  private:
    bool readSome(std::chrono::milliseconds timeout);  // false on timeout or end of the pipe
    bool reap(int waitOptions);                        // true once reaped

    pid_t pid_ = -1;
    int err_ = -1;
    bool reaped_ = false;
    int status_ = 0;
    std::string output_;
};

}  // namespace vexal::testing
