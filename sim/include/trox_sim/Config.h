#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "trox_sim/ResourceModel.h"

namespace sim {

struct ActionDef {
    int32_t id = 0;
    std::string name;
    std::vector<Setting> settings;
};

struct ScenarioDef {
    int32_t id = 0;
    std::string name;
    std::vector<Setting> settings;
};

struct RuleDef {
    int32_t id = 0;
    std::string name;
    // What the rule sets while it has a status; status 0 (off) never sets anything.
    std::map<int32_t, std::vector<Setting>> statuses;
};

struct Config {
    std::vector<ResourceDef> resources;
    std::map<int32_t, ActionDef> actions;
    std::map<int32_t, ScenarioDef> scenarios;
    std::map<int32_t, RuleDef> rules;
    std::map<std::string, std::string> properties;
    std::map<int32_t, std::string> powerModes;
    std::map<int32_t, std::string> features;
    std::vector<std::pair<int32_t, std::string>> dataset;
    std::string powerConsistency = "100";
    size_t historySize = 64;
    bool historyEnabled = true;
    // Events the timeline keeps before the oldest make room.
    size_t timelineSize = 65536;
    // What one client can cost: live requests and listeners together, and the length of each
    // text a caller leaves behind (package, identity, property key, thermal level).
    size_t maxRequests = 1024;
    size_t maxText = 256;
    // What one socket client can cost troxd, by the binder kit's variable that carries it
    // (BINDER_HOST_MAX_CONNECTIONS and the others); unset ones keep the kit's defaults.
    std::map<std::string, uint64_t> transportLimits;
};

// The "limits" keys troxd hands to the socket transport, and the variable each one sets.
const std::map<std::string, std::string>& transportLimitVariables();

// Configuration files larger than this are refused before they are parsed.
inline constexpr size_t kDefaultMaxConfigBytes = 1 << 20;

class ConfigError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Parses and checks a configuration; throws ConfigError naming what is wrong and where.
Config parseConfig(const std::string& jsonText);
Config loadConfigFile(const std::string& path, size_t maxBytes = kDefaultMaxConfigBytes);
// The configuration shipped in sim/config/default.json, built into the library.
const std::string& defaultConfigText();
Config defaultConfig();

}  // namespace sim
