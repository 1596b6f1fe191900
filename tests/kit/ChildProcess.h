#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vexal::testing {

// A program the build made (troxd, pymctl, a test service), run as a child with its standard
// error on a pipe that a thread of its own keeps reading, so a chatty child never blocks. Resource
// limits are set in the child only, so the test process keeps its own. Killed (SIGKILL) and reaped
// on destruction unless it was already reaped.
class ChildProcess {
  public:
    struct Options {
        // NAME=VALUE added to the test's environment, after BINDER_HOST_* variables of the test
        // process were left out (the child gets the directory it is told).
        std::vector<std::string> env = {};
        using Limits = std::vector<std::pair<int, rlim_t>>;
        Limits limits = {};  // RLIMIT_*, soft and hard
        // CAP_* left out of the child's bounding set, so that even root runs it without them
        // (needs CAP_SETPCAP).
        std::vector<int> dropCapabilities = {};
        // Standard output too goes to the pipe, interleaved with standard error as written.
        bool withStdout = false;
    };
    ChildProcess(std::vector<std::string> argv, const Options& options);
    explicit ChildProcess(std::vector<std::string> argv) : ChildProcess(std::move(argv), {}) {}
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    // Waits until standard error holds text; false once the timeout passed or the pipe closed
    // without it.
    bool waitForOutput(const std::string& text,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10));
    std::string output() const;
    // The exit status (128 + signal when killed), or -1 while it still runs after the timeout.
    int waitForExit(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    // False once it ended (it is reaped then).
    bool running();

  private:
    void drain(int fd);          // the reader thread: until the pipe's end or stop_
    bool reap(int waitOptions);  // true once reaped

    pid_t pid_ = -1;
    bool reaped_ = false;
    int status_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string output_;
    bool closed_ = false;
    int stop_ = -1;  // an eventfd that ends the reader when the pipe outlives the child
    std::thread reader_;
};

}  // namespace vexal::testing
