// The random device behind one-way handles, reached through the library's swappable calls.
#include "PymTestSupport.h"
#include "RandomSource.h"

#include <binder_host/service_control.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace vexal::testing {
namespace {

// What the scripted device does and what it was asked.
struct ScriptedDevice {
    int openResult = 40;
    ssize_t readLength = 4;
    uint8_t bytes[4] = {};
    std::vector<std::string> log;
};

ScriptedDevice gDevice;

int scriptedOpen(const char* path, int flags) {
    gDevice.log.push_back("open " + std::string(path) + " " + std::to_string(flags));
    return gDevice.openResult;
}

ssize_t scriptedRead(int fd, void* buffer, size_t count) {
    gDevice.log.push_back("read " + std::to_string(fd) + " " + std::to_string(count));
    if (gDevice.readLength > 0) {
        std::memcpy(buffer, gDevice.bytes, static_cast<size_t>(gDevice.readLength));
    }
    return gDevice.readLength;
}

int scriptedClose(int fd) {
    gDevice.log.push_back("close " + std::to_string(fd));
    return 0;
}

class RandomHandleTest : public PymTest {
  protected:
    void SetUp() override {
        gDevice = ScriptedDevice{};
        mReal = pym::randomSource();
        pym::randomSource() = {scriptedOpen, scriptedRead, scriptedClose};
    }
    void TearDown() override { pym::randomSource() = mReal; }

    static void setBytes(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
        gDevice.bytes[0] = b0;
        gDevice.bytes[1] = b1;
        gDevice.bytes[2] = b2;
        gDevice.bytes[3] = b3;
    }

  private:
    pym::RandomSource mReal{};
};

const std::string kOpen = "open /dev/urandom " + std::to_string(O_RDONLY);

struct BytesCase {
    const char* name;
    uint8_t bytes[4];
    int32_t handle;
};

class HandleBitsTest : public RandomHandleTest, public ::testing::WithParamInterface<BytesCase> {};

TEST_P(HandleBitsTest, TopBitIsCleared) {
    const auto& b = GetParam().bytes;
    setBytes(b[0], b[1], b[2], b[3]);
    EXPECT_EQ(pymGetRandomHandle(), GetParam().handle);
    EXPECT_EQ(gDevice.log, (std::vector<std::string>{kOpen, "read 40 4", "close 40"}));
    EXPECT_EQ(pymLines(), std::vector<LogLine>{});
}

// Bytes in memory order; the handle is the host-order number with bit 31 cleared.
INSTANTIATE_TEST_SUITE_P(
        Bytes, HandleBitsTest,
        ::testing::Values(BytesCase{"AllOnes", {0xFF, 0xFF, 0xFF, 0xFF}, 2147483647},
                          BytesCase{"OnlyTopBit", {0x00, 0x00, 0x00, 0x80}, 0},
                          BytesCase{"Zero", {0x00, 0x00, 0x00, 0x00}, 0},
                          BytesCase{"Mixed", {0x78, 0x56, 0x34, 0x92}, 0x12345678}),
        [](const auto& p) { return std::string(p.param.name); });

TEST_F(RandomHandleTest, OpenFailureLogsTheDescriptor) {
    gDevice.openResult = -13;
    EXPECT_EQ(pymGetRandomHandle(), -1);
    EXPECT_EQ(gDevice.log, std::vector<std::string>{kOpen});
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logError("pymClient open /dev/urandom failed: fd(-13) \n")}));
}

class ShortReadTest : public RandomHandleTest, public ::testing::WithParamInterface<ssize_t> {};

TEST_P(ShortReadTest, LogsTheLengthAndClosesTheDevice) {
    gDevice.readLength = GetParam();
    setBytes(1, 2, 3, 4);
    EXPECT_EQ(pymGetRandomHandle(), -1);
    EXPECT_EQ(gDevice.log, (std::vector<std::string>{kOpen, "read 40 4", "close 40"}));
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logError("pymClient read /dev/urandom failed,len(" +
                                                         std::to_string(GetParam()) + ") \n")}));
}

