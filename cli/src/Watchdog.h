#pragma once

// Ends the process with a clear message when the service does not answer in time: the client
// class waits without limit for a service that is declared but not running.

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace pymctl {

class Watchdog {
  public:
    Watchdog(std::chrono::milliseconds limit, std::string what);
    ~Watchdog();
    // Moves the limit later, for subcommands that wait on purpose.
    void extend(std::chrono::milliseconds more);
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    std::mutex mutex_;
    std::condition_variable cv_;
    bool done_ = false;
    std::chrono::steady_clock::time_point deadline_;
    std::thread thread_;
};

}  // namespace pymctl
