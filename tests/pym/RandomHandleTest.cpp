// The random device behind one-way handles, reached through the library's swappable calls, and
// the one-way acquisitions that carry its handles.
#include "PymTestSupport.h"
#include "RandomSource.h"

#include <binder_host/service_control.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace vexal::testing {
namespace {

// What the scripted device does and what it was asked.
struct ScriptedDevice {
    int openResult = 40;
    ssize_t readLength = 4;
    std::array<uint8_t, 4> bytes = {};
};

ScriptedDevice gDevice;
std::vector<std::string> gAsked;

int scriptedOpen(const char* path, int flags) {
    gAsked.push_back("open " + std::string(path) + " " + std::to_string(flags));
    return gDevice.openResult;
}

ssize_t scriptedRead(int fd, void* buffer, size_t count) {
    gAsked.push_back("read " + std::to_string(fd) + " " + std::to_string(count));
    if (gDevice.readLength > 0) {
        std::memcpy(buffer, gDevice.bytes.data(), static_cast<size_t>(gDevice.readLength));
    }
    return gDevice.readLength;
}

int scriptedClose(int fd) {
    gAsked.push_back("close " + std::to_string(fd));
    return 0;
}

class RandomHandleTest : public PymTest {
  protected:
    void SetUp() override {
        gDevice = ScriptedDevice{};
        gAsked.clear();
        mReal = pym::randomSource();
        pym::randomSource() = {scriptedOpen, scriptedRead, scriptedClose};
    }
    void TearDown() override { pym::randomSource() = mReal; }

  private:
    pym::RandomSource mReal{};
};

const std::string kOpen = "open /dev/urandom " + std::to_string(O_RDONLY);
const std::vector<std::string> kFullDraw{kOpen, "read 40 4", "close 40"};

LogLine device(const std::string& call, const std::string& detail) {
    return logError("pymClient " + call + " /dev/urandom failed" + detail + " \n");
}

// Bytes in memory order; the handle is the host-order number with bit 31 cleared.
TEST_F(RandomHandleTest, EveryDrawReadsTheDeviceAndClearsTheTopBit) {
    struct Case {
        ScriptedDevice device;
        int32_t handle;
        std::vector<std::string> asked;
        Lines lines;
    };
    for (const Case& c :
         std::vector<Case>{{{40, 4, {0xFF, 0xFF, 0xFF, 0xFF}}, 2147483647, kFullDraw, {}},
                           {{40, 4, {0x78, 0x56, 0x34, 0x92}}, 0x12345678, kFullDraw, {}},
                           {{-13, 4, {}}, -1, {kOpen}, {device("open", ": fd(-13)")}},
                           {{40, 3, {1, 2, 3, 4}}, -1, kFullDraw, {device("read", ",len(3)")}}}) {
        gDevice = c.device;
        gAsked.clear();
        logs.clear();
        EXPECT_EQ(pymGetRandomHandle(), c.handle);
        EXPECT_EQ(gAsked, c.asked);
        EXPECT_EQ(pymLines(), c.lines);
    }
}

TEST_F(RandomHandleTest, OneWayAddsPidAndTheDrawnHandleAndLogsEachResource) {
    gDevice.bytes = {0xEF, 0xBE, 0x00, 0x80};
    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, list(r(3, "v"), r(-5, std::nullopt))), 0xBEEF);
    ASSERT_TRUE(fake().waitForCalls(1));
    TroxRequestParcel parcel =
            parcelOf(8, {entry(11), entry(3, "v"), entry(0xFFFFFFFB, "")}, 5, "p", "i");
    // Outside a binder transaction the calling pid is this process.
    parcel.pid = getpid();
    parcel.handle = 0xBEEF;
    expectOnlyCall(fake(), "troxResCtlRequestOneWay", parcel);
    const std::string res = "PymEventAcquireOneWay res_Id:";
    EXPECT_EQ(pymLines(),
              (Lines{logInfo("PymEventAcquireOneWay, cmdid:11, pkg:p, identity:i"),
                     logDebug(res + "3 ,res_Value:v, "), logDebug(res + "-5 ,res_Value:, ")}));
}

TEST_F(RandomHandleTest, FailedOneWayStillReturnsTheDrawnHandleAndReconnectsNextTime) {
    gDevice.bytes = {0x2A, 0x00, 0x00, 0x00};
    binder_host::failNextTransactions(STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {r(3, "v")}), 42);
    const LogLine entered = logInfo("PymEventAcquireOneWay, cmdid:11, pkg:p, identity:i");
    EXPECT_EQ(pymLines(),
              (Lines{entered, logDebug("PymEventAcquireOneWay res_Id:3 ,res_Value:v, "),
                     failedLine("PymEventAcquireOneWay"), logError("troxResCtlRequest error:42")}));

    logs.clear();
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {}), -1);
    EXPECT_EQ(pymLines(),
              Lines{entered} +
                      connectFailedLines("Unable to link to g_pym_hal death notifications!"));

    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {}), 42);
    ASSERT_TRUE(fake().waitForCalls(1));
    EXPECT_EQ(fake().callCount(), 1u) << "only the last request reached the service";
}

}  // namespace
}  // namespace vexal::testing
