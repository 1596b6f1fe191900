#include "trox_sim/FileReplace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sim {

std::string replaceFile(const std::string& path, const std::string& text, mode_t mode) {
    const std::string tmp = path + ".tmp." + std::to_string(getpid());
    const int fd = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (fd < 0) return "cannot write " + tmp + ": " + std::strerror(errno);
    const char* p = text.data();
    size_t left = text.size();
    while (left > 0) {
        const ssize_t n = write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            const std::string why = std::strerror(errno);
            close(fd);
            unlink(tmp.c_str());
            return "cannot write " + tmp + ": " + why;
        }
        p += n;
        left -= static_cast<size_t>(n);
    }
    if (fsync(fd) != 0 || close(fd) != 0) {
        const std::string why = std::strerror(errno);
        unlink(tmp.c_str());
        return "cannot write " + tmp + ": " + why;
    }
    if (rename(tmp.c_str(), path.c_str()) != 0) {
        const std::string why = std::strerror(errno);
        unlink(tmp.c_str());
        return "cannot replace " + path + ": " + why;
    }
    return {};
}

}  // namespace sim
