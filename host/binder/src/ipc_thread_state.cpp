#include <android/binder_ibinder.h>
#include <binder/IPCThreadState.h>

namespace android {

IPCThreadState* IPCThreadState::self() {
    thread_local IPCThreadState state;
    return &state;
}

pid_t IPCThreadState::getCallingPid() const {
    return AIBinder_getCallingPid();
}

uid_t IPCThreadState::getCallingUid() const {
    return AIBinder_getCallingUid();
}

}  // namespace android
