#include "fault_injection.h"

namespace binder_impl {

void InjectedFault::arm(binder_status_t status, int count) {
    std::lock_guard<std::mutex> lock(mMutex);
    mStatus = status;
    mRemaining = count;
    mArmed.store(count > 0);
}

binder_status_t InjectedFault::take() {
    if (!mArmed.load()) return STATUS_OK;
    std::lock_guard<std::mutex> lock(mMutex);
    if (mRemaining <= 0) return STATUS_OK;
    if (--mRemaining == 0) mArmed.store(false);
    return mStatus;
}

// Leaked on purpose: kit threads may still consult them during static destruction.
InjectedFault& linkToDeathFault() {
    static auto* fault = new InjectedFault();
    return *fault;
}

InjectedFault& proxyTransactionFault() {
    static auto* fault = new InjectedFault();
    return *fault;
}

}  // namespace binder_impl
