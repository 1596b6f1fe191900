#include "trox_sim/TimelineRecorder.h"

#include <cinttypes>
#include <cstdio>

#include "PymWrapper.h"
#include "trox_sim/TroxService.h"

namespace sim {
namespace {

std::string hex(int64_t id) {
    char buf[24];
    snprintf(buf, sizeof(buf), "0x%08" PRIx32, static_cast<uint32_t>(static_cast<uint64_t>(id)));
    return buf;
}

}  // namespace

TimelineRecorder::TimelineRecorder(const Config& config, std::shared_ptr<Clock> clock,
                                   std::string serviceName, std::shared_ptr<Timeline> timeline)
    : config_(config),
      clock_(std::move(clock)),
      timeline_(timeline ? std::move(timeline) : std::make_shared<Timeline>(config.timelineSize)) {
    std::map<int32_t, std::string> names;
    std::vector<std::pair<int32_t, int64_t>> values;
    for (const ResourceDef& r : config_.resources) {
        names[r.id] = resourceName(r.id);
        values.emplace_back(r.id, r.defaultValue);
    }
    generation_ = timeline_->attach(clock_, std::move(serviceName), std::move(names), values);
}

std::string TimelineRecorder::resourceName(int32_t id) const {
    for (const ResourceDef& r : config_.resources) {
        if (r.id == id && !r.name.empty()) return r.name;
    }
    return hex(id);
}

std::string TimelineRecorder::sliceName(const Request& request) const {
    const int32_t id = request.source;
    if (request.requestType == kEvent) {
        if (id >= 0 && static_cast<size_t>(id) < gActionList.size()) return gActionList[id];
        return "action " + std::to_string(id);
    }
    if (request.requestType == kScenario) {
        auto it = config_.scenarios.find(id);
        return it != config_.scenarios.end() ? it->second.name : "scenario " + std::to_string(id);
    }
    std::string name = request.requestType == kPlatformResource ? "platform-resctl" : "resctl";
    if (!request.settings.empty()) name += " " + resourceName(request.settings[0].id);
    if (request.settings.size() > 1) name += " +" + std::to_string(request.settings.size() - 1);
    return name;
}

void TimelineRecorder::granted(const Request& request) {
    TimelineSlice s;
    s.pid = request.pid;
    s.pkg = request.pkg;
    s.name = sliceName(request);
    s.handle = request.handle;
    s.identity = request.identity;
    if (request.deadlineMs) s.durationMs = *request.deadlineMs - request.startMs;
    for (const Setting& setting : request.settings) {
        s.resources.emplace_back(resourceName(setting.id), setting.value);
    }
    s.startUs = clock_->nowUs();
    timeline_->open(generation_, std::move(s));
}

void TimelineRecorder::changed(const Request& request) {
    timeline_->close(generation_, request.handle, clock_->nowUs(), "changed");
    granted(request);
}

void TimelineRecorder::ended(int32_t handle, const char* why) {
    timeline_->close(generation_, handle, clock_->nowUs(), why);
}

void TimelineRecorder::values(const std::vector<Change>& changes) {
    if (changes.empty()) return;
    const int64_t now = clock_->nowUs();
    for (const Change& c : changes) {
        timeline_->add(generation_, TimelineCounter{c.id, now, c.newValue});
    }
}

void TimelineRecorder::instant(int32_t pid, std::string name,
                               std::vector<std::pair<std::string, std::string>> args) {
    timeline_->add(generation_,
                   TimelineInstant{clock_->nowUs(), pid, {}, std::move(name), std::move(args)});
}

void TimelineRecorder::notified(
        const aidl::vendor::vexal::hardware::trox::TroxRequestParcel& request, int32_t callerPid) {
    const int64_t id = request.requestData.empty() ? 0 : request.requestData[0].res_Id;
    TimelineInstant i;
    i.atUs = clock_->nowUs();
    i.pid = request.pid != 0 ? request.pid : callerPid;
    i.pkg = request.pkg.value_or("");
    i.name = "notification " + hex(id);
    i.args = {{"entries", std::to_string(request.requestData.size())},
              {"identity", request.identity.value_or("")}};
    for (size_t n = 1; n < request.requestData.size(); ++n) {
        const auto& e = request.requestData[n];
        i.args.emplace_back(hex(e.res_Id), e.res_Value.value_or(""));
    }
    timeline_->add(generation_, std::move(i));
}

void TimelineRecorder::rule(int32_t ruleId, int32_t status, const std::vector<Setting>& sets,
                            int32_t pid) {
    auto it = config_.rules.find(ruleId);
    const std::string name = it != config_.rules.end() ? it->second.name : std::to_string(ruleId);
    std::string setsText;
    for (const Setting& s : sets) {
        setsText +=
                (setsText.empty() ? "" : ", ") + resourceName(s.id) + "=" + std::to_string(s.value);
    }
    instant(0, "rule " + name + (status == 0 ? " off" : " status " + std::to_string(status)),
            {{"rule", std::to_string(ruleId)},
             {"status", std::to_string(status)},
             {"sets", setsText},
             {"from pid", std::to_string(pid)}});
}

void TimelineRecorder::sysInfo(int32_t info, int32_t value, int32_t pid) {
    instant(0, "system info " + std::to_string(info) + " = " + std::to_string(value),
            {{"info", std::to_string(info)},
             {"value", std::to_string(value)},
             {"from pid", std::to_string(pid)}});
}

void TimelineRecorder::thermal(
        const std::vector<aidl::vendor::vexal::hardware::trox::TroxRequestData>& levels,
        int32_t pid) {
    for (const auto& e : levels) {
        const std::string level = e.res_Value.value_or("");
        instant(0, "thermal " + std::to_string(static_cast<int32_t>(e.res_Id)) + " level " + level,
                {{"id", std::to_string(static_cast<int32_t>(e.res_Id))},
                 {"level", level},
                 {"from pid", std::to_string(pid)}});
    }
}

}  // namespace sim
