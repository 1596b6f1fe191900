// troxd: the reference trox service as a daemon.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <binder_host/service_control.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "Daemon.h"
#include "trox_sim/Config.h"
#include "trox_sim/TraceJson.h"
#include "trox_sim/TroxService.h"

namespace {

constexpr char kTag[] = "troxd";

int fail(const std::string& message, int code) {
    std::fprintf(stderr, "troxd: %s\n", message.c_str());
    return code;
}

void writeTrace(sim::TroxService& service, const std::string& path) {
    if (path.empty()) {
        __android_log_print(ANDROID_LOG_WARN, kTag, "no trace written: troxd runs without --trace");
        return;
    }
    size_t events = 0;
    const std::string err = sim::writeTraceFile(*service.timeline(), path, &events);
    if (!err.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "trace not written: %s", err.c_str());
    } else {
        __android_log_print(ANDROID_LOG_INFO, kTag, "trace of %zu events written to %s", events,
                            path.c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    troxd::Options options;
    const std::string argError = troxd::parseArgs(argc, argv, &options);
    if (!argError.empty()) {
        std::fprintf(stderr, "troxd: %s\n%s", argError.c_str(), troxd::usage().c_str());
        return 2;
    }
    if (options.help) {
        std::fputs(troxd::usage().c_str(), stdout);
        return 0;
    }

    // Everything that can be wrong is checked before anything is written.
    sim::Config config;
    try {
        config = options.configPath.empty()
                         ? sim::defaultConfig()
                         : sim::loadConfigFile(options.configPath, options.maxConfigBytes);
    } catch (const sim::ConfigError& e) {
        return fail(std::string("bad configuration: ") + e.what(), 1);
    }
    std::string dir = options.dir;
    if (dir.empty()) {
        const char* env = std::getenv("BINDER_HOST_DIR");
        dir = env != nullptr && *env != '\0' ? env : troxd::defaultDir();
    }
    if (std::string err = troxd::checkSocketPath(dir, sim::kTroxInstance); !err.empty()) {
        return fail(err, 1);
    }
    if (std::string err = troxd::prepareDir(dir); !err.empty()) return fail(err, 1);
    setenv("BINDER_HOST_DIR", dir.c_str(), 1);
    // The kit reads its limits once, at its first socket: the configuration's come before.
    for (const auto& [variable, value] : config.transportLimits) {
        setenv(variable.c_str(), std::to_string(value).c_str(), 1);
    }
    if (std::string err = troxd::ensureManifest(dir, sim::kTroxInstance); !err.empty()) {
        return fail(err, 1);
    }
    // Held until exit, so a second daemon on this directory is refused and the socket stays.
    int lock = -1;
    if (std::string err = troxd::lockDir(dir, &lock); !err.empty()) return fail(err, 1);
    if (!binder_host::setHostDirectory(dir)) {
        return fail("the binder kit refuses " + dir + " (see the line above)", 1);
    }

    __android_log_set_logger(troxd::stderrLogger);
    __android_log_set_minimum_priority(options.verbose ? ANDROID_LOG_DEBUG : ANDROID_LOG_INFO);

    // Blocked before any thread starts, so only sigwait below sees them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGUSR1);  // writes the trace and goes on
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    signal(SIGPIPE, SIG_IGN);

    auto service = ndk::SharedRefBase::make<sim::TroxService>(std::move(config), nullptr, kTag);
    service->setDieHandler([] {
        __android_log_print(ANDROID_LOG_WARN, kTag, "exiting at once, as asked");
        _exit(1);
    });
    // Threads first, so the first client finds the service ready to serve.
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();
    std::thread([] { ABinderProcess_joinThreadPool(); }).detach();
    if (AServiceManager_addService(service->asBinder().get(), sim::kTroxInstance) != EX_NONE) {
        // Exits at once: the binder threads are running and must not be joined.
        std::fprintf(stderr, "troxd: cannot publish %s: no socket in %s (see the line above)\n",
                     sim::kTroxInstance, dir.c_str());
        _exit(1);
    }
    __android_log_print(
            ANDROID_LOG_INFO, kTag, "serving %s in %s (config: %s)", sim::kTroxInstance,
            dir.c_str(),
            options.configPath.empty() ? "built-in default" : options.configPath.c_str());

    int sig = 0;
    while (sigwait(&stopSignals, &sig) != 0 || sig == SIGUSR1) {
        if (sig == SIGUSR1) writeTrace(*service, options.tracePath);
        sig = 0;
    }
    __android_log_print(ANDROID_LOG_INFO, kTag, "stopping on %s",
                        sig == SIGTERM ? "SIGTERM" : "SIGINT");
    if (!options.tracePath.empty()) writeTrace(*service, options.tracePath);
    std::fflush(stdout);
    std::exit(0);
}
