#include "worker.h"

#include <cstdlib>

namespace binder_impl {

Worker::~Worker() {
    shutdown();
}

bool Worker::post(std::function<void()> task) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (shutDown_) return false;
    queue_.push_back(std::move(task));
    const size_t idle = threads_.size() - busy_;
    if (queue_.size() > idle && threads_.size() < maxThreads_) {
        threads_.emplace_back([this] { run(); });
        threadIds_.push_back(threads_.back().get_id());
    }
    cv_.notify_all();
    return true;
}

void Worker::drain() {
    if (onWorkerThread()) return;
    std::unique_lock<std::mutex> lock(mutex_);
    cv_.wait(lock, [this] { return shutDown_ || (queue_.empty() && busy_ == 0); });
}

void Worker::shutdown() {
    std::vector<std::thread> threads;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (shutDown_) return;
        shutDown_ = true;
        threads = std::move(threads_);
    }
    cv_.notify_all();
    for (std::thread& thread : threads) {
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

bool Worker::onWorkerThread() const {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& id : threadIds_) {
        if (id == std::this_thread::get_id()) return true;
    }
    return false;
}

void Worker::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        cv_.wait(lock, [this] { return shutDown_ || !queue_.empty(); });
        // Work queued before shutdown still runs so no caller is left waiting.
        if (queue_.empty()) break;
        std::function<void()> task = std::move(queue_.front());
        queue_.pop_front();
        ++busy_;
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
        --busy_;
        cv_.notify_all();
    }
}

namespace {

// Never destroyed: handlers may run while other statics are torn down. Stopped at exit.
Worker* makeWorker(size_t maxThreads, void (*stopAtExit)()) {
    auto* worker = new Worker(maxThreads);
    std::atexit(stopAtExit);
    return worker;
}

}  // namespace

Worker& onewayDispatcher() {
    static Worker* worker = makeWorker(1, [] { onewayDispatcher().shutdown(); });
    return *worker;
}

Worker& deathNotifier() {
    static Worker* worker = makeWorker(16, [] { deathNotifier().shutdown(); });
    return *worker;
}

}  // namespace binder_impl
