#define LOG_TAG "[PYM_CLIENT]"
#include "RandomSource.h"
#include "pym.h"

#include <fcntl.h>
#include <log/log.h>
#include <unistd.h>

namespace vexal::pym {
namespace {

int openDevice(const char* path, int flags) {
    return ::open(path, flags);
}

}  // namespace

RandomSource& randomSource() {
    static RandomSource source{openDevice, ::read, ::close};
    return source;
}

}  // namespace vexal::pym

int32_t pymGetRandomHandle() {
    const auto& source = vexal::pym::randomSource();
    int fd = source.open("/dev/urandom", O_RDONLY);
    if (fd < 0) {
        ALOGE("pymClient open /dev/urandom failed: fd(%d) \n", fd);
        return -1;
    }
    uint32_t bits = 0;
    ssize_t length = source.read(fd, &bits, sizeof(bits));
    if (length != static_cast<ssize_t>(sizeof(bits))) {
        ALOGE("pymClient read /dev/urandom failed,len(%d) \n", static_cast<int>(length));
        source.close(fd);
        return -1;
    }
    source.close(fd);
    // The top bit is cleared so that a handle can never be mistaken for the -1 error value.
    return static_cast<int32_t>(bits & 0x7FFFFFFFu);
}
