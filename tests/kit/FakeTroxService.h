#pragma once

#include "FakeTrox.h"

#include <memory>
#include <string>

namespace vexal::testing {

inline constexpr char kTroxInstance[] = "vendor.vexal.hardware.trox.ITrox/default";

// A FakeTrox published under the service's instance name, as a device service would publish
// itself. Starts from an empty service manager and leaves one behind. The callbacks it sends
// and the death notices of kill() reach the process only on its binder threads: start a thread
// pool first, as a device process must (the kit's test main, vexal_test_main, does).
class FakeTroxService {
  public:
    enum class Start { kRunning, kDeclaredOnly, kNotDeclared };

    explicit FakeTroxService(Start start = Start::kRunning);
    ~FakeTroxService();
    FakeTroxService(const FakeTroxService&) = delete;
    FakeTroxService& operator=(const FakeTroxService&) = delete;

    FakeTrox& fake() const { return *mFake; }
    const std::shared_ptr<FakeTrox>& fakePtr() const { return mFake; }

    // Publishes the current fake (declaring the name if needed).
    void start();
    // The service process "dies": death notifications fire, the name is gone until start().
    void kill();
    // kill() then start() with a fresh FakeTrox, as a restarted service would come back.
    void restart();

  private:
    std::shared_ptr<FakeTrox> mFake;
};

}  // namespace vexal::testing
