#define LOG_TAG "[PYM_CLIENT_WRAPPER]"
#include "ActionLookup.h"
#include "PymWrapper.h"
#include "pym.h"

#include <log/log.h>

namespace {

const char* orNone(const std::string& text) {
    return text.empty() ? "none" : text.c_str();
}

}  // namespace

int32_t PymEventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                               int32_t timeout) {
    ALOGI("[%s] eventId:%s, scene:%s, identity:%s, timeout:%d", __func__, orNone(eventId),
          orNone(scene), orNone(identity), timeout);
    const int32_t actionId = vexal::wrapper::findActionId(eventId);
    if (actionId < 0) return -1;
    return PymEventAcquire(actionId, scene, identity, timeout, {});
}

void PymReleaseWapper(int32_t handle) {
    ALOGI("[%s] %d", __func__, handle);
    PymRelease(handle);
}
