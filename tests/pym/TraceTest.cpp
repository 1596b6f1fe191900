#include "PymTestSupport.h"

#include <cutils/trace.h>

#include <unistd.h>

#include <climits>
#include <functional>
#include <mutex>

namespace vexal::testing {
namespace {

// One trace call as libcutils would have received it: a begin with its text, or an end.
struct TraceEvent {
    bool begin;
    std::string text;
    bool operator==(const TraceEvent& other) const {
        return begin == other.begin && text == other.text;
    }
};

void PrintTo(const TraceEvent& event, std::ostream* os) {
    *os << (event.begin ? "begin \"" + event.text + "\"" : std::string("end"));
}

std::mutex gTraceMutex;
std::vector<TraceEvent> gTraceEvents;

}  // namespace
}  // namespace vexal::testing

// The executable's definitions take precedence over libcutils' for the library's calls. The
// host libcutils answers the tag query with "not ready", so the query is replaced as well and
// reads the tag mask that the tests set.
extern "C" uint64_t atrace_get_enabled_tags() {
    return atrace_enabled_tags;
}

extern "C" void atrace_begin_body(const char* name) {
    std::lock_guard<std::mutex> lock(vexal::testing::gTraceMutex);
    vexal::testing::gTraceEvents.push_back({true, name});
}

extern "C" void atrace_end_body() {
    std::lock_guard<std::mutex> lock(vexal::testing::gTraceMutex);
    vexal::testing::gTraceEvents.push_back({false, ""});
}

namespace vexal::testing {
namespace {

// Records trace calls while it lives, with the always-on tag switched as asked.
class TraceCapture {
  public:
    explicit TraceCapture(bool enabled) {
        atrace_init();
        atrace_enabled_tags = enabled ? ATRACE_TAG_ALWAYS : 0;
        std::lock_guard<std::mutex> lock(gTraceMutex);
        gTraceEvents.clear();
    }
    ~TraceCapture() { atrace_enabled_tags = 0; }

