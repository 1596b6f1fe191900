#define LOG_TAG "TROXFramework-lib-vendor"
#include "CallbackRegistry.h"

#include <log/log.h>

std::vector<std::shared_ptr<TroxCallbackClient>> request_callbacks;
std::mutex request_callback_mutex;

namespace {

std::vector<TroxCallbackGroup> callback_groups;
std::mutex callback_group_mutex;

}  // namespace

namespace vexal::client {

void addRequestCallback(const char* line, const std::shared_ptr<TroxCallbackClient>& client) {
    std::lock_guard<std::mutex> hold(request_callback_mutex);
    ALOGI("%s", line);
    request_callbacks.push_back(client);
}

CallbackGroupsHold::CallbackGroupsHold() : mHold(callback_group_mutex) {}

std::vector<TroxCallbackGroup>& CallbackGroupsHold::groups() {
    return callback_groups;
}

std::vector<TroxCallbackGroup>& callbackGroupsUnguarded() {
    return callback_groups;
}

}  // namespace vexal::client
