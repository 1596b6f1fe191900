#pragma once

// The socket tests' fixture: a private host directory, echo services run in their own processes,
// and helpers to call them.
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "../../host/binder/src/socket_frames.h"
#include "../kit/ChildProcess.h"
#include "../kit/RawSocket.h"
#include "binder_test_util.h"
#include "socket_test_codes.h"

namespace socket_test {

using namespace binder_test;
using namespace vexal::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

inline constexpr const char* kName = "test.vexal.IEcho/default";
inline constexpr const char* kOther = "test.vexal.IEcho/other";

inline binder_status_t callWithBinder(AIBinder* binder, transaction_code_t code, AIBinder* argument,
                                      ndk::ScopedAParcel* out = nullptr) {
    return call(
            binder, code, [argument](AParcel* in) { AParcel_writeStrongBinder(in, argument); },
            out);
}

inline bool waitForRecorded(EchoState& state, size_t count) {
    std::unique_lock<std::mutex> lock(state.mutex);
    return state.cv.wait_for(lock, 5s, [&] { return state.received.size() >= count; });
}

inline pid_t lastCaller(EchoState& state) {
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.lastCallingPid;
}

class SocketTest : public testing::Test {
  protected:
    void SetUp() override {
        char base[] = "/tmp/binder_socket_testXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(base));
        base_ = base;
        dir_ = base_ + "/dir";
        ASSERT_TRUE(binder_host::setHostDirectory(dir_));
        std::ofstream(dir_ + "/manifest") << kName << "\n" << kOther << "\n";
    }

    void TearDown() override {
        children_.clear();
        binder_host::resetServiceManager();
        binder_host::setHostDirectory("");
        std::filesystem::remove_all(base_);
        // Calls from the service may still be finishing on binder threads.
        for (auto& state : states_) {
            std::unique_lock<std::mutex> lock(state->mutex);
            EXPECT_TRUE(state->cv.wait_for(lock, 5s, [&] { return state->destroyed.load(); }));
        }
    }

    // Where the service published as kName listens.
    std::string socketFile() const { return dir_ + "/test.vexal.IEcho%2fdefault.sock"; }

    ChildProcess& spawnService(const char* instance, std::vector<std::string> extra = {}) {
        std::vector<std::string> argv{SOCKET_ECHO_SERVICE, instance};
        argv.insert(argv.end(), extra.begin(), extra.end());
        return *children_.emplace_back(std::make_unique<ChildProcess>(
                argv, ChildProcess::Options{{"BINDER_HOST_DIR=" + dir_}, {}}));
    }

    // Starts the service and returns a proxy to it with the echo class associated.
    ndk::SpAIBinder startEcho(const char* instance = kName, std::vector<std::string> extra = {}) {
        spawnService(instance, std::move(extra));
        return waitForEcho(instance);
    }

    static ndk::SpAIBinder waitForEcho(const char* instance) {
        ndk::SpAIBinder binder(AServiceManager_waitForService(instance));
        if (binder.get() != nullptr) AIBinder_associateClass(binder.get(), echoClass());
        return binder;
    }

    // Lives until after TearDown, so late callbacks from the service still find it.
    EchoState& makeState() { return *states_.emplace_back(std::make_unique<EchoState>()); }

    std::string base_;
    std::string dir_;
    std::vector<std::unique_ptr<ChildProcess>> children_;

  private:
    std::vector<std::unique_ptr<EchoState>> states_;
};

}  // namespace socket_test
