#pragma once

#include <sys/types.h>

namespace binder_impl {

// Marks the current thread as serving a transaction from pid/uid until destroyed.
class CallingScope {
  public:
    CallingScope(pid_t pid, uid_t uid);
    ~CallingScope();
    CallingScope(const CallingScope&) = delete;
    CallingScope& operator=(const CallingScope&) = delete;

  private:
    pid_t savedPid_;
    uid_t savedUid_;
};

bool isServingTransaction();

}  // namespace binder_impl
