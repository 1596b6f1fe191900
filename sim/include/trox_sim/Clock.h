#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace sim {

// Time source and single alarm of a service. Times are milliseconds on a monotonic scale.
// Tests use ManualClock so that expiry happens exactly when they advance time.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual int64_t nowMs() = 0;
    // The same scale in microseconds, for timelines; as fine as the clock can tell.
    virtual int64_t nowUs() { return nowMs() * 1000; }
    // Wall-clock milliseconds since the epoch, for readable history lines only.
    virtual int64_t wallMs() = 0;
    // Calls fn once, on some thread, when nowMs() reaches deadlineMs; replaces any earlier alarm.
    virtual void setAlarm(int64_t deadlineMs, std::function<void()> fn) = 0;
    // Drops the alarm; once it returns, a running alarm callback has finished (unless called
    // from that callback).
    virtual void cancelAlarm() = 0;
};

class SteadyClock : public Clock {
  public:
    SteadyClock();
    ~SteadyClock() override;
    int64_t nowMs() override;
    int64_t nowUs() override;
    int64_t wallMs() override;
    void setAlarm(int64_t deadlineMs, std::function<void()> fn) override;
    void cancelAlarm() override;

  private:
    void run();

    std::mutex mutex_;
    std::condition_variable cv_;
    std::optional<int64_t> deadline_;
    std::function<void()> fn_;
    bool firing_ = false;
    bool stop_ = false;
    std::thread thread_;
};

class ManualClock : public Clock {
  public:
    explicit ManualClock(int64_t startMs = 0, int64_t wallBaseMs = 1795000000000);
    int64_t nowMs() override;
    int64_t wallMs() override;
    void setAlarm(int64_t deadlineMs, std::function<void()> fn) override;
    void cancelAlarm() override;
    // Moves time forward, firing the alarm (on the calling thread) as often as it comes due.
    void advance(int64_t ms);
    std::optional<int64_t> alarmDeadline();

  private:
    std::mutex mutex_;
    int64_t now_;
    int64_t wallBase_;
    std::optional<int64_t> deadline_;
    std::function<void()> fn_;
};

}  // namespace sim
