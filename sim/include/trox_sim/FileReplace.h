#pragma once

#include <sys/types.h>

#include <string>

namespace sim {

// Writes text to a temporary file beside path and renames it over path, so that a reader sees the
// old file or the new one, never half of one. An empty string on success, else what failed
// ("cannot write TMP: why" or "cannot replace PATH: why").
std::string replaceFile(const std::string& path, const std::string& text, mode_t mode);

}  // namespace sim