INSTANTIATE_TEST_SUITE_P(Lengths, ShortReadTest, ::testing::Values(0, 3));

TEST_F(RandomHandleTest, ReadErrorLogsMinusOne) {
    gDevice.readLength = -1;
    EXPECT_EQ(pymGetRandomHandle(), -1);
    EXPECT_EQ(gDevice.log, (std::vector<std::string>{kOpen, "read 40 4", "close 40"}));
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logError("pymClient read /dev/urandom failed,len(-1) \n")}));
}

TEST_F(RandomHandleTest, OneWaySendsAndReturnsTheDrawnHandle) {
    setBytes(0xEF, 0xBE, 0x00, 0x80);
    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {{3, "v"}}), 0xBEEF);
    ASSERT_TRUE(fake().waitForCalls(1));
    TroxRequestParcel expected = parcelOfKind(8, {entry(11), entry(3, "v")});
    expected.duration = 5;
    expected.pkg = "p";
    expected.identity = "i";
    expected.pid = getpid();
    expected.handle = 0xBEEF;
    expectOnlyCall(fake(), {"troxResCtlRequestOneWay", expected});
}

TEST_F(RandomHandleTest, OneWayWithAFailedDrawSendsAndReturnsMinusOne) {
    gDevice.openResult = -2;
    EXPECT_EQ(PymEventAcquireOneWay(11, "", "i", 5, {{3, std::nullopt}}), -1);
    ASSERT_TRUE(fake().waitForCalls(1));
    TroxRequestParcel expected = parcelOfKind(8, {entry(11), entry(3, "")});
    expected.duration = 5;
    expected.pkg = "";
    expected.identity = "i";
    expected.pid = getpid();
    expected.handle = -1;
    expectOnlyCall(fake(), {"troxResCtlRequestOneWay", expected});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{
                                  logInfo("PymEventAcquireOneWay, cmdid:11, pkg:none, identity:i"),
                                  logError("pymClient open /dev/urandom failed: fd(-2) \n"),
                                  logDebug("PymEventAcquireOneWay res_Id:3 ,res_Value:, ")}));
}

TEST_F(RandomHandleTest, FailedOneWayStillReturnsTheDrawnHandleAndReconnectsNextTime) {
    setBytes(0x2A, 0x00, 0x00, 0x00);
    binder_host::failNextTransactions(STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {{3, "v"}}), 42);
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logInfo("PymEventAcquireOneWay, cmdid:11, pkg:p, identity:i"),
                                    logDebug("PymEventAcquireOneWay res_Id:3 ,res_Value:v, "),
                                    failedLine("PymEventAcquireOneWay"),
                                    logError("troxResCtlRequest error:42")}));

    logs.clear();
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {}), -1);
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logInfo("PymEventAcquireOneWay, cmdid:11, pkg:p, identity:i"),
                                    logError("Unable to link to g_pym_hal death notifications!"),
                                    logError("pym_get_trox_hal_and_link_to_death error:-1")}));

    EXPECT_EQ(PymEventAcquireOneWay(11, "p", "i", 5, {}), 42);
    ASSERT_TRUE(fake().waitForCalls(1));
    EXPECT_EQ(fake().callCount(), 1u) << "only the last request reached the service";
}

TEST_F(RandomHandleTest, TheDeviceIsReadOnEveryDraw) {
    setBytes(1, 0, 0, 0);
    EXPECT_EQ(pymGetRandomHandle(), 1);
    setBytes(2, 0, 0, 0);
    EXPECT_EQ(pymGetRandomHandle(), 2);
    EXPECT_EQ(gDevice.log, (std::vector<std::string>{kOpen, "read 40 4", "close 40", kOpen,
                                                     "read 40 4", "close 40"}));
}

}  // namespace
}  // namespace vexal::testing
