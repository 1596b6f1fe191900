#include "trox_sim/TraceJson.h"

#include "trox_sim/FileReplace.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace sim {
namespace {

using json = nlohmann::json;

// Tracks of the trace: pids of callers and of the service, and a tid per lane.
class Tracks {
  public:
    explicit Tracks(const TimelineSnapshot& s) {
        for (const TimelineEvent& e : s.events) {
            if (const auto* slice = std::get_if<TimelineSlice>(&e)) {
                caller(slice->pid, slice->pkg);
                tid(slice->pid, slice->lane);
            } else if (const auto* i = std::get_if<TimelineInstant>(&e); i && i->pid != 0) {
                caller(i->pid, i->pkg);
                tid(i->pid, 0);
            }
        }
        for (auto& [pid, name] : names_) {
            if (name.empty()) name = "pid " + std::to_string(pid);
        }
        service_ = s.servicePid;
        serviceName_ = s.serviceName;
        // An embedded service shares its process with its callers; its track gets a pid of its
        // own so that the resources are not drawn among one caller's requests.
        if (names_.count(service_) != 0) {
            service_ = std::max(service_, names_.rbegin()->first) + 1;
            serviceName_ += " (embedded in pid " + std::to_string(s.servicePid) + ")";
        }
    }

    int32_t service() const { return service_; }
    int32_t tid(int32_t pid, int32_t lane) {
        if (lane == 0) return pid;
        auto [it, added] = tids_.emplace(std::make_pair(pid, lane), 0);
        if (added) it->second = kFirstLaneTid + static_cast<int32_t>(tids_.size()) - 1;
        return it->second;
    }

    void metadata(json& events) const {
        auto meta = [&](const char* what, int32_t pid, int32_t tid, json args) {
            events.push_back({{"name", what},
                              {"ph", "M"},
                              {"ts", 0},
                              {"pid", pid},
                              {"tid", tid},
                              {"args", std::move(args)}});
        };
        meta("process_name", service_, service_, {{"name", serviceName_}});
        meta("process_sort_index", service_, service_, {{"sort_index", 0}});
        meta("thread_name", service_, service_, {{"name", "resources"}});
        int index = 1;
        for (int32_t pid : order_) {
            meta("process_name", pid, pid, {{"name", names_.at(pid)}});
            meta("process_sort_index", pid, pid, {{"sort_index", index++}});
            meta("thread_name", pid, pid, {{"name", "requests"}});
        }
        for (const auto& [lane, tid] : tids_) {
            meta("thread_name", lane.first, tid,
                 {{"name", "requests, lane " + std::to_string(lane.second + 1)}});
        }
    }

  private:
    static constexpr int32_t kFirstLaneTid = 1 << 30;  // beyond any Linux pid

    void caller(int32_t pid, const std::string& pkg) {
        auto [it, added] = names_.emplace(pid, std::string());
        if (added) order_.push_back(pid);
        // One process may speak for several packages (the demo does).
        if (pkg.empty() || (", " + it->second + ", ").find(", " + pkg + ", ") != std::string::npos)
            return;
        it->second += (it->second.empty() ? "" : ", ") + pkg;
    }

    std::map<int32_t, std::string> names_;
    std::vector<int32_t> order_;
    std::map<std::pair<int32_t, int32_t>, int32_t> tids_;
    int32_t service_ = 0;
    std::string serviceName_;
};

json argsOf(const std::vector<std::pair<std::string, std::string>>& args) {
    json out = json::object();
    for (const auto& [k, v] : args) out[k] = v;
    return out;
}

}  // namespace

std::string traceJson(const TimelineSnapshot& s) {
    Tracks tracks(s);
    const int32_t svc = tracks.service();
    auto counter = [&](const TimelineCounter& c) {
        auto name = s.resourceNames.find(c.resource);
        return json{
                {"name", name != s.resourceNames.end() ? name->second : std::to_string(c.resource)},
                {"cat", "resource"},
                {"ph", "C"},
                {"ts", c.atUs},
                {"pid", svc},
                {"tid", svc},
                {"args", {{"value", c.value}}}};
    };
    std::vector<std::pair<int64_t, json>> timed;
    for (const TimelineCounter& c : s.carried) timed.emplace_back(c.atUs, counter(c));
    for (const TimelineEvent& e : s.events) {
        if (const auto* c = std::get_if<TimelineCounter>(&e)) {
            timed.emplace_back(c->atUs, counter(*c));
        } else if (const auto* i = std::get_if<TimelineInstant>(&e)) {
            const int32_t pid = i->pid != 0 ? i->pid : svc;
            timed.emplace_back(i->atUs, json{{"name", i->name},
                                             {"cat", i->pid != 0 ? "notification" : "service"},
                                             {"ph", "i"},
                                             {"s", "p"},
                                             {"ts", i->atUs},
                                             {"pid", pid},
                                             {"tid", pid},
                                             {"args", argsOf(i->args)}});
        } else {
            const auto& sl = std::get<TimelineSlice>(e);
            json resources = json::object();
            for (const auto& [name, value] : sl.resources) resources[name] = value;
            json args = {{"handle", sl.handle},
                         {"identity", sl.identity},
                         {"package", sl.pkg},
                         {"duration", sl.durationMs ? std::to_string(*sl.durationMs) + " ms"
                                                    : std::string("until release")},
                         {"resources", std::move(resources)},
                         {"ended", sl.end}};
            timed.emplace_back(sl.startUs, json{{"name", sl.name},
                                                {"cat", "request"},
                                                {"ph", "X"},
                                                {"ts", sl.startUs},
                                                {"dur", sl.endUs - sl.startUs},
                                                {"pid", sl.pid},
                                                {"tid", tracks.tid(sl.pid, sl.lane)},
                                                {"args", std::move(args)}});
        }
    }
    std::stable_sort(timed.begin(), timed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    json events = json::array();
    tracks.metadata(events);
    if (s.dropped != 0 && !timed.empty()) {
        events.push_back({{"name", std::to_string(s.dropped) + " earlier events dropped"},
                          {"cat", "service"},
                          {"ph", "i"},
                          {"s", "p"},
                          {"ts", timed.front().first},
                          {"pid", svc},
                          {"tid", svc},
                          {"args", {{"dropped", s.dropped}, {"capacity", s.capacity}}}});
    }
    for (auto& [ts, event] : timed) events.push_back(std::move(event));
    json root = {{"displayTimeUnit", "ms"},
                 {"traceEvents", std::move(events)},
                 {"otherData",
                  {{"service", s.serviceName},
                   {"clock", "the service's monotonic clock"},
                   {"ring_capacity", s.capacity},
                   {"dropped_events", s.dropped},
                   {"written_at_us", s.takenUs}}}};
    // Callers' texts are not ours to trust: invalid UTF-8 is replaced, not fatal.
    return root.dump(-1, ' ', true, json::error_handler_t::replace);
}

std::string writeTraceFile(Timeline& timeline, const std::string& path, size_t* events) {
    const TimelineSnapshot snapshot = timeline.snapshot();
    const std::string text = traceJson(snapshot) + "\n";
    if (std::string failed = replaceFile(path, text, 0644); !failed.empty()) return failed;
    if (events != nullptr) *events = snapshot.events.size() + snapshot.carried.size();
    return {};
}

}  // namespace sim
