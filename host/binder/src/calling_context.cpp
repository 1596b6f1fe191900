#include <android/binder_ibinder.h>
#include <unistd.h>

#include "calling_context.h"

namespace binder_impl {
namespace {

struct CallingContext {
    int depth = 0;
    pid_t pid = 0;
    uid_t uid = 0;
};

thread_local CallingContext tContext;

}  // namespace

CallingScope::CallingScope(pid_t pid, uid_t uid)
    : savedPid_(tContext.pid), savedUid_(tContext.uid) {
    tContext.pid = pid;
    tContext.uid = uid;
    ++tContext.depth;
}

CallingScope::~CallingScope() {
    tContext.pid = savedPid_;
    tContext.uid = savedUid_;
    --tContext.depth;
}

bool isServingTransaction() {
    return tContext.depth > 0;
}

}  // namespace binder_impl

pid_t AIBinder_getCallingPid() {
    return binder_impl::tContext.depth > 0 ? binder_impl::tContext.pid : getpid();
}

uid_t AIBinder_getCallingUid() {
    return binder_impl::tContext.depth > 0 ? binder_impl::tContext.uid : getuid();
}

bool AIBinder_isHandlingTransaction() {
    return binder_impl::isServingTransaction();
}
