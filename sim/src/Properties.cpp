#include "trox_sim/Properties.h"

#include <android/log.h>

#include <utility>

#include "RequestText.h"

namespace sim {

PropertyStore::PropertyStore(std::map<std::string, std::string> seed, size_t maxKeys,
                             std::string logTag)
    : values_(std::move(seed)), maxKeys_(maxKeys), tag_(std::move(logTag)) {}

std::string PropertyStore::get(const std::string& key) const {
    auto it = values_.find(key);
    const std::string value = it == values_.end() ? std::string() : it->second;
    __android_log_print(ANDROID_LOG_INFO, tag_.c_str(), "property %s is '%s'%s", key.c_str(),
                        value.c_str(), it == values_.end() ? " (not set)" : "");
    return value;
}

bool PropertyStore::set(const std::string& key, const std::string& value) {
    if (values_.count(key) == 0 && values_.size() >= maxKeys_) {
        __android_log_print(ANDROID_LOG_ERROR, tag_.c_str(),
                            "property %s refused: %zu properties set, the limit", key.c_str(),
                            values_.size());
        return false;
    }
    values_[key] = value;
    __android_log_print(ANDROID_LOG_INFO, tag_.c_str(), "property %s set to '%s'", key.c_str(),
                        value.c_str());
    return true;
}

std::string PropertyStore::value(const std::string& key) const {
    auto it = values_.find(key);
    return it == values_.end() ? std::string() : it->second;
}

bool propertySetAllowed(const std::string& key, const std::string& value, const char* tag) {
    // Clients copy values into 256-byte buffers, so longer ones are refused here.
    if (!key.empty() && value.size() <= 255) return true;
    __android_log_print(ANDROID_LOG_ERROR, tag, "property set refused: %s",
                        key.empty() ? "empty key" : "value too long");
    return false;
}

bool isFaultProperty(const std::string& key) {
    return key == kFaultFailNextProperty || key == kFaultDelayProperty || key == kFaultDieProperty;
}

std::optional<int64_t> faultPropertyValue(const std::string& key, const std::string& value,
                                          const char* tag) {
    int64_t n = 0;
    if (parseValue(value, &n) && n >= 0) return n;
    __android_log_print(ANDROID_LOG_ERROR, tag, "property %s needs a number, not '%s'", key.c_str(),
                        value.c_str());
    return std::nullopt;
}

}  // namespace sim
