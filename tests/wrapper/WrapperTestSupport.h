// Shared by the wrapper suites: the per-test fixture and plain views of resources and of the
// rule-control calls that reached the fake service.
#pragma once

#include "FakeTroxService.h"
#include "LogCapture.h"
#include "PymWrapper.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace vexal::testing {

using PymClient::Resource;

inline constexpr char kWrapperTag[] = "[PYM_CLIENT_WRAPPER]";

inline LogLine wrapperInfo(std::string text) {
    return {ANDROID_LOG_INFO, kWrapperTag, std::move(text)};
}

// An opcode and its value; nullopt stands for a disengaged value, which no builder may produce.
using Setting = std::pair<uint32_t, std::optional<std::string>>;
using Settings = std::vector<Setting>;

inline Settings settingsOf(const std::vector<Resource>& list) {
    Settings settings;
    for (const auto& r : list) settings.emplace_back(static_cast<uint32_t>(r.id), r.value);
    return settings;
}

// One troxRuleCtl call as the service saw it. Ids must arrive zero-extended.
struct RuleCall {
    int32_t rule;
    int32_t status;
    Settings list;
    bool operator==(const RuleCall& o) const {
        return std::tie(rule, status, list) == std::tie(o.rule, o.status, o.list);
    }
};

inline void PrintTo(const RuleCall& call, std::ostream* os) {
    *os << "{rule " << call.rule << ", status " << call.status << ", [";
    for (const auto& [id, value] : call.list)
        *os << " (0x" << std::hex << id << std::dec << ", " << (value ? '"' + *value + '"' : "-")
            << ")";
    *os << " ]}";
}

// Every recorded call must be a rule-control call; anything else is reported as a bogus entry.
inline std::vector<RuleCall> ruleCalls(const FakeTrox& fake) {
    std::vector<RuleCall> calls;
    for (const auto& call : fake.calls()) {
        if (call.method != "troxRuleCtl" || call.ints.size() != 2) {
            calls.push_back({-999, -999, {{0, call.method}}});
            continue;
        }
        RuleCall rule{call.ints[0], call.ints[1], {}};
        for (const auto& e : call.data) {
            const bool clean =
                    e.res_Id >= 0 && e.res_Id <= INT64_C(0xFFFFFFFF) && !e.res_Path && !e.res_Extra;
            rule.list.emplace_back(clean ? static_cast<uint32_t>(e.res_Id) : 0xDEADu, e.res_Value);
        }
        calls.push_back(rule);
    }
    return calls;
}

// Log capture first, so that it outlives the service: the service's destructor kills it, and the
// death notification empties the Event API's connection for the next test.
class WrapperTest : public ::testing::Test {
  protected:
    FakeTrox& fake() { return service.fake(); }
    std::vector<LogLine> wrapperLines() const { return logs.linesWithTag(kWrapperTag); }

    LogCapture logs;
    FakeTroxService service;
};

}  // namespace vexal::testing
