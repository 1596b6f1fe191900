#include "RequestText.h"

#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <exception>

#include "trox_sim/RequestType.h"

namespace sim {

int32_t low32(int64_t id) {
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(id)));
}

bool parseValue(const std::string& text, int64_t* out) {
    size_t b = 0;
    size_t e = text.size();
    while (b < e && std::isspace(static_cast<unsigned char>(text[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(text[e - 1]))) --e;
    if (b == e) return false;
    const std::string t = text.substr(b, e - b);
    try {
        size_t used = 0;
        const long long v = std::stoll(t, &used, 10);
        if (used != t.size()) return false;
        *out = v;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::string hexId(int32_t id) {
    char buf[16];
    snprintf(buf, sizeof(buf), "0x%08" PRIx32, static_cast<uint32_t>(id));
    return buf;
}

std::string orNone(const std::optional<std::string>& s) {
    return s && !s->empty() ? *s : std::string("none");
}

const char* typeName(int32_t type) {
    switch (type) {
        case kStateQuery:
            return "state";
        case kResourceControl:
            return "resctl";
        case kScenario:
            return "scenario";
        case kDiagnostics:
            return "diagnostics";
        case kThermalNotify:
            return "thermal-notify";
        case kEvent:
            return "event";
        case kNotification:
            return "notify";
        case kHistory:
            return "history";
        case kPlatformResource:
            return "platform-resctl";
        case kPowerModeStatus:
            return "pm-status";
        case kPowerConsistency:
            return "power-consistency";
        case kDataset:
            return "dataset";
        case kFeatureStatus:
            return "feature";
        default:
            return "unknown";
    }
}

std::string settingsText(const std::vector<Setting>& settings) {
    std::string out = "[";
    for (size_t i = 0; i < settings.size(); ++i) {
        if (i != 0) out += ", ";
        out += hexId(settings[i].id) + "=" + std::to_string(settings[i].value);
    }
    return out + "]";
}

std::string describe(const Request& r) {
    std::string s = "handle=" + std::to_string(r.handle) + " kind=" + typeName(r.requestType);
    if (r.requestType == kEvent) s += " action=" + std::to_string(r.source);
    if (r.requestType == kScenario) s += " scenario=" + std::to_string(r.source);
    s += " pid=" + std::to_string(r.pid) + " pkg=" + (r.pkg.empty() ? "none" : r.pkg) +
         " identity=" + (r.identity.empty() ? "none" : r.identity);
    s += r.deadlineMs ? " duration=" + std::to_string(*r.deadlineMs - r.startMs) + "ms"
                      : std::string(" duration=until-release");
    return s + " settings=" + settingsText(r.settings);
}

}  // namespace sim
