#include "trox_sim/Config.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace sim {
namespace {

using nlohmann::json;

[[noreturn]] void fail(const std::string& where, const std::string& what) {
    throw ConfigError(where + ": " + what);
}

int64_t toInt64(const json& v, const std::string& where) {
    if (v.is_number_integer()) return v.get<int64_t>();
    if (v.is_string()) {
        const std::string s = v.get<std::string>();
        try {
            size_t used = 0;
            const long long n = std::stoll(s, &used, 0);
            if (used == s.size() && !s.empty()) return n;
        } catch (const std::exception&) {
        }
        fail(where, "'" + s + "' is not an integer");
    }
    fail(where, "expected an integer or an integer text, got " + v.dump());
}

int32_t toId(const json& v, const std::string& where) {
    const int64_t n = toInt64(v, where);
    // Hex ids above 0x7fffffff are written as unsigned 32-bit numbers.
    if (n < std::numeric_limits<int32_t>::min() || n > std::numeric_limits<uint32_t>::max()) {
        fail(where, "id out of 32-bit range");
    }
    return static_cast<int32_t>(static_cast<uint32_t>(n));
}

const json& member(const json& obj, const char* key, const std::string& where) {
    auto it = obj.find(key);
    if (it == obj.end()) fail(where, std::string("missing \"") + key + "\"");
    return *it;
}

std::string text(const json& v, const std::string& where) {
    if (v.is_string()) return v.get<std::string>();
    if (v.is_number_integer()) return std::to_string(v.get<int64_t>());
    fail(where, "expected a text, got " + v.dump());
}

std::vector<Setting> settings(const json& arr, const std::map<int32_t, ResourceDef>& resources,
                              const std::map<std::string, int32_t>& paths,
                              const std::string& where) {
    if (!arr.is_array()) fail(where, "expected an array of settings");
    std::vector<Setting> out;
    for (size_t i = 0; i < arr.size(); ++i) {
        const std::string at = where + "[" + std::to_string(i) + "]";
        const json& s = arr[i];
        if (!s.is_object()) fail(at, "expected an object");
        Setting setting;
        const json& res = member(s, "resource", at);
        if (res.is_string() && !res.get<std::string>().empty() &&
            res.get<std::string>()[0] == '/') {
            auto p = paths.find(res.get<std::string>());
            if (p == paths.end()) fail(at, "unknown resource path " + res.get<std::string>());
            setting.id = p->second;
        } else {
            setting.id = toId(res, at + ".resource");
            if (resources.count(setting.id) == 0) fail(at, "unknown resource " + res.dump());
        }
        setting.value = toInt64(member(s, "value", at), at + ".value");
        out.push_back(setting);
    }
    return out;
}

template <typename Fn>
void eachIn(const json& root, const char* key, Fn fn) {
    auto it = root.find(key);
    if (it == root.end()) return;
    if (!it->is_array()) fail(key, "expected an array");
    for (size_t i = 0; i < it->size(); ++i) {
        const std::string at = std::string(key) + "[" + std::to_string(i) + "]";
        if (!(*it)[i].is_object()) fail(at, "expected an object");
        fn((*it)[i], at);
    }
}

std::map<int32_t, std::string> numberTable(const json& root, const char* key) {
    std::map<int32_t, std::string> out;
    auto it = root.find(key);
    if (it == root.end()) return out;
    if (!it->is_object()) fail(key, "expected an object of id to status");
    for (const auto& [k, v] : it->items()) {
        const std::string at = std::string(key) + "." + k;
        out[toId(json(k), at)] = std::to_string(toInt64(v, at));
    }
    return out;
}

}  // namespace

