#define LOG_TAG "[PYM_CLIENT_WRAPPER]"
#include "PymWrapper.h"
#include "pym.h"

#include <log/log.h>

using PymClient::Resource;

namespace {

constexpr int32_t kFoldedRule = 200;
constexpr int32_t kBoostOpcode = 0x010103A0;
constexpr int32_t kGameModeOpcode = 0x010112F0;
constexpr int32_t kGameModeExtraOpcode = 0x01011910;
constexpr int32_t kLevelOpcode = 0x01011070;

using ListBuilder = std::vector<Resource> (*)(std::string);

bool isSwitch(int32_t type) {
    return type == -1 || type == 0 || type == 1;
}

// Type 1 sends the parsed `data` (nothing at all when it is empty), type 0 clears the rule.
void sendParsedOrClear(int32_t src, int32_t type, std::string data, ListBuilder build) {
    if (type == 1) {
        if (!data.empty()) pymRuleCtl(src, 1, build(std::move(data)));
    } else if (type == 0) {
        pymRuleCtl(src, 0, {});
    }
}

void dispatch(int32_t src, int32_t type, int32_t arg1, std::string data) {
    const std::vector<Resource> none;
    switch (src) {
        case 1:
        case 10:
        case 11:
        case 12:
        case 16:
        case 110:
        case 129:
        case 1000:
            pymRuleCtl(src, type, none);
            return;
        case 2:
        case 3:
        case 5:
        case 6:
            // Folded onto one rule; the notification number travels as its status.
            pymRuleCtl(kFoldedRule, type == 1 ? src : 0, none);
            return;
        case 8:
            if (type == 1 || type == 2) {
                std::vector<Resource> list;
                if (arg1 == 1) list.push_back(PymResourceInfo(kBoostOpcode, "0"));
                pymRuleCtl(8, type, list);
            } else if (type == 0) {
                pymRuleCtl(8, 0, none);
            }
            return;
        case 9:
            if (type == 1) {
                pymRuleCtl(9, 1,
                           {PymResourceInfo(kGameModeOpcode, "enable 0"),
                            PymResourceInfo(kGameModeExtraOpcode, "0")});
            } else if (type == 0) {
                // The enabling list is prepared but deliberately not sent: the service is
                // told with an empty list, as it always has been.
                const std::vector<Resource> unsent = {PymResourceInfo(kGameModeOpcode, "enable 1")};
                (void)unsent;
                pymRuleCtl(9, 0, none);
            }
            return;
        case 14:
            if (type == 0) {
                clrGameUpgradeMode(14, 0);
            } else if (type == 1) {
                pymRuleCtl(14, 1, getGameUpgradeList(0, 0, arg1, 0, 0, std::move(data)));
            }
            return;
        case 15:
            if (isSwitch(type)) {
                // Unsigned arithmetic: a negative arg1 shifts without undefined behaviour.
                const uint32_t status =
                        (static_cast<uint32_t>(type) & 0xFFu) | (static_cast<uint32_t>(arg1) << 8);
                pymRuleCtl(15, static_cast<int32_t>(status), none);
            }
            return;
        case 102:
            if (type == 1) {
                const bool unset = arg1 == 0 || arg1 == -1;
                pymRuleCtl(102, 1,
                           {PymResourceInfo(kLevelOpcode, unset ? "3" : std::to_string(arg1))});
            } else if (type == 0) {
                pymRuleCtl(102, 0, {PymResourceInfo(kLevelOpcode, "0")});
            }
            return;
        case 111:
            if (isSwitch(type)) {
                pymRuleCtl(111, type, {PymResourceInfo(kBoostOpcode, std::to_string(type))});
            }
            return;
        case 130:
            sendParsedOrClear(130, type, std::move(data), getTargetLoadList);
            return;
        case 131:
            sendParsedOrClear(131, type, std::move(data), getColocationList);
            return;
        case 9000:
            sendParsedOrClear(9000, type, std::move(data), getGameAdpList);
            return;
        default:
            // Unknown notifications are ignored silently.
            return;
    }
}

}  // namespace

int32_t PymNotifyWapper(std::string info, int32_t src, int32_t type, int32_t arg1, int32_t /*arg2*/,
                        int32_t /*arg3*/, std::string data) {
    ALOGI("[%s] %s, src:%d, type:%d", __func__, info.empty() ? "none" : info.c_str(), src, type);
    dispatch(src, type, arg1, std::move(data));
    return 0;
}
