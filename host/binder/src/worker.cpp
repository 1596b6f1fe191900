#include "worker.h"

#include <cstdlib>

namespace binder_impl {

Worker::~Worker() {
    shutdown();
}

void Worker::post(std::function<void()> task) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (shutDown_) return;
    if (!thread_.joinable()) {
        thread_ = std::thread([this] { run(); });
        threadId_ = thread_.get_id();
    }
    queue_.push_back(std::move(task));
    cv_.notify_all();
}

void Worker::drain() {
    if (onWorkerThread()) return;
    std::unique_lock<std::mutex> lock(mutex_);
    cv_.wait(lock, [this] { return shutDown_ || (queue_.empty() && !busy_); });
}

void Worker::shutdown() {
    std::thread thread;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (shutDown_) return;
        shutDown_ = true;
        thread = std::move(thread_);
    }
    cv_.notify_all();
    if (!thread.joinable()) return;
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
    } else {
        thread.join();
    }
}

bool Worker::onWorkerThread() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return threadId_ == std::this_thread::get_id();
}

void Worker::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        cv_.wait(lock, [this] { return shutDown_ || !queue_.empty(); });
        // Work queued before shutdown still runs so no caller is left waiting.
        if (queue_.empty()) break;
        std::function<void()> task = std::move(queue_.front());
        queue_.pop_front();
        busy_ = true;
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
        busy_ = false;
        cv_.notify_all();
    }
}

namespace {

// Never destroyed: handlers may run while other statics are torn down. Stopped at exit.
Worker* makeWorker(void (*stopAtExit)()) {
    auto* worker = new Worker();
    std::atexit(stopAtExit);
    return worker;
}

}  // namespace

Worker& onewayDispatcher() {
    static Worker* worker = makeWorker([] { onewayDispatcher().shutdown(); });
    return *worker;
}

Worker& deathNotifier() {
    static Worker* worker = makeWorker([] { deathNotifier().shutdown(); });
    return *worker;
}

}  // namespace binder_impl
