#include <android/binder_process.h>
#include <android/log.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>

#include "process.h"

namespace binder_impl {
namespace {

struct ThreadPool {
    std::mutex mutex;
    std::condition_variable ready;    // idle threads: work came, or stop
    std::condition_variable changed;  // what is queued or running changed
    std::condition_variable exited;
    std::deque<std::function<void()>> work;
    uint32_t maxThreads = 15;  // threads started on demand, beyond the ones the process gave
    uint32_t onDemand = 0;     // of those, alive
    uint32_t kitThreads = 0;   // threads the kit created (the pool's first one and on-demand ones)
    bool poolStarted = false;
    uint32_t joined = 0;
    uint32_t idle = 0;
    uint32_t busy = 0;
    bool stopping = false;
};

thread_local bool tBinderThread = false;

// Never destroyed: pool threads may still be running while statics are torn down.
ThreadPool& pool() {
    static ThreadPool* instance = [] {
        auto* p = new ThreadPool();
        std::atexit(stopThreadPool);
        return p;
    }();
    return *instance;
}

bool hasBinderThreadLocked(const ThreadPool& p) {
    return p.poolStarted || p.joined > 0;
}

enum class Role { kFirst, kOnDemand, kJoined };

void serve(Role role);

// Caller holds the pool mutex. False when no thread could be made; the work then waits for the
// threads there are.
bool spawnLocked(ThreadPool& p, Role role) {
    try {
        std::thread([role] { serve(role); }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    ++p.kitThreads;
    if (role == Role::kOnDemand) ++p.onDemand;
    return true;
}

// As the driver does: once the process has a looping thread, another is asked for whenever
// work waits and no thread is free, up to the maximum.
void growLocked(ThreadPool& p) {
    if (p.stopping || !hasBinderThreadLocked(p)) return;
    if (p.work.size() > p.idle && p.onDemand < p.maxThreads) spawnLocked(p, Role::kOnDemand);
}

void serve(Role role) {
    tBinderThread = true;
    ThreadPool& p = pool();
    std::unique_lock<std::mutex> lock(p.mutex);
    for (;;) {
        ++p.idle;
        p.ready.wait(lock, [&p] { return p.stopping || !p.work.empty(); });
        --p.idle;
        if (p.stopping) break;
        std::function<void()> task = std::move(p.work.front());
        p.work.pop_front();
        ++p.busy;
        growLocked(p);
        p.changed.notify_all();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
        --p.busy;
        p.changed.notify_all();
    }
    if (role == Role::kJoined) {
        // A joined thread never returns, as on a device.
        for (;;) p.ready.wait(lock);
    }
    --p.kitThreads;
    if (role == Role::kOnDemand) --p.onDemand;
    p.exited.notify_all();
}

}  // namespace

void postToThreadPool(std::function<void()> task) {
    ThreadPool& p = pool();
    {
        std::lock_guard<std::mutex> lock(p.mutex);
        if (p.stopping) return;
        p.work.push_back(std::move(task));
        growLocked(p);
        p.changed.notify_all();
    }
    p.ready.notify_one();
}

uint32_t threadPoolThreadLimit() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    if (!hasBinderThreadLocked(p)) return 0;
    return (p.poolStarted ? 1 : 0) + p.joined + p.maxThreads;
}

bool onBinderThread() {
    return tBinderThread;
}

void drainThreadPool() {
    if (tBinderThread) return;
    ThreadPool& p = pool();
    std::unique_lock<std::mutex> lock(p.mutex);
    p.changed.wait(lock, [&p] {
        return p.stopping || !hasBinderThreadLocked(p) || (p.work.empty() && p.busy == 0);
    });
}

size_t queuedThreadPoolWork() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return p.work.size();
}

bool waitForQueuedThreadPoolWork(size_t atLeast, std::chrono::milliseconds timeout) {
    ThreadPool& p = pool();
    std::unique_lock<std::mutex> lock(p.mutex);
    return p.changed.wait_for(lock, timeout, [&] { return p.work.size() >= atLeast; });
}

void stopThreadPool() {
    ThreadPool& p = pool();
    std::unique_lock<std::mutex> lock(p.mutex);
    p.stopping = true;
    // Queued work stays where it is, never run: dropping it here would run destructors of
    // objects other threads may still use while the process exits.
    p.ready.notify_all();
    p.changed.notify_all();
    // A thread stuck in a handler cannot be stopped; exit goes on without it.
    p.exited.wait_for(lock, std::chrono::seconds(1), [&p] { return p.kitThreads == 0; });
}

BinderThreadScope::BinderThreadScope() : saved_(tBinderThread) {
    tBinderThread = true;
}

BinderThreadScope::~BinderThreadScope() {
    tBinderThread = saved_;
}

void SerialQueue::post(std::function<void()> task) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        tasks_.push_back(std::move(task));
        if (running_) return;
        running_ = true;
    }
    postToThreadPool([self = shared_from_this()] { self->runAll(); });
}

void SerialQueue::runAll() {
    for (;;) {
        std::function<void()> task;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (tasks_.empty()) {
                running_ = false;
                return;
            }
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

}  // namespace binder_impl

using namespace binder_impl;

void ABinderProcess_startThreadPool() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    if (p.poolStarted) return;
    if (p.maxThreads == 0) {
        __android_log_write(ANDROID_LOG_WARN, "binder_host",
                            "thread pool started with a maximum of 0 threads: it gets one "
                            "thread, which the maximum does not count");
    }
    p.poolStarted = true;
    if (!p.stopping) spawnLocked(p, Role::kFirst);
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    p.maxThreads = numThreads;
    return true;
}

bool ABinderProcess_isThreadPoolStarted() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return p.poolStarted;
}

void ABinderProcess_joinThreadPool() {
    {
        ThreadPool& p = pool();
        std::lock_guard<std::mutex> lock(p.mutex);
        ++p.joined;
        p.changed.notify_all();
    }
    serve(Role::kJoined);
}
