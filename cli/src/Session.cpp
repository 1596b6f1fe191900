#include "Session.h"

#include "Args.h"

#include <android/binder_process.h>
#include <binder_host/service_control.h>
#include <sys/stat.h>

#include <cstdlib>

namespace pymctl {

Session::~Session() {
    // The service goes first, as a service process would, so the library drops its proxies.
    if (embedded_) embedded_->kill();
    embedded_.reset();
}

void Session::start() {
    if (!options_.configPath.empty()) {
        try {
            config_ = sim::loadConfigFile(options_.configPath);
        } catch (const std::exception& e) {
            throw UsageError("cannot use configuration " + options_.configPath + ": " + e.what());
        }
    }
    if (options_.embedded) {
        if (!config_) config_ = sim::defaultConfig();
        try {
            embedded_ = sim::startEmbeddedService(*config_);
        } catch (const std::exception& e) {
            throw CommandFailed(std::string("cannot start the embedded service: ") + e.what());
        }
    } else {
        struct stat st {};
        if (stat(options_.dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
            throw UsageError("--dir " + options_.dir + " is not a directory");
        }
        setenv("BINDER_HOST_DIR", options_.dir.c_str(), 1);
        if (!binder_host::setHostDirectory(options_.dir)) {
            throw UsageError(
                    "--dir " + options_.dir +
                    " is refused (a symbolic link, owned by another user, or open to others)");
        }
    }
    // Listener callbacks from another process arrive on binder threads.
    ABinderProcess_startThreadPool();
}

std::string Session::resourceName(int32_t id) const {
    if (!config_) return {};
    for (const auto& r : config_->resources) {
        if (r.id == id) return r.name;
    }
    return {};
}

std::string Session::label(int32_t id) const {
    const std::string name = resourceName(id);
    return name.empty() ? hexId(id) : hexId(id) + " " + name;
}

}  // namespace pymctl