    std::vector<TraceEvent> events() const {
        std::lock_guard<std::mutex> lock(gTraceMutex);
        return gTraceEvents;
    }
};

std::vector<TraceEvent> marker(std::string text) {
    return {{true, std::move(text)}, {false, ""}};
}

struct MarkerCase {
    const char* name;
    std::function<void()> call;
    std::string text;
};

class TraceMarkerTest : public PymTest, public ::testing::WithParamInterface<MarkerCase> {};

TEST_P(TraceMarkerTest, ZeroLengthSectionWhenTheTagIsOn) {
    TraceCapture trace(true);
    GetParam().call();
    EXPECT_EQ(trace.events(), marker(GetParam().text));
}

TEST_P(TraceMarkerTest, NothingWhenTheTagIsOff) {
    TraceCapture trace(false);
    GetParam().call();
    EXPECT_EQ(trace.events(), std::vector<TraceEvent>{});
    EXPECT_FALSE(pymLines().empty()) << "the call itself still ran";
}

INSTANTIATE_TEST_SUITE_P(
        Calls, TraceMarkerTest,
        ::testing::Values(
                MarkerCase{"Acquire",
                           [] {
                               PymEventAcquire(5, "com.a", "id1", 3000, {{1, "2"}});
                           },
                           "PymEventAcquire  cmd_id:5 pkg:com.a identity:id1 duration:3000"},
                MarkerCase{"AcquireEmptyTexts", [] { PymEventAcquire(-5, "", "", -1, {}); },
                           "PymEventAcquire  cmd_id:-5 pkg:none identity:none duration:-1"},
                MarkerCase{"OneWay", [] { PymEventAcquireOneWay(6, "com.b", "id2", 10, {}); },
                           "PymEventAcquireOneWay  cmd_id:6 pkg:com.b identity:id2 duration:10"},
                MarkerCase{"ResAcquire", [] { PymResAcquire({}, 0, "id3", 4); },
                           "PymEventAcquire  cmd_id:-2 pkg:none identity:id3 duration:4"},
                MarkerCase{"PlatformResAcquire",
                           [] { PymPlatformResAcquire({}, 0, "id4", "pk", 4); },
                           "PymEventAcquire  cmd_id:-3 pkg:pk identity:id4 duration:4"},
                MarkerCase{"Release", [] { PymRelease(-77); }, "PymRelease: -77"}),
        [](const auto& p) { return std::string(p.param.name); });

TEST(TraceWithoutServiceTest, MarkerIsWrittenBeforeConnecting) {
    LogCapture logs;
    FakeTroxService service(FakeTroxService::Start::kNotDeclared);
    TraceCapture trace(true);
    EXPECT_EQ(PymEventAcquire(1, "p", "i", 2, {}), -1);
    PymRelease(3);
    EXPECT_EQ(trace.events(),
              (std::vector<TraceEvent>{
                      {true, "PymEventAcquire  cmd_id:1 pkg:p identity:i duration:2"},
                      {false, ""},
                      {true, "PymRelease: 3"},
                      {false, ""}}));
}

// Long texts are cut in the 1024-byte trace buffer only (1022 characters and the terminator);
// the log line and the parcel carry them whole.
struct LongTextCase {
    const char* name;
    bool oneWay;
    size_t summaryLength;
    bool cut;
};

class LongTextTest : public PymTest, public ::testing::WithParamInterface<LongTextCase> {};

TEST_P(LongTextTest, OnlyTheTraceTextIsCut) {
    const LongTextCase& c = GetParam();
    // Extreme numbers lengthen the summary more than the log line, which liblog limits itself.
    const int32_t cmdid = INT32_MIN;
    const int32_t duration = INT32_MIN;
    const std::string identity = "ident";
    const std::string frame = " cmd_id:-2147483648 pkg: identity:ident duration:-2147483648";
    const std::string pkg(c.summaryLength - frame.size(), 'p');
    const std::string summary =
            " cmd_id:-2147483648 pkg:" + pkg + " identity:ident duration:-2147483648";
    ASSERT_EQ(summary.size(), c.summaryLength);
    const std::string name = c.oneWay ? "PymEventAcquireOneWay" : "PymEventAcquire";
    const std::string full = name + " " + summary;

    TraceCapture trace(true);
    const int32_t result = c.oneWay ? PymEventAcquireOneWay(cmdid, pkg, identity, duration, {})
                                    : PymEventAcquire(cmdid, pkg, identity, duration, {});

    const auto events = trace.events();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].text.size(), c.cut ? 1022u : full.size());
    EXPECT_EQ(events, marker(full.substr(0, 1022)));

    EXPECT_EQ(pymLines(), (std::vector<LogLine>{logInfo(name + ", cmdid:-2147483648, pkg:" + pkg +
                                                        ", identity:ident")}));
    ASSERT_TRUE(fake().waitForCalls(1));
    TroxRequestParcel expected = parcelOfKind(8, {entry(0x80000000)});
    expected.duration = INT32_MIN;
    expected.pkg = pkg;
    expected.identity = identity;
    if (c.oneWay) {
        expected.pid = getpid();
        expected.handle = result;
    }
    expectOnlyCall(fake(), {c.oneWay ? "troxResCtlRequestOneWay" : "troxResCtlRequest", expected});
}

INSTANTIATE_TEST_SUITE_P(Lengths, LongTextTest,
                         ::testing::Values(LongTextCase{"AcquireFits", false, 1006, false},
                                           LongTextCase{"AcquireCut", false, 1007, true},
                                           LongTextCase{"AcquireCutMore", false, 1016, true},
                                           LongTextCase{"OneWayFits", true, 1000, false},
                                           LongTextCase{"OneWayCut", true, 1001, true},
                                           LongTextCase{"OneWayCutMore", true, 1009, true}),
                         [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace vexal::testing
