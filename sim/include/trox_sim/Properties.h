#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace sim {

// Properties that steer fault injection, so that a client in another process can use it.
inline constexpr char kFaultFailNextProperty[] = "sim.fault.fail_next";
inline constexpr char kFaultDelayProperty[] = "sim.fault.delay_ms";
inline constexpr char kFaultDieProperty[] = "sim.fault.die";

// Properties clients read and set, seeded from the configuration and bounded in number. Not
// thread-safe: the service serialises access.
class PropertyStore {
  public:
    PropertyStore(std::map<std::string, std::string> seed, size_t maxKeys, std::string logTag);

    // The value of key, empty when it is not set; logs what was read.
    std::string get(const std::string& key) const;
    // Stores value under key; a new key is refused (logged) once maxKeys keys are set.
    bool set(const std::string& key, const std::string& value);
    // The value of key, empty when it is not set, without logging.
    std::string value(const std::string& key) const;

  private:
    std::map<std::string, std::string> values_;
    const size_t maxKeys_;
    const std::string tag_;
};

// The key and value checks every set passes first; logs the refusal under tag.
bool propertySetAllowed(const std::string& key, const std::string& value, const char* tag);

bool isFaultProperty(const std::string& key);
// The non-negative number a fault-injection property needs; nullopt (logged under tag) for
// anything else.
std::optional<int64_t> faultPropertyValue(const std::string& key, const std::string& value,
                                          const char* tag);

}  // namespace sim
