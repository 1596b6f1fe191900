#include "Watchdog.h"

#include <unistd.h>

#include <cstdio>

namespace pymctl {

Watchdog::Watchdog(std::chrono::milliseconds limit, std::string what)
    : deadline_(std::chrono::steady_clock::now() + limit) {
    thread_ = std::thread([this, what = std::move(what)] {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!done_ && std::chrono::steady_clock::now() < deadline_) {
            cv_.wait_until(lock, deadline_);
        }
        if (done_) return;
        std::fprintf(stderr, "%s: no answer from the service in time\n", what.c_str());
        std::fflush(stderr);
        // Threads may sit in a binder call that never returns; nothing can be unwound safely.
        _exit(1);
    });
}

void Watchdog::extend(std::chrono::milliseconds more) {
    std::lock_guard<std::mutex> lock(mutex_);
    deadline_ += more;
}

Watchdog::~Watchdog() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        done_ = true;
    }
    cv_.notify_all();
    thread_.join();
}

}  // namespace pymctl
