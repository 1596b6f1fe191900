#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace binder_impl {

// Work that reaches a process from binder (incoming calls, one-way calls, death notices) runs
// only on threads the process gave to binder, as the driver hands it out: the pool that
// ABinderProcess_startThreadPool starts, which grows on demand up to the maximum, and threads in
// ABinderProcess_joinThreadPool. Until the process has one, posted work waits.
void postToThreadPool(std::function<void()> task);
// How many incoming calls the process can serve at once; 0 until it gave binder a thread.
uint32_t threadPoolThreadLimit();
bool onBinderThread();
// Returns once nothing posted is queued or running. Returns at once on a binder thread, or when
// the process has no binder thread (the work waits for one, and so would the caller).
void drainThreadPool();
// Work waiting for a binder thread.
size_t queuedThreadPoolWork();
bool waitForQueuedThreadPoolWork(size_t atLeast, std::chrono::milliseconds timeout);
// At exit: nothing queued runs any more, idle pool threads end; waits a bounded time for them.
void stopThreadPool();

// Marks the current thread as one of binder's while it serves calls outside the pool.
class BinderThreadScope {
  public:
    BinderThreadScope();
    ~BinderThreadScope();
    BinderThreadScope(const BinderThreadScope&) = delete;
    BinderThreadScope& operator=(const BinderThreadScope&) = delete;

  private:
    const bool saved_;
};

// Runs its tasks on binder threads one at a time, in order: one-way calls to one object.
class SerialQueue : public std::enable_shared_from_this<SerialQueue> {
  public:
    void post(std::function<void()> task);

  private:
    void runAll();

    std::mutex mutex_;
    std::deque<std::function<void()>> tasks_;
    bool running_ = false;
};

}  // namespace binder_impl
