#pragma once

#include <android/binder_status.h>

#include <atomic>
#include <mutex>

namespace binder_impl {

// A failure that tests arm so that the next `count` operations of one kind answer with a status
// instead of running.
class InjectedFault {
  public:
    void arm(binder_status_t status, int count);
    void clear() { arm(STATUS_OK, 0); }
    // STATUS_OK when nothing is armed.
    binder_status_t take();

  private:
    // Every proxy call asks; a plain load keeps callers on different cores from contending for
    // the mutex when nothing is armed.
    std::atomic<bool> mArmed{false};
    std::mutex mMutex;
    binder_status_t mStatus = STATUS_OK;
    int mRemaining = 0;
};

InjectedFault& linkToDeathFault();
// Applies to transactions on proxies only: the failure happens "on the wire".
InjectedFault& proxyTransactionFault();

}  // namespace binder_impl
