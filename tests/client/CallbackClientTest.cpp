#include "ClientTestSupport.h"

#include <errno.h>

#include <functional>

namespace vexal::testing {
namespace {

using Clients = std::vector<std::shared_ptr<TroxCallbackClient>>;

LogLine removal(int before, int after) {
    return cbInfo(
            "TroxCallback::onCallback request callback called , remove from "
            "request_callbacks , request_callbacks size before " +
            std::to_string(before) + " after " + std::to_string(after));
}

LogLine delivered(const std::string& record) {
    return cbInfo("TroxCallbackClient::onCallback res_Id " + record + " is_register 0");
}

const LogLine kCalling =
        cbInfo("TroxCallback::onCallback call IClientCallback onCallback is_register 0");
const LogLine kFound = cbInfo("callback is found in request_callbacks");
const LogLine kNotFound = {ANDROID_LOG_ERROR, kCallbackTag,
                           "callback not found in request_callbacks"};

Lines addsClient(const std::string& member, const std::string& entry = " with callback") {
    return {info("trox client " + member + entry),
            info("new std::shared_ptr TroxCallbackClient callback"),
            info("trox client " + member + " add to request_callbacks")};
}

struct OneShotCase {
    const char* name;
    std::function<int(const std::shared_ptr<ClientRecorder>&)> call;
    TroxRequestParcel sent;  // but its callback
    Lines lines;
    const char* failName;
    std::vector<TroxRequestData> answer;
    Lines callbackLines;  // before the caller is called
    std::vector<Resources> ids;
    std::vector<PathDelivery> paths;
};

// Names the case in test listings, which would otherwise show its bytes.
void PrintTo(const OneShotCase& c, std::ostream* os) {
    *os << c.name;
}

class OneShotTest : public ClientTest, public ::testing::WithParamInterface<OneShotCase> {};

TEST_P(OneShotTest, SendsItsClientWhichDeliversOnceAndLeavesTheRegistry) {
    const OneShotCase& c = GetParam();
    fake().setIntResult("troxResCtlRequest", 17);
    auto recorder = std::make_shared<ClientRecorder>();
    EXPECT_EQ(c.call(recorder), 17);

    TroxRequestParcel sent = lastParcel();
    ASSERT_NE(sent.callback, nullptr);
    TroxRequestParcel expected = c.sent;
    expected.callback = sent.callback;
    EXPECT_EQ(sent, expected) << sent.toString();
    EXPECT_EQ(troxLines(), c.lines);
    ASSERT_EQ(requestCallbackCount(), 1u);
    logs.clear();

    sendFromService(sent.callback, c.answer);
    ASSERT_TRUE(recorder->waitFor(1));
    Lines lines = c.callbackLines;
    lines.insert(lines.end(), {kCalling, kFound, removal(1, 0)});
    EXPECT_EQ(callbackLinesOnce(lines.size()), lines);
    EXPECT_EQ(requestCallbackCount(), 0u);
    EXPECT_EQ(recorder->ids(), c.ids);
    EXPECT_EQ(recorder->paths(), c.paths);
    EXPECT_FALSE(recorder->lockHeldDuringDelivery()) << "callers may call the library back";

    // The hook logs with a null tag, which liblog replaces with the program's name.
    const Lines hook{{ANDROID_LOG_INFO, program_invocation_short_name,
                      "BnTroxCallback::logFunc NDK BACKEND method_name onCallback exception_code 0 "
                      "exception_message  transaction_error 0 service_specific_error_code 0"}};
    EXPECT_TRUE(eventually([&] { return logs.linesWithTag(hook[0].tag) == hook; }))
            << ::testing::PrintToString(logs.linesWithTag(hook[0].tag));

    logs.clear();
    fake().failNextCalls(1);
    EXPECT_EQ(c.call(recorder), -1);
    lines = c.lines;
    lines.push_back(failed(c.failName));
    EXPECT_EQ(troxLines(), lines);
    EXPECT_EQ(requestCallbackCount(), 1u) << "a failed request keeps its client";
}

INSTANTIATE_TEST_SUITE_P(
        Requests, OneShotTest,
        ::testing::Values(
                OneShotCase{"Resources",
                            [](const std::shared_ptr<ClientRecorder>& r) {
                                Resources list{{9, "1"}};
                                return troxHalclient::troxResCtlRequest(2, 300, list, 4, 1, 77, r);
                            },
                            parcel(1, {record(9, "1")}, 77, 2, 300, 4, true),
                            addsClient("troxResCtlRequest"),
                            "trox client TroxCallbackClient with callback",
                            {record(0x10, "800"), record(0xFFFFFFFBLL), record(0x700000002LL, "")},
                            {delivered("0x10 res_Value 800"), delivered("0xfffffffb"),
                             delivered("0x2 res_Value ")},
                            {{{0x10, "800"}, {-5, ""}, {2, ""}}},
                            {}},
                OneShotCase{"Scenario",
                            [](const std::shared_ptr<ClientRecorder>& r) {
                                return troxHalclient::troxSACtlRequest(5, 300, 9, 4, 1, 77, r);
                            },
                            parcel(2, {record(9)}, 77, 5, 300, 4, true),
                            addsClient("troxSACtlRequest"),
                            "troxSACtlRequest with callback",
                            {record(0x10, "800")},
                            {delivered("0x10 res_Value 800")},
                            {{{0x10, "800"}}},
                            {}},
                OneShotCase{"Paths",
                            [](const std::shared_ptr<ClientRecorder>& r) {
                                return troxHalclient::trox_resctl_request_with_callback_by_path(
                                        -1, 2500L, {"/x"}, {"7"}, -1, -1, 12, r);
                            },
                            parcel(1, {pathRecord("/x", "7")}, 12, -1, 2500, -1, false, true),
                            addsClient("trox_resctl_request_with_callback", ""),
                            "trox client trox_resctl_request_with_callback",
                            {pathRecord("/x", "8"), pathRecord("/y", std::nullopt)},
                            {delivered("/x res_Value 8")},
                            {},
                            {{{"8", ""}, {"/x", "/y"}}}}),
        [](const auto& test) { return std::string(test.param.name); });

using CallbackClientTest = ClientTest;

TEST_F(CallbackClientTest, OneShotLeavesEveryPlaceItHoldsAndKeepsTheOthersInOrder) {
    auto recorder = std::make_shared<ClientRecorder>();
    auto make = [&] {
        return ndk::SharedRefBase::make<TroxCallbackClient>(
                std::shared_ptr<IClientCallback>(recorder), false);
    };
    auto self = make(), first = make(), second = make();
    {
        std::lock_guard<std::mutex> lock(request_callback_mutex);
        request_callbacks = {first, self, second, self};
    }
    // Without records nobody is called; a second answer finds nothing to remove.
    EXPECT_TRUE(self->onCallback({}).isOk());
    EXPECT_TRUE(self->onCallback({record(1, "x")}).isOk());
    EXPECT_EQ(recorder->ids(), (std::vector<Resources>{{{1, "x"}}}));
    EXPECT_EQ(callbackLines(), (Lines{kFound, kFound, removal(4, 2), delivered("0x1 res_Value x"),
                                      kCalling, kNotFound, removal(2, 2)}));
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    EXPECT_EQ(request_callbacks, (Clients{first, second}));
}

}  // namespace
}  // namespace vexal::testing
