#pragma once

#include <sys/types.h>

namespace vexal::pym {

// Where handles for one-way requests come from. Tests swap the calls to reach the failure
// paths of the random device; nothing else changes them.
struct RandomSource {
    int (*open)(const char* path, int flags);
    ssize_t (*read)(int fd, void* buffer, size_t count);
    int (*close)(int fd);
};

RandomSource& randomSource();

}  // namespace vexal::pym
