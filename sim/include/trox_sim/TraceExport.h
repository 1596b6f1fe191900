#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "trox_sim/Timeline.h"

namespace sim {

// Reserved property keys through which a client in another process reads the timeline with the
// interface as it is: troxPropertyGet(kTraceProperty) takes a snapshot and answers
// "EXPORT BYTES CHUNKS"; troxPropertyGet("vendor.trox.trace.EXPORT.N") answers chunk N (from 0)
// of that export, and "" once the export is gone (a newer one replaced it).
inline constexpr char kTraceProperty[] = "vendor.trox.trace";
// Characters per chunk: a trace of the default ring's size takes some hundred calls.
inline constexpr size_t kTraceChunkChars = 128 * 1024;

// The service's side: one export at a time, dropped once its last chunk was read.
class TraceExport {
  public:
    TraceExport(std::shared_ptr<Timeline> timeline, std::string logTag);
    // False unless key is a trace key; then *value holds the answer.
    bool answer(const std::string& key, std::string* value);

  private:
    const std::shared_ptr<Timeline> timeline_;
    const std::string tag_;
    std::mutex mutex_;
    uint64_t id_ = 0;
    std::string text_;
    size_t chunks_ = 0;
};

}  // namespace sim
