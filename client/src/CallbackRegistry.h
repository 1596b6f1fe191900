#pragma once

#include "TroxCallbackClient.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

// One listening registration: what it listens to, the service's handle for it, and the client
// that the service calls.
struct TroxCallbackGroup {
    TroxCallbackGroup(std::shared_ptr<TroxCallbackClient> by, std::vector<int> listenedIds,
                      int serviceHandle)
        : ids(std::move(listenedIds)), handle(serviceHandle), client(std::move(by)) {}
    TroxCallbackGroup(std::shared_ptr<TroxCallbackClient> by,
                      std::vector<std::string> listenedPaths, int serviceHandle)
        : paths(std::move(listenedPaths)), handle(serviceHandle), client(std::move(by)) {}

    std::vector<int> ids;
    std::vector<std::string> paths;
    int handle;
    std::shared_ptr<TroxCallbackClient> client;
};

namespace vexal::client {

// Appends a one-shot client to request_callbacks, logging `line` under the lock first.
void addRequestCallback(const char* line, const std::shared_ptr<TroxCallbackClient>& client);

// Holds callback_group_mutex from construction until release() or destruction.
class CallbackGroupsHold {
  public:
    CallbackGroupsHold();
    CallbackGroupsHold(const CallbackGroupsHold&) = delete;
    CallbackGroupsHold& operator=(const CallbackGroupsHold&) = delete;

    std::vector<TroxCallbackGroup>& groups();
    void release() { mHold.unlock(); }

  private:
    std::unique_lock<std::mutex> mHold;
};

// The registry without its lock: only the thermal registration appends this way.
std::vector<TroxCallbackGroup>& callbackGroupsUnguarded();

}  // namespace vexal::client
