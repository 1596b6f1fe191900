#pragma once

// What a subcommand reports: readable lines for people, one JSON document for scripts.

#include <nlohmann/json.hpp>

#include <mutex>
#include <string>

namespace pymctl {

class Output {
  public:
    explicit Output(bool json) : json_(json) {}

    bool json() const { return json_; }
    // A readable line, printed at once (dropped in JSON mode, where set() carries the facts).
    void say(const std::string& line);
    // A field of the JSON document.
    void set(const std::string& key, nlohmann::json value);
    // Appends to an array field; callable from binder threads.
    void append(const std::string& key, nlohmann::json value);
    // The JSON document with "ok" and, on failure, "error".
    nlohmann::json finish(bool ok, const std::string& error = {});

  private:
    const bool json_;
    std::mutex mutex_;
    nlohmann::json doc_ = nlohmann::json::object();
};

}  // namespace pymctl
