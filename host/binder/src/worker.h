#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace binder_impl {

// One kit-owned thread running tasks in FIFO order; started on first use.
class Worker {
  public:
    Worker() = default;
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void post(std::function<void()> task);
    // Returns once every task posted before the call has run. No-op on the worker itself.
    void drain();
    // Runs what is queued, joins the thread and drops later posts.
    void shutdown();
    bool onWorkerThread() const;

  private:
    void run();

    mutable std::mutex mutex_;
    std::condition_variable cv_;
    std::deque<std::function<void()>> queue_;
    std::thread thread_;
    std::thread::id threadId_;
    bool shutDown_ = false;
    bool busy_ = false;
};

// Runs one-way calls.
Worker& onewayDispatcher();
// Runs death notifications.
Worker& deathNotifier();

}  // namespace binder_impl
