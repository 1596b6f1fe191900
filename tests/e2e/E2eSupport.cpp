#include "E2eSupport.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <binder_host/service_control.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <thread>

#include "ChildProcess.h"
#include "halclient.h"
#include "pym.h"

namespace vexal::e2e {

bool pollUntil(const std::function<bool()>& cond, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!cond()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

std::string describe(const std::optional<ResourceList>& call) {
    if (!call) return "no call";
    std::string text;
    for (const auto& r : *call) text += std::to_string(r.id) + "=" + r.value.value_or("-") + " ";
    return text;
}

Values readPym(const std::vector<int32_t>& ids) {
    std::vector<PymClient::Resource> request;
    for (int32_t id : ids) request.push_back({id, std::nullopt});
    Values values;
    const bool answered = PymMutiResStateRequest(request) > 0;
    for (const auto& r : request) values.push_back(answered && r.value ? *r.value : "<none>");
    return values;
}

Values readClient(const std::vector<int32_t>& ids) {
    ResourceList request, result;
    for (int32_t id : ids) request.push_back({id, std::string()});
    std::map<int32_t, std::string> byId;
    if (troxHalclient::troxResStateRequest(request, getpid(), result) > 0) {
        for (const auto& r : result) byId.emplace(r.id, r.value.value_or(""));
    }
    Values values;
    for (int32_t id : ids) values.push_back(byId.count(id) ? byId[id] : "<none>");
    return values;
}

size_t countLines(const testing::LogCapture& capture, const std::string& tag,
                  const std::string& text) {
    size_t n = 0;
    for (const auto& line : capture.linesWithTag(tag))
        n += line.text.find(text) != std::string::npos;
    return n;
}

bool waitForLines(const testing::LogCapture& capture, const std::string& tag,
                  const std::string& text, size_t count, std::chrono::milliseconds timeout) {
    return pollUntil([&] { return countLines(capture, tag, text) >= count; }, timeout);
}

void E2eTest::SetUp() {
    char base[] = "/tmp/vexal-e2e-XXXXXX";  // mkdtemp makes it 0700
    ASSERT_NE(mkdtemp(base), nullptr);
    dir_ = base;
    // One directory per test: the kit looks services up in the one set last.
    ASSERT_TRUE(binder_host::setHostDirectory(dir_));
    capture_ = std::make_unique<testing::LogCapture>();
    ASSERT_TRUE(startTroxd());
    ASSERT_TRUE(connectBothDoors());
    capture_->clear();
}

void E2eTest::TearDown() {
    if (troxd_) {
        capture_->clear();
        killTroxd();
        // The library's death notices belong to this test, not to the next one.
        waitForLines(*capture_, kPymTag, kDied, 1, 2s);
        waitForLines(*capture_, kClientTag, kDied, 1, 2s);
        binder_host::drainNotifications();
    }
    capture_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
}

::testing::AssertionResult E2eTest::startTroxd() {
    troxd_ = std::make_unique<testing::ChildProcess>(
            std::vector<std::string>{TROXD_PATH, "--dir", dir_});
    const bool serving = pollUntil(
            [] {
                ndk::SpAIBinder binder(
                        AServiceManager_checkService("vendor.vexal.hardware.trox.ITrox/default"));
                return binder.get() != nullptr && AIBinder_ping(binder.get()) == STATUS_OK;
            },
            10s);
    if (!serving) {
        return ::testing::AssertionFailure() << "troxd does not answer:\n" << troxd_->output();
    }
    return ::testing::AssertionSuccess();
}

void E2eTest::killTroxd() {
    if (!troxd_) return;
    if (HasFailure()) std::cerr << "troxd log:\n" << troxd_->output();
    troxd_.reset();  // SIGKILL and reap
}

::testing::AssertionResult E2eTest::connectBothDoors() {  // The Event API first: its death
                                                          // recipient is then the first one told.
    if (!pollUntil([] { return pymInit() == 0; }, 5s)) {
        return ::testing::AssertionFailure() << "pymInit() keeps failing";
    }
    if (!pollUntil([] { return troxHalclient::troxPropertySet("e2e.probe", "1") == 0; }, 5s)) {
        return ::testing::AssertionFailure() << "the client class cannot reach troxd";
    }
    return ::testing::AssertionSuccess();
}

}  // namespace vexal::e2e
