#include "PymTestSupport.h"

#include <unistd.h>

#include <climits>
#include <mutex>

namespace vexal::testing {
namespace {

struct AcquireCase {
    const char* name;
    int32_t cmdid;
    std::string pkg;
    std::string identity;
    int32_t duration;
    std::vector<Resource> resources;
    // What the service must decode; one-way adds pid and handle on top.
    TroxRequestParcel parcel;
    std::string loggedArguments;  // the part of the entry line after the function's name
    std::vector<std::string> loggedResources;  // one-way only, after its own prefix
};

TroxRequestParcel eventParcel(int32_t kind, std::vector<TroxRequestData> data, int64_t duration,
                              std::string pkg, std::string identity) {
    TroxRequestParcel parcel = parcelOfKind(kind, std::move(data));
    parcel.duration = duration;
    parcel.pkg = std::move(pkg);
    parcel.identity = std::move(identity);
    return parcel;
}

std::vector<AcquireCase> acquireCases() {
    return {
            {"EventWithResources",
             5,
             "com.vexal.cam",
             "preview",
             3000,
             {{0x01010100, "1500000"}, {0x01020200, std::nullopt}, {0x01030300, ""}},
             eventParcel(8,
                         {entry(5), entry(0x01010100, "1500000"), entry(0x01020200, ""),
                          entry(0x01030300, "")},
                         3000, "com.vexal.cam", "preview"),
             ", cmdid:5, pkg:com.vexal.cam, identity:preview",
             {"res_Id:16843008 ,res_Value:1500000, ", "res_Id:16908800 ,res_Value:, ",
              "res_Id:16974592 ,res_Value:, "}},
            {"EventZero",
             0,
             "p",
             "i",
             1,
             {},
             eventParcel(8, {entry(0)}, 1, "p", "i"),
             ", cmdid:0, pkg:p, identity:i",
             {}},
            {"EventMinusOneIsAnEvent",
             -1,
             "p",
             "i",
             1,
             {},
             eventParcel(8, {entry(0xFFFFFFFF)}, 1, "p", "i"),
             ", cmdid:-1, pkg:p, identity:i",
             {}},
            {"NegativeIdsAreZeroExtended",
             -5,
             "p",
             "i",
             10,
             {{-5, "v"}},
             eventParcel(8, {entry(0xFFFFFFFB), entry(0xFFFFFFFB, "v")}, 10, "p", "i"),
             ", cmdid:-5, pkg:p, identity:i",
             {"res_Id:-5 ,res_Value:v, "}},
            {"ResourceAcquisitionSendsOnlyResources",
             -2,
             "p",
             "i",
             7,
             {},
             eventParcel(1, {}, 7, "p", "i"),
             ", cmdid:-2, pkg:p, identity:i",
             {}},
            {"PlatformAcquisitionSendsOnlyResources",
             -3,
             "p",
             "i",
             7,
             {{42, "x"}},
             eventParcel(12, {entry(42, "x")}, 7, "p", "i"),
             ", cmdid:-3, pkg:p, identity:i",
             {"res_Id:42 ,res_Value:x, "}},
            {"EmptyTextsLoggedAsNoneButSentEmpty",
             9,
             "",
             "",
             0,
             {},
             eventParcel(8, {entry(9)}, 0, "", ""),
             ", cmdid:9, pkg:none, identity:none",
             {}},
            {"DurationIsSignExtended",
             9,
             "p",
             "i",
             INT32_MIN,
             {},
             eventParcel(8, {entry(9)}, -2147483648LL, "p", "i"),
             ", cmdid:9, pkg:p, identity:i",
             {}},
    };
}

class AcquireTest : public PymTest, public ::testing::WithParamInterface<AcquireCase> {};

TEST_P(AcquireTest, SendsTheParcelAndReturnsTheServiceHandle) {
    const AcquireCase& c = GetParam();
    fake().setIntResult("troxResCtlRequest", 4711);

    EXPECT_EQ(PymEventAcquire(c.cmdid, c.pkg, c.identity, c.duration, c.resources), 4711);
    expectOnlyCall(fake(), {"troxResCtlRequest", c.parcel});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo("PymEventAcquire" + c.loggedArguments)}));
}

TEST_P(AcquireTest, OneWayAddsPidAndItsOwnHandle) {
    const AcquireCase& c = GetParam();

    const int32_t handle =
            PymEventAcquireOneWay(c.cmdid, c.pkg, c.identity, c.duration, c.resources);
    EXPECT_GE(handle, 0);
    ASSERT_TRUE(fake().waitForCalls(1));
    TroxRequestParcel expected = c.parcel;
    // Outside a binder transaction the calling pid is this process.
    expected.pid = getpid();
    expected.handle = handle;
    expectOnlyCall(fake(), {"troxResCtlRequestOneWay", expected});

    std::vector<LogLine> lines{logInfo("PymEventAcquireOneWay" + c.loggedArguments)};
    for (const auto& resource : c.loggedResources) {
        lines.push_back(logDebug("PymEventAcquireOneWay " + resource));
    }
    EXPECT_EQ(pymLines(), lines);
}

INSTANTIATE_TEST_SUITE_P(Cases, AcquireTest, ::testing::ValuesIn(acquireCases()),
                         [](const auto& p) { return std::string(p.param.name); });

struct ServiceHandleCase {
    const char* name;
    int32_t written;
};

class ServiceHandleTest : public PymTest,
                          public ::testing::WithParamInterface<ServiceHandleCase> {};

