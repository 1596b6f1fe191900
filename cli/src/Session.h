#pragma once

// Which service the doors talk to: the reference service started in this process, or a
// running troxd reached through a host directory.

#include <trox_sim/Config.h>
#include <trox_sim/Embedded.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace pymctl {

struct SessionOptions {
    bool embedded = true;
    std::string dir;
    std::string configPath;  // empty: the shipped default
};

class Session {
  public:
    explicit Session(SessionOptions options) : options_(std::move(options)) {}
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Must run before the first binder call of the process.
    void start();
    bool embedded() const { return options_.embedded; }
    // Null unless embedded and started.
    sim::EmbeddedService* service() const { return embedded_.get(); }
    // Configured name of a resource, when the configuration is known here; else empty.
    std::string resourceName(int32_t id) const;
    // "0x01010020 cpu.cluster1.min_freq", or the id alone when its name is unknown here.
    std::string label(int32_t id) const;
    // The log tag of the embedded service.
    static const char* serviceLogTag() { return "troxd"; }

  private:
    SessionOptions options_;
    std::optional<sim::Config> config_;
    std::unique_ptr<sim::EmbeddedService> embedded_;
};

}  // namespace pymctl