Config parseConfig(const std::string& jsonText) {
    json root;
    try {
        root = json::parse(jsonText);
    } catch (const json::parse_error& e) {
        throw ConfigError(std::string("not valid JSON: ") + e.what());
    }
    if (!root.is_object()) throw ConfigError("the configuration must be a JSON object");
    static const std::set<std::string> known = {
            "resources", "actions", "scenarios",         "rules",   "properties", "power_modes",
            "features",  "dataset", "power_consistency", "history", "device",     "limits",
            "timeline"};
    for (const auto& [k, v] : root.items()) {
        if (known.count(k) == 0) fail(k, "unknown section");
    }

    Config config;
    std::map<int32_t, ResourceDef> resources;
    std::map<std::string, int32_t> paths;
    if (root.find("resources") == root.end()) fail("resources", "missing section");
    eachIn(root, "resources", [&](const json& r, const std::string& at) {
        ResourceDef def;
        def.id = toId(member(r, "id", at), at + ".id");
        if (def.id == 0) fail(at, "resource id 0 is reserved for \"no resource\"");
        if (resources.count(def.id) != 0) fail(at, "duplicate resource id");
        def.name = r.contains("name") ? text(r["name"], at + ".name") : std::string();
        def.path = r.contains("path") ? text(r["path"], at + ".path") : std::string();
        if (!def.path.empty()) {
            if (def.path[0] != '/') fail(at, "a path must start with '/'");
            if (paths.count(def.path) != 0) fail(at, "duplicate path " + def.path);
            paths[def.path] = def.id;
        }
        const std::string kind = text(member(r, "kind", at), at + ".kind");
        if (kind == "boost") {
            def.kind = Kind::kBoost;
        } else if (kind == "limit") {
            def.kind = Kind::kLimit;
        } else {
            fail(at + ".kind", "must be \"boost\" or \"limit\", not \"" + kind + "\"");
        }
        def.min = toInt64(member(r, "min", at), at + ".min");
        def.max = toInt64(member(r, "max", at), at + ".max");
        def.defaultValue = toInt64(member(r, "default", at), at + ".default");
        if (def.min > def.max) fail(at, "min is above max");
        if (def.defaultValue < def.min || def.defaultValue > def.max) {
            fail(at, "default is outside [min, max]");
        }
        resources[def.id] = def;
        config.resources.push_back(def);
    });
    if (config.resources.empty()) fail("resources", "at least one resource is needed");

    eachIn(root, "actions", [&](const json& a, const std::string& at) {
        ActionDef def;
        def.id = toId(member(a, "id", at), at + ".id");
        if (config.actions.count(def.id) != 0) fail(at, "duplicate action id");
        def.name = a.contains("name") ? text(a["name"], at + ".name") : std::string();
        def.settings = settings(member(a, "settings", at), resources, paths, at + ".settings");
        config.actions[def.id] = def;
    });
    eachIn(root, "scenarios", [&](const json& a, const std::string& at) {
        ScenarioDef def;
        def.id = toId(member(a, "id", at), at + ".id");
        if (config.scenarios.count(def.id) != 0) fail(at, "duplicate scenario id");
        def.name = a.contains("name") ? text(a["name"], at + ".name") : std::string();
        def.settings = settings(member(a, "settings", at), resources, paths, at + ".settings");
        config.scenarios[def.id] = def;
    });
    eachIn(root, "rules", [&](const json& a, const std::string& at) {
        RuleDef def;
        def.id = toId(member(a, "id", at), at + ".id");
        if (config.rules.count(def.id) != 0) fail(at, "duplicate rule id");
        def.name = a.contains("name") ? text(a["name"], at + ".name") : std::string();
        const json& statuses = member(a, "statuses", at);
        if (!statuses.is_object())
            fail(at + ".statuses", "expected an object of status to settings");
        for (const auto& [k, v] : statuses.items()) {
            const std::string sat = at + ".statuses." + k;
            const int32_t status = toId(json(k), sat);
            if (status == 0) fail(sat, "status 0 switches a rule off and cannot set anything");
            def.statuses[status] = settings(v, resources, paths, sat);
        }
        config.rules[def.id] = def;
    });

    if (auto it = root.find("properties"); it != root.end()) {
        if (!it->is_object()) fail("properties", "expected an object of key to text");
        for (const auto& [k, v] : it->items()) {
            config.properties[k] = text(v, "properties." + k);
            if (config.properties[k].size() > 255) fail("properties." + k, "longer than 255");
        }
    }
    config.powerModes = numberTable(root, "power_modes");
    config.features = numberTable(root, "features");
    eachIn(root, "dataset", [&](const json& d, const std::string& at) {
        config.dataset.emplace_back(toId(member(d, "id", at), at + ".id"),
                                    text(member(d, "value", at), at + ".value"));
    });
    if (auto it = root.find("power_consistency"); it != root.end()) {
        config.powerConsistency = std::to_string(toInt64(*it, "power_consistency"));
    }
    if (auto it = root.find("history"); it != root.end()) {
        if (!it->is_object()) fail("history", "expected an object");
        if (it->contains("size")) {
            const int64_t size = toInt64((*it)["size"], "history.size");
            if (size < 1 || size > 100000) fail("history.size", "must be 1 to 100000");
            config.historySize = static_cast<size_t>(size);
        }
        if (it->contains("enabled")) {
            if (!(*it)["enabled"].is_boolean()) fail("history.enabled", "expected true or false");
            config.historyEnabled = (*it)["enabled"].get<bool>();
        }
    }
    if (auto it = root.find("timeline"); it != root.end()) {
        if (!it->is_object()) fail("timeline", "expected an object");
        for (const auto& [k, v] : it->items()) {
            if (k != "size") fail("timeline." + k, "unknown key");
            const int64_t size = toInt64(v, "timeline.size");
            if (size < 16 || size > (1 << 22)) fail("timeline.size", "must be 16 to 4194304");
            config.timelineSize = static_cast<size_t>(size);
        }
    }
    if (auto it = root.find("limits"); it != root.end()) {
        if (!it->is_object()) fail("limits", "expected an object");
        for (const auto& [k, v] : it->items()) {
            const std::string at = "limits." + k;
            const int64_t n = toInt64(v, at);
            if (k == "max_requests") {
                if (n < 1 || n > 1000000) fail(at, "must be 1 to 1000000");
                config.maxRequests = static_cast<size_t>(n);
            } else if (k == "max_text") {
                if (n < 16 || n > 65536) fail(at, "must be 16 to 65536");
                config.maxText = static_cast<size_t>(n);
            } else if (auto var = transportLimitVariables().find(k);
                       var != transportLimitVariables().end()) {
                if (n < 1) fail(at, "must be 1 or more");
                config.transportLimits[var->second] = static_cast<uint64_t>(n);
            } else {
                fail(at, "unknown limit");
            }
        }
    }
    return config;
}

