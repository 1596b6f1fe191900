#include "host_dir.h"

#include <binder_host/service_control.h>
#include <errno.h>
#include <log/log.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace binder_impl {
namespace {

struct HostDirectory {
    std::mutex mutex;
    bool resolved = false;
    bool chosen = false;  // set through binder_host::setHostDirectory
    std::string path;
    bool usable = false;
};

HostDirectory& hostDirectory() {
    static auto* instance = new HostDirectory();
    return *instance;
}

// Sockets in a directory others can write to could be replaced by theirs.
bool checkDirectory(const std::string& path) {
    if (mkdir(path.c_str(), 0700) == 0) {
        // The umask may have taken bits away, never added any.
        if (chmod(path.c_str(), 0700) != 0) {
            logError("cannot set mode 0700 on %s: %s", path.c_str(), strerror(errno));
            return false;
        }
    } else if (errno != EEXIST) {
        logError("cannot create binder host directory %s: %s", path.c_str(), strerror(errno));
        return false;
    }
    // A trailing slash would make lstat follow a symbolic link.
    std::string name = path;
    while (name.size() > 1 && name.back() == '/') name.pop_back();
    struct stat st = {};
    if (lstat(name.c_str(), &st) != 0) {
        logError("cannot stat binder host directory %s: %s", path.c_str(), strerror(errno));
        return false;
    }
    if (S_ISLNK(st.st_mode)) {
        logError("binder host directory %s refused: a symbolic link", path.c_str());
        return false;
    }
    if (!S_ISDIR(st.st_mode)) {
        logError("binder host directory %s refused: not a directory", path.c_str());
        return false;
    }
    if (st.st_uid != geteuid()) {
        logError("binder host directory %s refused: owned by uid %u, not %u", path.c_str(),
                 static_cast<unsigned>(st.st_uid), static_cast<unsigned>(geteuid()));
        return false;
    }
    if ((st.st_mode & 077) != 0) {
        logError("binder host directory %s refused: mode %03o gives access to group or others",
                 path.c_str(), static_cast<unsigned>(st.st_mode & 0777));
        return false;
    }
    return true;
}

void resolveLocked(HostDirectory& h) {
    if (h.resolved) return;
    h.resolved = true;
    const char* env = std::getenv("BINDER_HOST_DIR");
    h.path = env != nullptr ? env : "";
    h.usable = !h.path.empty() && checkDirectory(h.path);
}

}  // namespace

void logError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    char message[512];
    vsnprintf(message, sizeof(message), format, args);
    va_end(args);
    __android_log_write(ANDROID_LOG_ERROR, "binder_host", message);
}

std::string socketDirectory() {
    HostDirectory& h = hostDirectory();
    std::lock_guard<std::mutex> lock(h.mutex);
    resolveLocked(h);
    return h.usable ? h.path : std::string();
}

std::string manifestDirectory() {
    HostDirectory& h = hostDirectory();
    {
        std::lock_guard<std::mutex> lock(h.mutex);
        if (h.chosen) return h.path;
    }
    const char* env = std::getenv("BINDER_HOST_DIR");
    return env != nullptr ? env : "";
}

std::string socketPath(const std::string& dir, const std::string& instance) {
    static const char kHex[] = "0123456789abcdef";
    std::string name;
    for (unsigned char c : instance) {
        if (isalnum(c) || c == '.' || c == '-' || c == '_') {
            name += static_cast<char>(c);
        } else {
            name += '%';
            name += kHex[c >> 4];
            name += kHex[c & 15];
        }
    }
    // The suffix keeps instance names apart from the manifest.
    std::string path = dir + "/" + name + ".sock";
    if (path.size() >= sizeof(sockaddr_un::sun_path)) {
        logError("socket path for %s is too long: %s", instance.c_str(), path.c_str());
        return std::string();
    }
    return path;
}

}  // namespace binder_impl

namespace binder_host {

bool setHostDirectory(const std::string& dir) {
    binder_impl::HostDirectory& h = binder_impl::hostDirectory();
    std::lock_guard<std::mutex> lock(h.mutex);
    h.resolved = true;
    h.chosen = true;
    h.path = dir;
    h.usable = !dir.empty() && binder_impl::checkDirectory(dir);
    return h.usable;
}

std::string hostDirectory() {
    return binder_impl::socketDirectory();
}

}  // namespace binder_host
