#include <android/binder_process.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "process.h"

namespace binder_impl {
namespace {

// Threads that serve incoming work; the in-process transport never needs them, a socket
// transport hands its connections' reads to them.
struct ThreadPool {
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<std::function<void()>> work;
    uint32_t maxThreads = 15;
    bool started = false;
};

ThreadPool& pool() {
    static auto* instance = new ThreadPool();
    return *instance;
}

[[noreturn]] void serveForever() {
    ThreadPool& p = pool();
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock<std::mutex> lock(p.mutex);
            p.ready.wait(lock, [&p] { return !p.work.empty(); });
            task = std::move(p.work.front());
            p.work.pop_front();
        }
        task();
    }
}

}  // namespace

void postToThreadPool(std::function<void()> task) {
    ThreadPool& p = pool();
    {
        std::lock_guard<std::mutex> lock(p.mutex);
        p.work.push_back(std::move(task));
    }
    p.ready.notify_one();
}

uint32_t threadPoolMaxThreads() {
    ThreadPool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return p.maxThreads;
}

}  // namespace binder_impl

using namespace binder_impl;

void ABinderProcess_startThreadPool() {
    ThreadPool& p = pool();
    {
        std::lock_guard<std::mutex> lock(p.mutex);
        if (p.started) return;
        p.started = true;
    }
    std::thread(serveForever).detach();
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
    serveForever();
}
