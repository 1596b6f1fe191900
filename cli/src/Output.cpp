#include "Output.h"

#include <cstdio>

namespace pymctl {

void Output::say(const std::string& line) {
    if (json_) return;
    std::lock_guard<std::mutex> lock(mutex_);
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void Output::set(const std::string& key, nlohmann::json value) {
    std::lock_guard<std::mutex> lock(mutex_);
    doc_[key] = std::move(value);
}

void Output::append(const std::string& key, nlohmann::json value) {
    std::lock_guard<std::mutex> lock(mutex_);
    nlohmann::json& arr = doc_[key];
    if (!arr.is_array()) arr = nlohmann::json::array();
    arr.push_back(std::move(value));
}

nlohmann::json Output::finish(bool ok, const std::string& error) {
    std::lock_guard<std::mutex> lock(mutex_);
    doc_["ok"] = ok;
    if (!error.empty()) doc_["error"] = error;
    return doc_;
}

}  // namespace pymctl
