#pragma once

#include <sys/types.h>

namespace android {

// Only the calling-identity queries that vendor code uses.
class IPCThreadState {
  public:
    static IPCThreadState* self();
    pid_t getCallingPid() const;
    uid_t getCallingUid() const;

  private:
    IPCThreadState() = default;
};

}  // namespace android