TEST_P(ServiceHandleTest, SuccessReturnsWhatTheServiceWrote) {
    fake().setIntResult("troxResCtlRequest", GetParam().written);
    EXPECT_EQ(PymEventAcquire(1, "p", "i", 1, {}), GetParam().written);
    EXPECT_EQ(fake().callCount(), 1u);
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logInfo("PymEventAcquire, cmdid:1, pkg:p, identity:i")}));
}

INSTANTIATE_TEST_SUITE_P(Handles, ServiceHandleTest,
                         ::testing::Values(ServiceHandleCase{"Zero", 0},
                                           ServiceHandleCase{"Negative", -9},
                                           ServiceHandleCase{"Largest", INT32_MAX}),
                         [](const auto& p) { return std::string(p.param.name); });

TEST_F(PymTest, FailedAcquireLogsThePresetHandleAndReturnsMinusOne) {
    fake().setIntResult("troxResCtlRequest", 12);
    fake().failNextCalls(1);
    EXPECT_EQ(PymEventAcquire(3, "p", "i", 1, {{7, "v"}}), -1);
    expectOnlyCall(fake(),
                   {"troxResCtlRequest", eventParcel(8, {entry(3), entry(7, "v")}, 1, "p", "i")});
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{logInfo("PymEventAcquire, cmdid:3, pkg:p, identity:i"),
                                    failedLine("PymEventAcquire"),
                                    logError("troxResCtlRequest error:-1")}));
}

TEST_F(PymTest, ResAcquireSendsKindOneWithoutPackage) {
    fake().setIntResult("troxResCtlRequest", 21);
    const std::vector<Resource> resources{{0x0101, "3"}, {0x0202, std::nullopt}};
    EXPECT_EQ(PymResAcquire(resources, 99, "ident", 250), 21);
    expectOnlyCall(fake(),
                   {"troxResCtlRequest",
                    eventParcel(1, {entry(0x0101, "3"), entry(0x0202, "")}, 250, "", "ident")});
    EXPECT_EQ(pymLines(), (std::vector<LogLine>{
                                  logInfo("PymResAcquire"),
                                  logInfo("PymEventAcquire, cmdid:-2, pkg:none, identity:ident")}));
}

TEST_F(PymTest, PlatformResAcquireTakesIdentityBeforePackage) {
    fake().setIntResult("troxResCtlRequest", 22);
    EXPECT_EQ(PymPlatformResAcquire({{0x0303, "9"}}, 99, "ident", "com.pkg", -40), 22);
    expectOnlyCall(fake(), {"troxResCtlRequest",
                            eventParcel(12, {entry(0x0303, "9")}, -40, "com.pkg", "ident")});
    EXPECT_EQ(pymLines(),
              (std::vector<LogLine>{
                      logInfo("PymPlatformResAcquire"),
                      logInfo("PymEventAcquire, cmdid:-3, pkg:com.pkg, identity:ident")}));
}

TEST_F(PymTest, ReleaseSendsTheHandleUnchecked) {
    // The service's answer is not part of the result.
    fake().setIntResult("troxResCtlRelease", 5);
    for (int32_t handle : {1234, -4}) {
        fake().clearCalls();
        logs.clear();
        PymRelease(handle);
        expectOnlyCall(fake(), {"troxResCtlRelease", std::nullopt, {handle}});
        EXPECT_EQ(pymLines(),
                  (std::vector<LogLine>{logInfo("PymRelease, handle:" + std::to_string(handle))}));
    }
}

// A logger of the test's own that kills the service when the first resource line of a one-way
// request is written: after connecting and before the call, the one moment a death can empty the
// connection under the function's feet.
class KillOnResourceLine {
  public:
    explicit KillOnResourceLine(FakeTroxService& service) {
        {
            std::lock_guard<std::mutex> lock(sMutex);
            sService = &service;
            sKilled = false;
            sLines.clear();
        }
        // Outside the lock: liblog holds its own lock while it calls the logger.
        __android_log_set_logger(&KillOnResourceLine::log);
    }
    ~KillOnResourceLine() {
        std::lock_guard<std::mutex> lock(sMutex);
        sService = nullptr;
    }

    static std::vector<LogLine> lines() {
        std::lock_guard<std::mutex> lock(sMutex);
        return sLines;
    }

  private:
    static void log(const __android_logger_data* data, const char* message) {
        bool kill = false;
        {
            std::lock_guard<std::mutex> lock(sMutex);
            sLines.push_back({data->priority, data->tag ? data->tag : "", message});
            kill = !sKilled && sService != nullptr &&
                   std::string(message).rfind("PymEventAcquireOneWay res_Id:", 0) == 0;
            sKilled = sKilled || kill;
        }
        if (kill) sService->kill();
    }

    static inline std::mutex sMutex;
    static inline std::vector<LogLine> sLines;
    static inline FakeTroxService* sService = nullptr;
    static inline bool sKilled = false;
};

TEST_F(PymTest, OneWayReturnsMinusOneWhenTheConnectionIsGoneBeforeTheCall) {
    KillOnResourceLine hook(service);
    EXPECT_EQ(PymEventAcquireOneWay(2, "p", "i", 1, {{8, "v"}}), -1);
    EXPECT_EQ(fake().callCount(), 0u);
    std::vector<LogLine> pymOnly;
    for (const auto& line : hook.lines()) {
        if (line.tag == kPymTag) pymOnly.push_back(line);
    }
    EXPECT_EQ(pymOnly,
              (std::vector<LogLine>{logInfo("PymEventAcquireOneWay, cmdid:2, pkg:p, identity:i"),
                                    logDebug("PymEventAcquireOneWay res_Id:8 ,res_Value:v, "),
                                    logError("Trox HAL Service died")}));
}

}  // namespace
}  // namespace vexal::testing
