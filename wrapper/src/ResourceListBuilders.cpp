#include "PymWrapper.h"
#include "pym.h"

#include <iterator>
#include <utility>

using PymClient::Resource;

namespace {

constexpr int32_t kGameUpgradeLevel = 0x01011040;  // also carries the colocation value
constexpr int32_t kGameUpgradeText = 0x010115B0;
constexpr int32_t kGroupMigrateFrom = 0x01010FB0;
constexpr int32_t kGroupMigrateTo = 0x01010FC0;

constexpr const uint32_t* kAdpTables[] = {opCodeAdpXpuCoreBoost, opCodeAdpXpuCoreLimit,
                                          opCodeAdpXpuFreqBoost, opCodeAdpXpuFreqLimit};
constexpr size_t kAdpTableSize = std::size(opCodeAdpXpuCoreBoost);

// Positions beyond a table's last entry have no opcode: such values are ignored, never read
// past the table.
template <size_t N>
void addAt(std::vector<Resource>& list, const uint32_t (&table)[N], size_t position,
           std::string value) {
    if (position < N)
        list.push_back(PymResourceInfo(static_cast<int32_t>(table[position]), std::move(value)));
}

}  // namespace

Resource PymResourceInfo(int32_t opcode, std::string value) {
    return Resource{opcode, std::move(value)};
}

std::vector<Resource> getTargetLoadList(std::string text) {
    std::vector<Resource> list;
    if (text.empty()) return list;
    const std::vector<std::string> tokens = stringUtils::split(text, ",");
    const bool indexed = stringUtils::contains(text, "-");
    for (size_t position = 0; position < tokens.size(); ++position) {
        if (!indexed) {
            if (tokens[position] != "-1") addAt(list, opCodeTargetLoad, position, tokens[position]);
            continue;
        }
        // "index-value": the index part is not read, the token's position decides.
        const std::vector<std::string> parts = stringUtils::split(tokens[position], "-");
        if (parts.size() >= 2) addAt(list, opCodeTargetLoad, position, parts[1]);
    }
    return list;
}

std::vector<Resource> getColocationList(std::string text) {
    std::vector<Resource> list;
    if (!stringUtils::contains(text, ":")) return list;
    for (const std::string& token : stringUtils::split(text, ",")) {
        const std::vector<std::string> parts = stringUtils::split(token, ":");
        if (parts.size() < 2) continue;
        const std::string& key = parts[0];
        const std::string& value = parts[1];
        if (key == "colocation") {
            list.push_back(PymResourceInfo(kGameUpgradeLevel, value));
        } else if (key == "groupmigrate" && stringUtils::contains(value, "-")) {
            const std::vector<std::string> bounds = stringUtils::split(value, "-");
            if (bounds.size() < 2) continue;
            const int32_t from = stringUtils::parseInt(bounds[0]);
            const int32_t to = stringUtils::parseInt(bounds[1]);
            if (to < from && from != -1 && to != -1) {
                list.push_back(PymResourceInfo(kGroupMigrateFrom, std::to_string(from)));
                list.push_back(PymResourceInfo(kGroupMigrateTo, std::to_string(to)));
            }
        }
    }
    return list;
}

std::vector<Resource> getGameAdpList(std::string text) {
    std::vector<Resource> list;
    if (text.empty()) return list;
    const std::vector<std::string> groups = stringUtils::split(text, ";");
    for (size_t group = 0; group < groups.size() && group < std::size(kAdpTables); ++group) {
        // A lone value is dropped on purpose.
        if (!stringUtils::contains(groups[group], ",")) continue;
        const std::vector<std::string> values = stringUtils::split(groups[group], ",");
        // Values beyond the table's last entry are ignored, as in addAt.
        for (size_t position = 0; position < values.size() && position < kAdpTableSize;
             ++position) {
            list.push_back(
                    PymResourceInfo(static_cast<int32_t>(kAdpTables[group][position]),
                                    stringUtils::trim(values[position], stringUtils::WHITESPACE)));
        }
    }
    return list;
}

std::vector<Resource> getGameUpgradeList(int32_t /*unused1*/, int32_t /*unused2*/, int32_t level,
                                         int32_t /*unused4*/, int32_t /*unused5*/,
                                         std::string text) {
    std::vector<Resource> list;
    if (level >= 1) list.push_back(PymResourceInfo(kGameUpgradeLevel, std::to_string(level)));
    if (!text.empty()) list.push_back(PymResourceInfo(kGameUpgradeText, std::move(text)));
    return list;
}

void clrGameUpgradeMode(int32_t ruleId, int32_t status) {
    // The same opcode twice, the second with an engaged empty value: the service expects both.
    const std::vector<Resource> list = {PymResourceInfo(kGameUpgradeLevel, "-1"),
                                        PymResourceInfo(kGameUpgradeLevel, "")};
    pymRuleCtl(ruleId, status, list);
}
