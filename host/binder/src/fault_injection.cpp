#include "fault_injection.h"

namespace binder_impl {

void InjectedFault::arm(binder_status_t status, int count) {
    std::lock_guard<std::mutex> lock(mMutex);
    mStatus = status;
    mRemaining = count;
}

binder_status_t InjectedFault::take() {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mRemaining <= 0) return STATUS_OK;
    --mRemaining;
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
