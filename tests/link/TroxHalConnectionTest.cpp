#include "LinkTestSupport.h"
#include "RecordingCallback.h"

#include <android/binder_manager.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <string>
#include <thread>

namespace vexal::testing {
namespace {

using namespace std::chrono_literals;
using link::CallResult;

// Whether a reader still gets a shared_timed_mutex while a writer waits for it, which the standard
// leaves open: glibc's rwlock under libstdc++ lets it in, libc++ holds it back behind the writer.
#if defined(_LIBCPP_VERSION)
constexpr bool kReadersPassAWaitingWriter = false;
#else
constexpr bool kReadersPassAWaitingWriter = true;
#endif

// Whether thread `tid` of this process sleeps on a futex inside `lock`. Under an emulator the
// kernel reports the host's call, whose number and address mean nothing here; a futex sleep must
// do there.
bool asleepOn(long tid, const void* lock, size_t size) {
    const std::string task = "/proc/self/task/" + std::to_string(tid);
    std::ifstream syscallFile(task + "/syscall");
    long number = -1;
    std::string arg0;
    if (!(syscallFile >> number >> arg0)) return false;
    if (number != SYS_futex) {
        std::ifstream wchan(task + "/wchan");
        std::string where;
        return std::getline(wchan, where) && where.find("futex") != std::string::npos;
    }
    const uintptr_t address = std::stoull(arg0, nullptr, 16);
    const auto begin = reinterpret_cast<uintptr_t>(lock);
    return address >= begin && address < begin + size;
}

// Runs troxInit on a thread of its own, its id known.
struct InitThread {
    InitThread()
        : thread([this] {
              tid.set_value(syscall(SYS_gettid));
              result.set_value(troxInit());
          }) {}
    ~InitThread() { thread.join(); }
    std::promise<long> tid;
    std::promise<CallResult> result;
    std::thread thread;
};

TEST_F(LinkTest, BothConnectQuietlyAndKeepTheirConnectionUntilOneDeathReport) {
    FakeTroxService service;
    ASSERT_EQ(troxInit(), CallResult::kOk);
    const auto* first = link::troxHalConnection().hal.get();
    ASSERT_EQ(troxInit(), CallResult::kOk);
    EXPECT_EQ(link::troxHalConnection().hal.get(), first);
    ASSERT_EQ(pym_get_trox_hal_and_link_to_death(), 0);
    EXPECT_EQ(pymInitCall(), CallResult::kOk);
    // The client-class connection keeps the same binder proxy alive across the Event API's
    // reconnect, so a recipient left linked to it would report the death a second time.
    link::resetConnection(pym::pymHalConnection());
    ASSERT_EQ(pym_get_trox_hal_and_link_to_death(), 0);
    EXPECT_EQ(service.fake().callCount(), 3u);
    EXPECT_TRUE(logs.lines().empty()) << ::testing::PrintToString(logs.lines());

    service.restart();
    EXPECT_FALSE(troxConnected());
    EXPECT_FALSE(pymConnected());
    EXPECT_EQ(logs.linesWithTag(kTroxTag),
              (Lines{{ANDROID_LOG_ERROR, kTroxTag, "Trox HAL Service died"}}));
    EXPECT_EQ(logs.linesWithTag(kPymTag),
              (Lines{{ANDROID_LOG_ERROR, kPymTag, "Trox HAL Service died"}}));

    EXPECT_EQ(troxInit(), CallResult::kOk);
    ASSERT_TRUE(pym::connectPymHal());
    EXPECT_EQ(pymInitCall(), CallResult::kOk);
    EXPECT_EQ(service.fake().callCount(), 2u) << "the calls must reach the restarted service";
}

TEST_F(LinkTest, TroxDeclaredButNotRunningBlocksUntilTheServiceIsAdded) {
    FakeTroxService service(FakeTroxService::Start::kDeclaredOnly);
    auto call = std::async(std::launch::async, troxInit);
    ASSERT_EQ(call.wait_for(200ms), std::future_status::timeout);

    service.start();
    ASSERT_EQ(call.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(call.get(), CallResult::kOk);
    EXPECT_EQ(service.fake().callCount(), 1u);
    EXPECT_TRUE(logs.linesWithTag(kTroxTag).empty());
}

TEST_F(LinkTest, TwoThreadsFindingTroxEmptyConnectOnceAndTheOtherLogsDeclared) {
    FakeTroxService service;
    auto& mutex = link::troxHalConnection().mutex;
    std::future<CallResult> first, second;
    {
        // A reader holding the lock lets both callers pass the empty check and queue for the
        // exclusive hold, which is the window the re-check exists for, where the lock admits
        // readers past a waiting writer.
        std::shared_lock<std::shared_timed_mutex> hold(mutex);
        InitThread a, b;
        first = a.result.get_future();
        second = b.result.get_future();
        const long tids[] = {a.tid.get_future().get(), b.tid.get_future().get()};
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        auto queued = [&] {
            for (long tid : tids) {
                if (!asleepOn(tid, &mutex, sizeof(mutex))) return false;
            }
            return true;
        };
        while (!queued() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(1ms);
        }
        EXPECT_TRUE(queued()) << "the callers never queued for the lock";
        hold.unlock();
    }
    ASSERT_EQ(first.get(), CallResult::kOk);
    ASSERT_EQ(second.get(), CallResult::kOk);

    const Lines lostRace{
            {ANDROID_LOG_ERROR, kTroxTag, "Trox is not declared, AServiceManager_isDeclared:1"}};
    const auto lines = logs.linesWithTag(kTroxTag);
    if (kReadersPassAWaitingWriter) {
        EXPECT_EQ(lines, lostRace);
    } else {
        // The first caller's queued exclusive hold usually keeps the second from the empty check.
        EXPECT_TRUE(lines.empty() || lines == lostRace) << ::testing::PrintToString(lines);
    }
    EXPECT_EQ(service.fake().callCount(), 2u);
}

// Something of another interface answering under the name cannot be used as ITrox.
TEST_F(LinkTest, TroxServiceOfAnotherInterfaceIsNotFound) {
    FakeTroxService service(FakeTroxService::Start::kDeclaredOnly);
    auto impostor = ndk::SharedRefBase::make<RecordingCallback>();
    ASSERT_EQ(AServiceManager_addService(impostor->asBinder().get(),
                                         "vendor.vexal.hardware.trox.ITrox/default"),
              EX_NONE);
    EXPECT_EQ(troxInit(), CallResult::kNoService);
    EXPECT_EQ(logs.linesWithTag(kTroxTag),
              (Lines{{ANDROID_LOG_ERROR, kTroxTag, "Trox HAL Service not found"}}));
}

}  // namespace
}  // namespace vexal::testing
