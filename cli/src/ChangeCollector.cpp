#include "ChangeCollector.h"

namespace pymctl {

void ChangeCollector::setObserver(std::function<void(const Batch&)> observer) {
    std::lock_guard<std::mutex> lock(mutex_);
    observer_ = std::move(observer);
}

void ChangeCollector::onCallback(std::list<PymClient::Resource> resources) {
    Batch batch(resources.begin(), resources.end());
    std::function<void(const Batch&)> observer;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        observer = observer_;
    }
    if (observer) observer(batch);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        batches_.push_back(std::move(batch));
    }
    cv_.notify_all();
}

std::vector<ChangeCollector::Batch> ChangeCollector::batches() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return batches_;
}

bool ChangeCollector::waitFor(int32_t id, const std::string& value,
                              std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return cv_.wait_for(lock, timeout, [&] {
        for (const auto& b : batches_) {
            for (const auto& r : b) {
                if (r.id == id && r.value.value_or("") == value) return true;
            }
        }
        return false;
    });
}

}  // namespace pymctl
