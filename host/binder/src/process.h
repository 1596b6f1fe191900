#pragma once

#include <cstdint>
#include <functional>

namespace binder_impl {

// Runs task on one of the process's binder threads. Threads are added on demand (a blocked
// nested call must not starve the next one), so calls are served even if the process never
// started the pool.
void postToThreadPool(std::function<void()> task);
// How many threads serve calls at most, which channels of the socket transport count against.
uint32_t threadPoolThreadLimit();
// Drops queued work and lets idle pool threads end; waits a bounded time for them.
void stopThreadPool();

}  // namespace binder_impl
