#include "PymTestSupport.h"

#include <cutils/trace.h>

#include <climits>
#include <mutex>

// One trace call as libcutils would have received it: a begin with its text, or an end ("").
using TraceEvent = std::pair<bool, std::string>;

static std::mutex gTraceMutex;
static std::vector<TraceEvent> gTraceEvents;

// The executable's definitions take precedence over libcutils' for the library's calls. The
// host libcutils answers the tag query with "not ready", so the query is replaced as well and
// reads the tag mask that the tests set.
extern "C" uint64_t atrace_get_enabled_tags() {
    return atrace_enabled_tags;
}

extern "C" void atrace_begin_body(const char* name) {
    std::lock_guard<std::mutex> lock(gTraceMutex);
    gTraceEvents.push_back({true, name});
}

extern "C" void atrace_end_body() {
    std::lock_guard<std::mutex> lock(gTraceMutex);
    gTraceEvents.push_back({false, ""});
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

TEST_F(PymTest, ZeroLengthSectionWhenTheTagIsOnAndNothingWhenOff) {
    std::vector<std::pair<std::function<void()>, std::string>> calls = {
            {[] { PymEventAcquire(5, "com.a", "id1", 3000, list(r(1, "2"))); },
             "PymEventAcquire  cmd_id:5 pkg:com.a identity:id1 duration:3000"},
            {[] { PymEventAcquire(-5, "", "", -1, {}); },
             "PymEventAcquire  cmd_id:-5 pkg:none identity:none duration:-1"},
            {[] { PymPlatformResAcquire({}, 0, "id4", "pk", 4); },
             "PymEventAcquire  cmd_id:-3 pkg:pk identity:id4 duration:4"},
            {[] { PymRelease(-77); }, "PymRelease: -77"}};
    // Long texts are cut in the 1024-byte trace buffer only (1022 characters and the terminator):
    // these reach 1022 and 1023 characters for each name. Extreme numbers lengthen the text more
    // than the log line, which liblog limits itself.
    for (size_t length : {944, 945, 950, 951}) {
        const std::string pkg(length, 'p');
        const std::string rest =
                "  cmd_id:-2147483648 pkg:" + pkg + " identity:i duration:-2147483648";
        calls.push_back({[pkg] { PymEventAcquire(INT_MIN, pkg, "i", INT_MIN, {}); },
                         "PymEventAcquire" + rest});
        calls.push_back({[pkg] { PymEventAcquireOneWay(INT_MIN, pkg, "i", INT_MIN, {}); },
                         "PymEventAcquireOneWay" + rest});
    }
    for (const auto& [call, text] : calls) {
        TraceCapture trace(true);
        call();
        EXPECT_EQ(trace.events(), marker(text.substr(0, 1022)));
    }
    {
        TraceCapture trace(false);
        for (const auto& call : calls) call.first();
        EXPECT_EQ(trace.events(), std::vector<TraceEvent>{});
        EXPECT_TRUE(fake().waitForCalls(2 * calls.size())) << "the calls themselves still ran";
    }
}

}  // namespace
}  // namespace vexal::testing
