#pragma once

#include "FakeTroxService.h"
#include "LogCapture.h"
#include "PymHalConnection.h"
#include "link/TroxHalConnection.h"

#include <gtest/gtest.h>

namespace vexal::testing {

using Lines = std::vector<LogLine>;

inline constexpr char kTroxTag[] = "TROXFramework-lib-vendor";
inline constexpr char kPymTag[] = "[PYM_CLIENT]";

inline link::CallResult troxInit() {
    return link::callTroxHal("trox_init", [](link::ITrox& hal) { return hal.trox_init(); });
}

inline link::CallResult pymInitCall() {
    return pym::callPymHal("trox_init", [](link::ITrox& hal) { return hal.trox_init(); });
}

inline bool troxConnected() {
    std::shared_lock<std::shared_timed_mutex> hold(link::troxHalConnection().mutex);
    return link::troxHalConnection().hal != nullptr;
}

inline bool pymConnected() {
    std::shared_lock<std::shared_timed_mutex> hold(pym::pymHalConnection().mutex);
    return pym::pymHalConnection().hal != nullptr;
}

// Both connections start and end each test empty, as after library load.
class LinkTest : public ::testing::Test {
  protected:
    void SetUp() override { dropConnections(); }
    void TearDown() override { dropConnections(); }
    static void dropConnections() {
        link::resetConnection(link::troxHalConnection());
        link::resetConnection(pym::pymHalConnection());
    }

    LogCapture logs;
};

}  // namespace vexal::testing