const std::map<std::string, std::string>& transportLimitVariables() {
    static const std::map<std::string, std::string> variables{
            {"max_connections", "BINDER_HOST_MAX_CONNECTIONS"},
            {"handshake_timeout_ms", "BINDER_HOST_HANDSHAKE_TIMEOUT_MS"},
            {"frame_timeout_ms", "BINDER_HOST_FRAME_TIMEOUT_MS"},
            {"max_queued_calls", "BINDER_HOST_MAX_QUEUED_CALLS"},
            {"max_queued_bytes", "BINDER_HOST_MAX_QUEUED_BYTES"},
            {"reply_timeout_ms", "BINDER_HOST_REPLY_TIMEOUT_MS"},
    };
    return variables;
}

Config loadConfigFile(const std::string& path, size_t maxBytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ConfigError("cannot read " + path);
    // Bounded, so that a device file or a huge file is refused rather than read to the end.
    std::string text(maxBytes + 1, '\0');
    errno = 0;
    in.read(&text[0], static_cast<std::streamsize>(text.size()));
    if (in.bad()) {
        throw ConfigError(path + ": cannot read" +
                          (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
    }
    if (static_cast<size_t>(in.gcount()) > maxBytes) {
        throw ConfigError(path + ": larger than the limit of " + std::to_string(maxBytes) +
                          " bytes");
    }
    text.resize(static_cast<size_t>(in.gcount()));
    try {
        return parseConfig(text);
    } catch (const ConfigError& e) {
        throw ConfigError(path + ": " + e.what());
    }
}

Config defaultConfig() {
    return parseConfig(defaultConfigText());
}

}  // namespace sim
