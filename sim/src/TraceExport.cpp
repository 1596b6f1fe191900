#include "trox_sim/TraceExport.h"

#include <android/log.h>

#include <cctype>
#include <cstring>

#include "trox_sim/TraceJson.h"

namespace sim {
namespace {

// A whole decimal number, nothing around it.
bool number(const std::string& text, uint64_t* out) {
    if (text.empty() || text.size() > 18) return false;
    uint64_t n = 0;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
        n = n * 10 + static_cast<uint64_t>(c - '0');
    }
    *out = n;
    return true;
}

}  // namespace

TraceExport::TraceExport(std::shared_ptr<Timeline> timeline, std::string logTag)
    : timeline_(std::move(timeline)), tag_(std::move(logTag)) {}

bool TraceExport::answer(const std::string& key, std::string* value) {
    const size_t prefix = std::strlen(kTraceProperty);
    if (key.compare(0, prefix, kTraceProperty) != 0) return false;
    if (key.size() == prefix) {
        std::string text = traceJson(timeline_->snapshot());
        std::lock_guard<std::mutex> lock(mutex_);
        text_ = std::move(text);
        chunks_ = (text_.size() + kTraceChunkChars - 1) / kTraceChunkChars;
        ++id_;
        *value = std::to_string(id_) + " " + std::to_string(text_.size()) + " " +
                 std::to_string(chunks_);
        __android_log_print(ANDROID_LOG_INFO, tag_.c_str(),
                            "trace export %llu: %zu bytes, %zu chunks",
                            static_cast<unsigned long long>(id_), text_.size(), chunks_);
        return true;
    }
    if (key[prefix] != '.') return false;
    const std::string rest = key.substr(prefix + 1);
    const size_t dot = rest.find('.');
    uint64_t id = 0;
    uint64_t chunk = 0;
    value->clear();
    if (dot == std::string::npos || !number(rest.substr(0, dot), &id) ||
        !number(rest.substr(dot + 1), &chunk)) {
        return true;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (id != id_ || chunk >= chunks_) return true;
    *value = text_.substr(chunk * kTraceChunkChars, kTraceChunkChars);
    if (chunk + 1 == chunks_) {
        // Read to the end: the memory goes back until the next export.
        text_.clear();
        text_.shrink_to_fit();
        chunks_ = 0;
    }
    return true;
}

}  // namespace sim
