#include "trox_sim/Clock.h"

#include <chrono>

namespace sim {

SteadyClock::SteadyClock() : thread_([this] { run(); }) {}

SteadyClock::~SteadyClock() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stop_ = true;
    }
    cv_.notify_all();
    thread_.join();
}

int64_t SteadyClock::nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

int64_t SteadyClock::nowUs() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

int64_t SteadyClock::wallMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

void SteadyClock::setAlarm(int64_t deadlineMs, std::function<void()> fn) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        deadline_ = deadlineMs;
        fn_ = std::move(fn);
    }
    cv_.notify_all();
}

void SteadyClock::cancelAlarm() {
    std::unique_lock<std::mutex> lock(mutex_);
    deadline_.reset();
    fn_ = nullptr;
    if (std::this_thread::get_id() == thread_.get_id()) return;
    cv_.wait(lock, [this] { return !firing_; });
}

void SteadyClock::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stop_) {
        if (!deadline_) {
            cv_.wait(lock);
            continue;
        }
        const int64_t now = nowMs();
        if (now < *deadline_) {
            cv_.wait_for(lock, std::chrono::milliseconds(*deadline_ - now));
            continue;
        }
        std::function<void()> fn = std::move(fn_);
        fn_ = nullptr;
        deadline_.reset();
        firing_ = true;
        lock.unlock();
        if (fn) fn();
        fn = nullptr;
        lock.lock();
        firing_ = false;
        cv_.notify_all();
    }
}

ManualClock::ManualClock(int64_t startMs, int64_t wallBaseMs)
    : now_(startMs), wallBase_(wallBaseMs) {}

int64_t ManualClock::nowMs() {
    std::lock_guard<std::mutex> lock(mutex_);
    return now_;
}

int64_t ManualClock::wallMs() {
    std::lock_guard<std::mutex> lock(mutex_);
    return wallBase_ + now_;
}

void ManualClock::setAlarm(int64_t deadlineMs, std::function<void()> fn) {
    std::lock_guard<std::mutex> lock(mutex_);
    deadline_ = deadlineMs;
    fn_ = std::move(fn);
}

void ManualClock::cancelAlarm() {
    std::lock_guard<std::mutex> lock(mutex_);
    deadline_.reset();
    fn_ = nullptr;
}

std::optional<int64_t> ManualClock::alarmDeadline() {
    std::lock_guard<std::mutex> lock(mutex_);
    return deadline_;
}

void ManualClock::advance(int64_t ms) {
    std::unique_lock<std::mutex> lock(mutex_);
    const int64_t target = now_ + ms;
    // Steps through each due alarm so that callbacks see the time they were due at.
    while (deadline_ && *deadline_ <= target) {
        if (*deadline_ > now_) now_ = *deadline_;
        std::function<void()> fn = std::move(fn_);
        fn_ = nullptr;
        deadline_.reset();
        lock.unlock();
        if (fn) fn();
        lock.lock();
    }
    now_ = target;
}

}  // namespace sim
