#include "trox_sim/History.h"

#include <cstdio>
#include <ctime>
#include <utility>

namespace sim {

RequestHistory::RequestHistory(std::shared_ptr<Clock> clock, size_t capacity, bool enabled)
    : clock_(std::move(clock)), capacity_(capacity), enabled_(enabled) {}

void RequestHistory::record(const std::string& op, int32_t pid, const std::string& line) {
    if (!enabled_) return;
    const int64_t wall = clock_->wallMs();
    const std::time_t secs = static_cast<std::time_t>(wall / 1000);
    std::tm tm{};
    localtime_r(&secs, &tm);
    char stamp[48];
    snprintf(stamp, sizeof(stamp), "%02d-%02d %02d:%02d:%02d.%03d", tm.tm_mon + 1, tm.tm_mday,
             tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(wall % 1000));
    TroxRequestData d;
    d.res_Id = ++seq_;
    d.res_Value = op;
    d.res_Extra = std::string(stamp) + " pid=" + std::to_string(pid) + " " + op + " " + line;
    records_.push_back(std::move(d));
    while (records_.size() > capacity_) records_.pop_front();
}

}  // namespace sim
