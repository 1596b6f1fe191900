#pragma once

// A caller's callback object that keeps every batch of records the service sends, so a
// subcommand or the demo can print them and wait for a particular one.

#include "IClientCallback.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <vector>

namespace pymctl {

class ChangeCollector : public IClientCallback {
  public:
    using Batch = std::vector<PymClient::Resource>;

    // Called on the binder thread for each batch, before it is stored.
    void setObserver(std::function<void(const Batch&)> observer);
    void onCallback(std::list<PymClient::Resource> resources) override;

    std::vector<Batch> batches() const;
    // Waits until some stored record has this id and value.
    bool waitFor(int32_t id, const std::string& value, std::chrono::milliseconds timeout) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable cv_;
    std::function<void(const Batch&)> observer_;
    std::vector<Batch> batches_;
};

}  // namespace pymctl
