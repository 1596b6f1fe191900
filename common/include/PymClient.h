#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace PymClient {

// One caller-side resource setting. A well-formed entry pairs a non-zero id with a value, or a
// zero id with none. A plain value type: no locks, nothing shared.
struct Resource {
    // The resource's opcode; it travels zero-extended to 64 bits, and answers are matched by
    // their low 32 bits.
    int32_t id = 0;
    // The setting as text. Requests send an absent value as an empty one; the calls and
    // callbacks that read values fill it in, each saying what an answer without a value gives.
    std::optional<std::string> value;
};

}  // namespace PymClient
