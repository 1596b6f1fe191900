#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace binder_impl {

// Kit-owned threads running tasks taken in FIFO order. With one thread tasks also finish in
// that order; with more, a new thread starts (up to the limit) whenever a task is posted while
// every thread is busy, so one blocked task does not hold up the others. Started on first use.
class Worker {
  public:
    explicit Worker(size_t maxThreads = 1) : maxThreads_(maxThreads) {}
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // False once shut down: the task is dropped.
    bool post(std::function<void()> task);
    // Returns once the queue is empty and no task runs. No-op on a worker thread.
    void drain();
    // Runs what is queued, joins the threads and drops later posts.
    void shutdown();
    bool onWorkerThread() const;

  private:
    void run();

    const size_t maxThreads_;
    mutable std::mutex mutex_;
    std::condition_variable cv_;
    std::deque<std::function<void()>> queue_;
    std::vector<std::thread> threads_;
    std::vector<std::thread::id> threadIds_;
    bool shutDown_ = false;
    size_t busy_ = 0;
};

// Runs one-way calls.
Worker& onewayDispatcher();
// Runs death notifications, one task per link: a handler that waits (say, for a lock held by
// a caller that is reconnecting) must not delay other recipients, as it would not on a device,
// where they arrive on a pool of binder threads.
Worker& deathNotifier();

}  // namespace binder_impl
