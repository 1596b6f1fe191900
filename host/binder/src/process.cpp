#include <android/binder_process.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "process.h"

namespace binder_impl {
namespace {

// The in-process transport never needs these threads; the socket transport posts each
// incoming call here.
struct ThreadPool {
    std::mutex mutex;
    std::condition_variable ready;
    std::condition_variable exited;
    std::deque<std::function<void()>> work;
    uint32_t maxThreads = 15;
    uint32_t spawned = 0;  // threads the kit created, joined threads excluded
    uint32_t idle = 0;
    bool started = false;
    bool stopping = false;
};

// Never destroyed: pool threads may still be running while statics are torn down.
ThreadPool& pool() {
    static auto* instance = new ThreadPool();
    return *instance;
}

uint32_t spawnLimit(const ThreadPool& p) {
    return std::max<uint32_t>(p.maxThreads, 4);
}

void serve(bool spawned) {
    ThreadPool& p = pool();
    std::unique_lock<std::mutex> lock(p.mutex);
    for (;;) {
        ++p.idle;
        p.ready.wait(lock, [&p] { return p.stopping || !p.work.empty(); });
        --p.idle;
        if (p.stopping) break;
        std::function<void()> task = std::move(p.work.front());
        p.work.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
    if (spawned) {
        --p.spawned;
        p.exited.notify_all();
        return;
    }
    // A joined thread never returns, as on a device.
    for (;;) p.ready.wait(lock);
}

// Caller holds the pool mutex.
void spawnLocked(ThreadPool& p) {
    ++p.spawned;
    std::thread([] { serve(true); }).detach();
}

}  // namespace

void postToThreadPool(std::function<void()> task) {
    ThreadPool& p = pool();
    {
        std::lock_guard<std::mutex> lock(p.mutex);
        if (p.stopping) return;
        p.work.push_back(std::move(task));
        if (p.work.size() > p.idle && p.spawned < spawnLimit(p)) spawnLocked(p);
    }
    p.ready.notify_one();
}

uint32_t threadPoolThreadLimit() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return spawnLimit(p);
}

void stopThreadPool() {
    ThreadPool& p = pool();
    std::unique_lock<std::mutex> lock(p.mutex);
    p.stopping = true;
    p.work.clear();
    p.ready.notify_all();
    // A thread stuck in a handler cannot be stopped; exit goes on without it.
    p.exited.wait_for(lock, std::chrono::seconds(1), [&p] { return p.spawned == 0; });
}

}  // namespace binder_impl

using namespace binder_impl;

void ABinderProcess_startThreadPool() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    if (p.started) return;
    p.started = true;
    if (!p.stopping) spawnLocked(p);
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
    return p.started;
}

void ABinderProcess_joinThreadPool() {
    serve(false);
}
