#include "Diagnostics.h"

#include <android/log.h>

#include <string>
#include <vector>

#include "RequestText.h"
#include "trox_sim/RequestType.h"

namespace sim {

int32_t runDiagnostic(const TroxRequestParcel& request, const DiagnosticInputs& in,
                      RequestHistory& history, const char* tag) {
    if (request.requestData.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, tag, "diagnostic request without a selector");
        return 0;
    }
    const int32_t selector = low32(request.requestData[0].res_Id);
    auto line = [tag](const std::string& s) {
        __android_log_print(ANDROID_LOG_INFO, tag, "%s", s.c_str());
    };
    switch (selector) {
        case kDumpToDoQueue: {
            line("dump to-do queue: requests waiting for their end");
            for (const Request* r : in.requests.all()) {
                if (!r->deadlineMs) continue;
                line("  handle " + std::to_string(r->handle) + " ends in " +
                     std::to_string(*r->deadlineMs - in.nowMs) + " ms");
            }
            break;
        }
        case kDumpRunMap:
            line("dump run map: " + std::to_string(in.requests.size()) + " live requests");
            for (const Request* r : in.requests.all()) line("  " + describe(*r));
            break;
        case kDumpActiveResMap:
            line("dump active resources: resources away from their default");
            for (const ResourceDef& s : in.model.defs()) {
                if (in.model.value(s.id) == s.defaultValue) continue;
                line("  " + hexId(s.id) + " " + s.name + " = " +
                     std::to_string(in.model.value(s.id)) + " (default " +
                     std::to_string(s.defaultValue) + ", " +
                     std::to_string(in.model.holderCount(s.id)) + " holders)");
            }
            break;
        case kDumpResRequest:
            line("dump resource requests: what each holder asks for");
            for (const Request* r : in.requests.all()) {
                line("  request " + std::to_string(r->handle) + " " + settingsText(r->settings));
            }
            for (const auto& [rule, status] : in.ruleStatus) {
                std::vector<Setting> held;
                for (const auto& [id, v] : in.model.heldBy({Holder::Type::kRule, rule})) {
                    held.push_back({id, v});
                }
                line("  rule " + std::to_string(rule) + " status " + std::to_string(status) + " " +
                     settingsText(held));
            }
            break;
        case kDumpResInfo:
            line("dump resource info: " + std::to_string(in.model.defs().size()) + " resources");
            for (const ResourceDef& s : in.model.defs()) {
                line("  " + hexId(s.id) + " " + s.name + " " +
                     (s.kind == Kind::kBoost ? "boost" : "limit") + " default " +
                     std::to_string(s.defaultValue) + " range [" + std::to_string(s.min) + ", " +
                     std::to_string(s.max) + "] now " + std::to_string(in.model.value(s.id)) +
                     (s.path.empty() ? "" : " path " + s.path));
            }
            break;
        case kDumpSAInfo:
            line("dump scenarios: " + std::to_string(in.config.scenarios.size()) + " configured");
            for (const auto& [id, sc] : in.config.scenarios) {
                line("  scenario " + std::to_string(id) + " " + sc.name + " " +
                     settingsText(sc.settings));
            }
            break;
        case kDumpPidFdList:
        case kDumpPidfdMonitorMap: {
            std::map<int32_t, std::vector<int32_t>> byPid;
            for (const Request* r : in.requests.all()) byPid[r->pid].push_back(r->handle);
            for (const auto& [handle, pid] : in.listenerPids) byPid[pid].push_back(handle);
            line(std::string(selector == kDumpPidFdList ? "dump pid list"
                                                        : "dump pid monitor map") +
                 ": " + std::to_string(byPid.size()) + " client processes");
            for (const auto& [pid, handles] : byPid) {
                std::string hs;
                for (int32_t h : handles) hs += " " + std::to_string(h);
                line("  pid " + std::to_string(pid) + " handles" + hs);
            }
            break;
        }
        case kDumpResRecordList:
            line("dump request records: " + std::to_string(history.size()) + " kept, recording " +
                 (history.enabled() ? "on" : "off"));
            for (const TroxRequestData& d : history.records()) {
                line("  " + d.res_Extra.value_or(""));
            }
            break;
        case kHistoryOn:
            history.setEnabled(true);
            line("request history recording on");
            break;
        case kHistoryOff:
            history.setEnabled(false);
            line("request history recording off");
            break;
        default:
            __android_log_print(ANDROID_LOG_WARN, tag, "unknown diagnostic selector %d", selector);
            return 0;
    }
    return 1;
}

}  // namespace sim
