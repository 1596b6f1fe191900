#include "ClientTestSupport.h"

#include <binder_host/service_control.h>

#include <functional>

namespace vexal::testing {
namespace {

// One member called once against a service answering `answer`: what reached the service (no
// method: nothing did), what the member returned and logged.
struct SendCase {
    std::string name;
    std::function<int()> call;
    int answer;
    int result;
    RecordedCall sent;
    std::string member;                          // named in its first line
    std::optional<LogLine> then = std::nullopt;  // its next line
    std::string failName = {};                   // named in its failure line, if not the member
    std::string entry = {};                      // its first line, if not "trox client <member>"
};

// Names the case in test listings, which would otherwise show its bytes.
void PrintTo(const SendCase& c, std::ostream* os) {
    *os << c.name;
}

RecordedCall request(TroxRequestParcel p) {
    RecordedCall call("troxResCtlRequest");
    call.parcel = std::move(p);
    return call;
}

RecordedCall withInts(const std::string& method, std::vector<int32_t> ints) {
    RecordedCall call(method);
    call.ints = std::move(ints);
    return call;
}

LogLine unmatched(const std::string& what) {
    return error(what + " ERROR: size unmatched for id and value ");
}

const Resources kTwo{{0x10, "800"}, {-5, "1"}};
const std::vector<TroxRequestData> kTwoSent{record(0x10, "800"), record(0xFFFFFFFBLL, "1")};
const Resources kBad{{5, "1"}, {0, "2"}};
const LogLine kThermalRegistered = info("subsys's callback has been registered to Trox HAL");

std::vector<SendCase> sendCases() {
    using C = troxHalclient;
    std::vector<SendCase> cases{
            {"Worker",
             [l = Resources{{3, "1,2"}, {0, std::nullopt}, {0, ""}}]() mutable {
                 return C::troxResCtlRequest(8, -1, l, 3, 7, 1234);
             },
             4242, 4242,
             request(parcel(1, {record(3, "1,2"), record(0, ""), record(0, "")}, 1234, 8, -1, 3,
                            true)),
             "troxResCtlRequest"},
            {"DurationFlagPid", [l = kTwo]() mutable { return C::troxResCtlRequest(-2, l, 1, 99); },
             31, 31, request(parcel(1, kTwoSent, 99, -1, -2, -1, true)), "troxResCtlRequest"},
            {"HandleDurationFlagPid",
             [l = kTwo]() mutable { return C::troxResCtlRequest(12, -2, l, 7, 99); }, -1, -1,
             request(parcel(1, kTwoSent, 99, 12, -2, -1, true)), "troxResCtlRequest"},
            {"EmptyListFlagZero",
             [l = Resources{}]() mutable { return C::troxResCtlRequest(-1, 10, l, -1, 0, 1); }, 0,
             0, request(parcel(1, {}, 1, -1, 10, -1, false)), "troxResCtlRequest"},
            {"BadAfterGood",
             [l = kBad]() mutable { return C::troxResCtlRequest(-1, 1, l, -1, -1, 2); }, 5, -1,
             RecordedCall(), "troxResCtlRequest", unmatched("troxResCtlRequest")},
            {"BadListWithCallback",
             [l = Resources{{5, ""}}]() mutable {
                 return C::troxResCtlRequest(-1, 1, l, -1, -1, 2,
                                             std::make_shared<ClientRecorder>());
             },
             5, -1, RecordedCall(), "troxResCtlRequest with callback",
             unmatched("trox client trox_resctl_request")},
            {"ScenarioShort", [] { return C::troxSACtlRequest(-3000, 42, 555); }, 61, 61,
             request(parcel(2, {record(42)}, 555, -1, -3000, -1, false)), "troxSACtlRequest"},
            {"ScenarioSix", [] { return C::troxSACtlRequest(9, 2000, -7, 3, 1, 88); }, 62, 62,
             request(parcel(2, {record(0xFFFFFFF9LL)}, 88, 9, 2000, 3, true)), "troxSACtlRequest"},
            {"ThermalNotify",
             [l = Resources{{1, "45"}, {0, std::nullopt}}]() mutable {
                 return C::troxThermalNotify(l, 66);
             },
             2, 0, request(parcel(7, {record(1, "45"), record(0, "")}, 66)), "troxThermalNotify"},
            {"ThermalNotifyBadList",
             [l = Resources{{3, std::nullopt}}]() mutable { return C::troxThermalNotify(l, 1); }, 2,
             -1, RecordedCall(), "troxThermalNotify",
             error("troxThermalNotify ERROR: size unmatched for id and level ")},
            {"ByPath",
             [] {
                 return C::trox_resctl_request_by_path(3, -40L, {"/a", "/b"}, {"1", ""}, 5, 1, 6);
             },
             90, 90,
             request(parcel(1, {pathRecord("/a", "1"), pathRecord("/b", "")}, 6, 3, -40, 5, true,
                            true)),
             "trox_resctl_request", std::nullopt, "trox_resctl_request_by_path"},
            {"ByPathUnequal",
             [] { return C::trox_resctl_request_by_path(-1, 1L, {"/a"}, {}, -1, 0, 1); }, 4, -1,
             RecordedCall(), "trox_resctl_request",
             error("trox_resctl_request ERROR: size unmatched for paths and value ")},
            {"ByPathWithCallbackUnequal",
             [] {
                 return C::trox_resctl_request_with_callback_by_path(
                         -1, 1L, {}, {"v"}, -1, -1, 1, std::make_shared<ClientRecorder>());
             },
             4, -1, RecordedCall(), "trox_resctl_request_with_callback",
             unmatched("trox client trox_resctl_request")},
            {"Release", [] { return C::troxResCtlRelease(-7); }, 1, 1,
             withInts("troxResCtlRelease", {-7}), "troxResCtlRelease"},
            {"UnregisterUnknown", [] { return C::troxResListeningUnRegister(12345); }, -3, -3,
             withInts("troxResListeningUnRegister", {12345}), "troxResListeningUnRegister",
             error("The callback was not registered before")},
            {"ThermalRegister",
             [] {
                 return C::troxThermalListeningRegister({77, -4}, nullptr);
             },
             720, 720, withInts("troxThermalListeningRegister", {77, -4}),
             "troxThermalListeningRegister", kThermalRegistered, "",
             "troxThermalListeningRegister"},
            {"ThermalUnregister", [] { return C::troxThermalListeningUnregister(720); }, 0, 0,
             withInts("troxThermalListeningUnregister", {720}), "troxThermalListeningUnregister",
             info("subsys's callback has been unRegistered to Trox HAL")},
            // Returns nothing: the row checks what it sent and logged.
            {"Init", [] { return C::trox_init(), -1; }, 0, -1, RecordedCall("trox_init"),
             "trox_init"},
            {"PropertySet", [] { return C::troxPropertySet("a.b", "on"); }, 0, 0,
             RecordedCall("troxPropertySet"), "troxPropertySet"},
    };
    cases.back().sent.texts = {"a.b", "on"};

    // Each asks the service for one dump or switch; any answer but 0 is a success.
    const auto diagnostic = [&](const char* name, int (*member)(), int selector) {
        cases.push_back(
                {name, member, 3, 0, request(parcel(5, {record(selector)}, 0, 0, 0, 1)), name});
    };
    diagnostic("troxDumpToDoQueue", C::troxDumpToDoQueue, 0);
    diagnostic("troxDumpRunMap", C::troxDumpRunMap, 1);
    diagnostic("troxDumpActiveResMap", C::troxDumpActiveResMap, 2);
    diagnostic("troxDumpResRequest", C::troxDumpResRequest, 3);
    diagnostic("troxDumpResInfo", C::troxDumpResInfo, 4);
    diagnostic("troxDumpSAInfo", C::troxDumpSAInfo, 5);
    diagnostic("troxDumpPidFdList", C::troxDumpPidFdList, 6);
    diagnostic("troxDumpPidfdMonitorMap", C::troxDumpPidfdMonitorMap, 7);
    diagnostic("troxDumpResRecordList", C::troxDumpResRecordList, 8);
    diagnostic("troxHistoryRequestRecordOn", C::troxHistoryRequestRecordOn, 10);
    diagnostic("troxHistoryRequestRecordOff", C::troxHistoryRequestRecordOff, 11);
    cases.push_back(cases.back());
    cases.back().name += "Refused";
    cases.back().answer = 0;
    cases.back().result = -1;
    return cases;
}

class SendTest : public ClientTest, public ::testing::WithParamInterface<SendCase> {};

TEST_P(SendTest, SendsExactlyThisAndReturnsWhatTheAnswerMeansOrMinusOneOnFailure) {
    const SendCase& c = GetParam();
    const LogLine entry = info(c.entry.empty() ? "trox client " + c.member : c.entry);
    Lines lines{entry};
    if (c.then) lines.push_back(*c.then);
    fake().setIntResult(c.sent.method, c.answer);
    EXPECT_EQ(c.call(), c.result);
    EXPECT_EQ(troxLines(), lines);
    EXPECT_EQ(requestCallbackCount(), 0u);
    ASSERT_EQ(fake().callCount(), c.sent.method.empty() ? 0u : 1u);
    if (c.sent.method.empty()) return;
    const RecordedCall call = fake().lastCall();
    EXPECT_EQ(call.method, c.sent.method);
    EXPECT_EQ(call.parcel, c.sent.parcel) << (call.parcel ? call.parcel->toString() : "");
    EXPECT_EQ(call.ints, c.sent.ints);
    EXPECT_EQ(call.texts, c.sent.texts);

    // A failure is logged under the member's name and drops the connection: a refused link on
    // the next call shows that it connects again.
    logs.clear();
    fake().failNextCalls(1);
    EXPECT_EQ(c.call(), -1);
    // A success line (info) is not written then; a check's error line before the call still is.
    if (c.then && c.then->priority == ANDROID_LOG_INFO) lines.pop_back();
    lines.push_back(failed(c.failName.empty() ? c.member : c.failName));
    binder_host::failNextLinkToDeath(STATUS_DEAD_OBJECT);
    EXPECT_EQ(c.call(), -1);
    lines.insert(lines.end(), {entry, error("Unable to link to g_trox_hal death notifications!")});
    EXPECT_EQ(troxLines(), lines);
    EXPECT_EQ(fake().callCount(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Members, SendTest, ::testing::ValuesIn(sendCases()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace vexal::testing
