// What each Event API call sends the service, gives back and logs, for the service's answers.
#include "PymTestSupport.h"

#include <climits>

namespace vexal::testing {
namespace {

struct CallCase {
    const char* name;
    Data reply;  // the service's answer to a state request
    std::string result;
    RecordedCall sent;  // no method: nothing may reach the service
    Lines lines;
    std::function<std::string()> call;  // the result and the outputs
};

// Names the case in test listings, which would otherwise show its bytes.
void PrintTo(const CallCase& c, std::ostream* os) {
    *os << c.name;
}

CallCase row(const char* name, Data reply, std::string result, RecordedCall sent, Lines lines,
             std::function<std::string()> call) {
    return {name,           std::move(reply), std::move(result), std::move(sent), std::move(lines),
            std::move(call)};
}

RecordedCall sent(std::string method, std::optional<TroxRequestParcel> parcel,
                  std::vector<int32_t> ints = {}, Data data = {}) {
    RecordedCall call(std::move(method));
    call.parcel = std::move(parcel);
    call.ints = std::move(ints);
    call.data = std::move(data);
    return call;
}

const int32_t kOp = kPowerConsistencyOpcode;

std::vector<CallCase> callCases() {
    const std::string ctl = "troxResCtlRequest", query = "troxResStateRequest";
    const Lines consis{logInfo("pym client PymGetPowerConsis")};
    const Lines historyIn{logInfo("pym client PymGetHistory"),
                          logInfo("pym client hal PymGetHistory")};
    const Lines pm{logInfo("pym client PymGetPMStatus"), logInfo("pym client hal PymGetPMStatus")};
    const Lines multiIn{logInfo("PymMutiResStateRequest enter")};
    const Lines singleIn = Lines{logInfo("PymResStateRequest enter")} + multiIn;
    const Lines feature{logInfo("PymGetFeatureStatus enter")};
    const Lines fetch{logInfo("Pym_fetch_dataset enter")};
    const Lines notify{logInfo("PymNotify enter")};
    const Lines noMatch{logInfo("not match any opcode in pymcore")};
    const auto state = [&](int32_t kind, Data data = {}) {
        return sent(query, parcelOf(kind, std::move(data)));
    };
    const auto value = [](const std::string& op, const std::string& v) {
        return Lines{logDebug("get resource value, opcode " + op + ", value " + v)};
    };
    const auto acquired = [](const std::string& arguments) {
        return logInfo("PymEventAcquire, " + arguments);
    };
    const auto notified = [&](Data data) { return sent(ctl, parcelOf(10, std::move(data))); };
    const auto consisQuery = sent(query, powerConsistencyParcel());
    const auto pmQuery = state(13, {entry(0xFFFFFFFB)});
    const auto featureQuery = state(17, {entry(0x30)});
    const Data camera{entry(5), entry(0x01010100, "1500000"), entry(0x01020200, ""),
                      entry(0x01030300, "")};
    return {
            row("EventWithResources", {}, "-31",
                sent(ctl, parcelOf(8, camera, 3000, "com.vexal.cam", "preview")),
                {acquired("cmdid:5, pkg:com.vexal.cam, identity:preview")},
                [] {
                    return str(
                            PymEventAcquire(5, "com.vexal.cam", "preview", 3000,
                                            list(r(0x01010100, "1500000"),
                                                 r(0x01020200, std::nullopt), r(0x01030300, ""))));
                }),
            row("NegativeIdsZeroExtended", {}, "-31",
                sent(ctl, parcelOf(8, {entry(0xFFFFFFFB), entry(0xFFFFFFFB, "v")}, 10, "p", "i")),
                {acquired("cmdid:-5, pkg:p, identity:i")},
                [] { return str(PymEventAcquire(-5, "p", "i", 10, list(r(-5, "v")))); }),
            row("EmptyTextsLoggedAsNoneSentEmptyDurationSignExtended", {}, "-31",
                sent(ctl, parcelOf(8, {entry(9)}, -2147483648LL, "", "")),
                {acquired("cmdid:9, pkg:none, identity:none")},
                [] { return str(PymEventAcquire(9, "", "", INT_MIN, {})); }),
            row("ResAcquireSendsOnlyResources", {}, "-31",
                sent(ctl, parcelOf(1, {entry(0x0101, "3"), entry(0x0202, "")}, 250, "", "id")),
                {logInfo("PymResAcquire"), acquired("cmdid:-2, pkg:none, identity:id")},
                [] {
                    return str(PymResAcquire(list(r(0x0101, "3"), r(0x0202, std::nullopt)), 99,
                                             "id", 250));
                }),
            row("PlatformResAcquireTakesIdentityBeforePackage", {}, "-31",
                sent(ctl, parcelOf(12, {entry(0x0303, "9")}, -40, "com.pkg", "id")),
                {logInfo("PymPlatformResAcquire"), acquired("cmdid:-3, pkg:com.pkg, identity:id")},
                [] {
                    return str(
                            PymPlatformResAcquire(list(r(0x0303, "9")), 99, "id", "com.pkg", -40));
                }),
            row("ReleaseSendsTheHandle", {}, "", sent("troxResCtlRelease", std::nullopt, {-4}),
                {logInfo("PymRelease, handle:-4")}, [] { return PymRelease(-4), ""; }),
            row("Init", {}, "0", sent("trox_init", std::nullopt), {logError("pymInit enter")},
                [] { return str(pymInit()); }),
            // One id entry per value, and the values' texts off the wire.
            row("NotifyTwoValues", {}, "-31", notified(Data(2, entry(0x0000000400000003))), notify,
                [] { return str(PymNotify(3, 4, list(5, 7))); }),
            row("NotifyLowWordNotSignExtended", {}, "-31", notified({entry(0x00000000FFFFFFFF)}),
                notify, [] { return str(PymNotify(-1, 0, {})); }),
            row("NotifyHighWordNegative", {}, "-31",
                notified(Data(2, entry(static_cast<int64_t>(0xFFFFFFFF00000001u)))), notify,
                [] { return str(PymNotify(1, -1, list(9, 9))); }),
            row("RelatedSysInfoLogsNothing", {}, "-31",
                sent("setRelatedSysInfo", std::nullopt, {-6, INT_MAX}), {},
                [] { return str(setRelatedSysInfo(-6, INT_MAX)); }),
            row("RuleCtlResourcesInOrder", {}, "-31",
                sent("troxRuleCtl", std::nullopt, {9, 1},
                     {entry(0x010112F0, "enable 0"), entry(0x01011910, "0")}),
                {logInfo("pymRuleCtl, ruleId:9, status:1")},
                [] {
                    return str(
                            pymRuleCtl(9, 1, list(r(0x010112F0, "enable 0"), r(0x01011910, "0"))));
                }),
            row("RuleCtlMissingValuesSentEmpty", {}, "-31",
                sent("troxRuleCtl", std::nullopt, {-3, -200},
                     {entry(5, ""), entry(0xFFFFFFFB, "")}),
                {logInfo("pymRuleCtl, ruleId:-3, status:-200")},
                [] {
                    return str(pymRuleCtl(-3, -200, list(r(5, std::nullopt), r(-5, std::nullopt))));
                }),
            row("MultiStateMatchesByLowWordInCallerOrder",
                {entry(0x2000, "20"), entry(0x00000007FFFFFFFB, "5")}, "2 4096=old -5=5 8192=20",
                state(0, {entry(0x1000), entry(0xFFFFFFFB), entry(0x2000)}),
                multiIn + noMatch + value("0xfffffffb", "5") + value("0x00002000", "20"),
                [] { return multi(list(r(0x1000, "old"), r(-5, std::nullopt), r(0x2000, "x"))); }),
            row("MultiStateSkipsAMatchWithoutValue", {entry(1), entry(2, ""), entry(3, "c")},
                "1 1=a 2= 4=-", state(0, {entry(1), entry(2), entry(4)}),
                multiIn + value("0x00000002", "") + noMatch,
                [] { return multi(list(r(1, "a"), r(2, "b"), r(4, std::nullopt))); }),
            row("MultiStateEmptyReplyFails", {}, "-1 1=a", state(0, {entry(1)}),
                multiIn + Lines{logError("failed to get resource value")},
                [] { return multi(list(r(1, "a"))); }),
            row("MultiStateEmptyListNotSent", {}, "-1", RecordedCall(),
                multiIn + Lines{logError("input resource is empty, return")},
                [] { return multi({}); }),
            row("SingleStateCutAtTheFirstNul", {entry(0x0101, std::string("12\0ab", 5))}, "12",
                state(0, {entry(0x0101)}), singleIn + value("0x00000101", "12"),
                [] { return single(0x0101); }),
            row("SingleStatePowerConsistencyGoesThroughPowerConsis", {entry(kOp, "42")}, "42",
                consisQuery, consis, [] { return single(kOp); }),
            row("SingleStatePowerConsistencyThrowsLeavingTheValue", {entry(kOp, "abc")},
                "invalid_argument before", consisQuery, consis,
                [] {
                    std::string v = "before";
                    return escaping([&] { return PymResStateRequest(kOp, v), v; }) + " " + v;
                }),
            row("PowerConsisReadsTheFirstValue", {entry(1, " 42abc"), entry(kOp, "4")}, "42",
                consisQuery, consis, [] { return str(PymGetPowerConsis()); }),
            row("HistoryJoinsEveryExtra",
                {entry(1, "v", "a"), entry(2, "w"), entry(3, std::nullopt, "")},
                "0 start:a;none;;end", state(11),
                historyIn + Lines{logDebug("get history successful: start:a;none;;end")}, history),
            row("PMStatusLeadingBlank", {entry(0, " 7"), entry(0, "8")}, "7 ", pmQuery, pm,
                pmStatus),
            row("PMStatusTooLarge", {entry(0, "99999999999")}, "-1 Out of range exception", pmQuery,
                pm, pmStatus),
            row("PMStatusFirstWithoutValue", {entry(0), entry(0, "1")}, "-1 ", pmQuery,
                pm + Lines{logError(
                             "failed to get power mode status, mode -5, data vector size 2")},
                pmStatus),
            row("FeatureStatusReadsTheOnlyEntry", {entry(0, " 7")}, "7", featureQuery, feature,
                [] { return str(PymGetFeatureStatus(0x30)); }),
            row("FeatureStatusTwoEntries", {entry(0x30, "1"), entry(0x30, "2")}, "-1", featureQuery,
                feature + Lines{logError("failed to get resource value, 2")},
                [] { return str(PymGetFeatureStatus(0x30)); }),
            row("FetchDatasetAppends", {entry(0x00000009FFFFFFFE, "a"), entry(7, "")},
                "0 1=x 2=- -2=a 7= 4", state(16), fetch, dataset),
            row("FetchDatasetEmptyReplyKeepsTheSet", {}, "0 1=x 2=- -1", state(16),
                fetch + Lines{logError("failed to get resource value")}, dataset),
            row("FetchDatasetEntryWithoutValueThrowsAfterTheOnesBefore",
                {entry(4, "d"), entry(5), entry(6, "f")}, "0 1=x 2=- 4=d bad_optional_access",
                state(16), fetch, dataset),
    };
}

class CallTableTest : public PymTest, public ::testing::WithParamInterface<CallCase> {};

TEST_P(CallTableTest, SendsReturnsAndLogsExactly) {
    const CallCase& c = GetParam();
    // A negative number written by the service is a result like any other.
    for (const char* method :
         {"troxResCtlRequest", "troxResCtlRelease", "troxRuleCtl", "setRelatedSysInfo"}) {
        fake().setIntResult(method, -31);
    }
    fake().setStateReply(c.reply);
    EXPECT_EQ(escaping(c.call), c.result);
    if (c.sent.method.empty()) {
        EXPECT_EQ(fake().callCount(), 0u);
    } else {
        expectOnlyCall(fake(), c.sent.method, c.sent.parcel, c.sent.ints, c.sent.data);
    }
    EXPECT_EQ(pymLines(), c.lines);
    // Nothing stays held after the call, not even after an exception, or the death handler could
    // not get in; and the next call reaches the restarted service.
    service.restart();
    EXPECT_EQ(pymLines().back(), logError("Trox HAL Service died"));
    escaping(c.call);
    EXPECT_EQ(fake().callCount(), c.sent.method.empty() ? 0u : 1u);
}

INSTANTIATE_TEST_SUITE_P(Calls, CallTableTest, ::testing::ValuesIn(callCases()),
                         [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace vexal::testing
