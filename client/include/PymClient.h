#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace PymClient {

// One caller-side resource setting. A well-formed entry pairs a non-zero id with a value, or a
// zero id with none.
struct Resource {
    int32_t id = 0;
    std::optional<std::string> value;
};

}  // namespace PymClient
