#pragma once

#include <cstdint>
#include <functional>

namespace binder_impl {

// Runs task on one of the process's binder threads (the pool or a joined thread).
void postToThreadPool(std::function<void()> task);
uint32_t threadPoolMaxThreads();

}  // namespace binder_impl
