#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace game {

// Loads with the device boosted: asks the resource-control service for its game-loading action
// before the work and releases it after, also when the work throws.
class GameLoader {
  public:
    explicit GameLoader(std::string package, int32_t timeoutMs = 10000)
        : package_(std::move(package)), timeoutMs_(timeoutMs) {}

    // Runs work, boosted when the service granted it; says whether it did.
    bool load(const std::function<void()>& work);

  private:
    std::string package_;
    int32_t timeoutMs_;
};

}  // namespace game
