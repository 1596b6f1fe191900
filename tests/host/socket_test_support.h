#pragma once

// The socket tests' fixture: a private host directory, echo services spawned in their own
// processes, and helpers to call them.
#include "../kit/RawSocket.h"
#include "../kit/SpawnProgram.h"

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder/IPCThreadState.h>
#include <binder_host/service_control.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "../../host/binder/src/socket_frames.h"
#include "binder_test_util.h"
#include "socket_test_codes.h"

extern char** environ;

namespace socket_test {

using binder_impl::kHello, binder_impl::kJoin, binder_impl::kJoined, binder_impl::kRelease,
        binder_impl::kReply, binder_impl::kTransact;
using namespace binder_test;
using namespace vexal::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

inline constexpr const char* kName = "test.vexal.IEcho/default";
inline constexpr const char* kOther = "test.vexal.IEcho/other";

struct DeathCounter {
    std::mutex mutex;
    std::condition_variable cv;
    int died = 0;
};

inline void onDied(void* cookie) {
    auto* counter = static_cast<DeathCounter*>(cookie);
    std::lock_guard<std::mutex> lock(counter->mutex);
    counter->died++;
    counter->cv.notify_all();
}

inline bool waitForDeaths(DeathCounter& counter, int count) {
    std::unique_lock<std::mutex> lock(counter.mutex);
    return counter.cv.wait_for(lock, 5s, [&] { return counter.died >= count; });
}

// Sends code with what write puts after the interface token.
inline binder_status_t call(AIBinder* binder, transaction_code_t code,
                            const std::function<void(AParcel*)>& write, ndk::ScopedAParcel* out,
                            binder_flags_t flags = 0) {
    AParcel* in = nullptr;
    if (binder_status_t s = AIBinder_prepareTransaction(binder, &in); s != STATUS_OK) return s;
    if (write) write(in);
    ndk::ScopedAParcel ignored;
    return AIBinder_transact(binder, code, &in, out != nullptr ? out->getR() : ignored.getR(),
                             flags);
}

inline binder_status_t callWithBinder(AIBinder* binder, transaction_code_t code, AIBinder* argument,
                                      ndk::ScopedAParcel* out = nullptr) {
    return call(
            binder, code, [argument](AParcel* in) { AParcel_writeStrongBinder(in, argument); },
            out);
}

inline std::vector<int32_t> readInts(const AParcel* parcel) {
    std::vector<int32_t> values;
    AParcel_readInt32Array(parcel, &values, [](void* data, int32_t length, int32_t** buffer) {
        auto* v = static_cast<std::vector<int32_t>*>(data);
        v->resize(length < 0 ? 0 : static_cast<size_t>(length));
        *buffer = v->data();
        return true;
    });
    return values;
}

inline bool waitForRecorded(EchoState& state, size_t count) {
    std::unique_lock<std::mutex> lock(state.mutex);
    return state.cv.wait_for(lock, 5s, [&] { return state.received.size() >= count; });
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
        for (pid_t pid : children_) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
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

    pid_t spawnService(const char* instance, std::vector<std::string> extra = {}) {
        std::vector<std::string> env;
        for (char** e = environ; *e != nullptr; ++e) {
            if (strncmp(*e, "BINDER_HOST_DIR=", 16) != 0) env.emplace_back(*e);
        }
        env.push_back("BINDER_HOST_DIR=" + dir_);
        std::vector<char*> envp;
        for (std::string& e : env) envp.push_back(e.data());
        envp.push_back(nullptr);
        pid_t pid = 0;
        std::vector<std::string> argv{SOCKET_ECHO_SERVICE, instance};
        argv.insert(argv.end(), extra.begin(), extra.end());
        if (vexal::testing::spawnProgram(&pid, argv, nullptr, envp.data()) != 0) {
            return -1;
        }
        children_.push_back(pid);
        return pid;
    }

    void killChild(pid_t pid, int signal = SIGKILL, int* status = nullptr) {
        kill(pid, signal);
        int ignored = 0;
        waitpid(pid, status != nullptr ? status : &ignored, 0);
        children_.erase(std::find(children_.begin(), children_.end(), pid));
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

  private:
    std::vector<pid_t> children_;
    std::vector<std::unique_ptr<EchoState>> states_;
};

}  // namespace socket_test
