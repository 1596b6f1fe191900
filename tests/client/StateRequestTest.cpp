#include "ClientTestSupport.h"

#include <map>

namespace vexal::testing {
namespace {

using TextMap = std::map<std::string, std::string>;
using StateRequestTest = ClientTest;

const LogLine kAsked = info("trox client troxResStateRequest");
const LogLine kAskedHal = info("trox client hal troxResStateRequest");

TEST_F(StateRequestTest, IdFormAppendsTheReplyAndCountsWhatWasThere) {
    fake().setStateReply({record(0x500000001LL, "1,2"), record(0xFFFFFFFELL), record(3, "x")});
    Resources request{{1, std::nullopt}, {0, "v"}};
    Resources result{{90, "a"}, {91, std::nullopt}};
    EXPECT_EQ(troxHalclient::troxResStateRequest(request, 4321, result), 5);

    EXPECT_EQ(fake().lastCall().method, "troxResStateRequest");
    EXPECT_EQ(lastParcel(), parcel(0, {record(1, ""), record(0, "v")}, 4321))
            << lastParcel().toString();
    EXPECT_EQ(result, (Resources{{90, "a"}, {91, std::nullopt}, {1, "1,2"}, {-2, ""}, {3, "x"}}));
    EXPECT_EQ(troxLines(),
              (Lines{kAsked, kAskedHal, info("trox client troxResStateRequest size 5")}));

    // A failure is -1, the result untouched.
    logs.clear();
    fake().failNextCalls(1);
    EXPECT_EQ(troxHalclient::troxResStateRequest(request, 1, result), -1);
    EXPECT_EQ(result.size(), 5u);
    EXPECT_EQ(troxLines(), (Lines{kAsked, kAskedHal, failed("troxResStateRequest")}));
}

TEST_F(StateRequestTest, PathFormSendsValuesOnlyWhenTheyPairUp) {
    fake().setStateReply({pathRecord("/a", "10"), record(0), pathRecord("/c", "")});
    Texts result{"old"};
    EXPECT_EQ(troxHalclient::trox_res_state_request_by_path({"/a", "/b"}, {"1", "2"}, 55, result),
              4);
    EXPECT_EQ(lastParcel(),
              parcel(0, {pathRecord("/a", "1"), pathRecord("/b", "2")}, 55, 0, 0, 0, false, true))
            << lastParcel().toString();
    EXPECT_EQ(result, (Texts{"old", "10", "", ""}));
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_state_request"),
                                  info("trox client trox_res_state_request size 4")}));

    // Values that do not pair up are left out; an empty answer is -1, as is a failure.
    logs.clear();
    fake().setStateReply({});
    EXPECT_EQ(troxHalclient::trox_res_state_request_by_path({"/a", "/b"}, {"1"}, 55, result), -1);
    EXPECT_EQ(lastParcel(),
              parcel(0, {pathRecord("/a", std::nullopt), pathRecord("/b", std::nullopt)}, 55, 0, 0,
                     0, false, true));
    fake().failNextCalls(1);
    EXPECT_EQ(troxHalclient::trox_res_state_request_by_path({"/a"}, {}, 1, result), -1);
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_state_request"),
                                  info("trox client trox_res_state_request"),
                                  failed("trox_res_state_request")}));
}

TEST_F(StateRequestTest, PathMapWalksKeysInOrderAndSkipsHalfAnswers) {
    fake().setStateReply({pathRecord("/b", "2"), record(0, "lost"), pathRecord("/c", std::nullopt),
                          pathRecord("/k", "new")});
    TextMap result{{"/k", "old"}, {"/z", "z"}};
    EXPECT_EQ(troxHalclient::trox_res_state_request_map_by_path({{"/b", "x"}, {"/a", "y"}}, 8,
                                                                result),
              3);
    EXPECT_EQ(lastParcel(),
              parcel(0, {pathRecord("/a", "y"), pathRecord("/b", "x")}, 8, 0, 0, 0, false, true));
    EXPECT_EQ(result, (TextMap{{"/b", "2"}, {"/k", "new"}, {"/z", "z"}}));
    EXPECT_EQ(troxLines(),
              (Lines{info("trox client trox_res_state_request_map"),
                     info("res_Path: /b, res_Value:2"), info("res_Path: /k, res_Value:new"),
                     info("trox client trox_res_state_request_map size 3")}));

    logs.clear();
    fake().failNextCalls(1);
    EXPECT_EQ(troxHalclient::trox_res_state_request_map_by_path({{"/a", "1"}}, 8, result), -1);
    EXPECT_EQ(troxLines(), (Lines{info("trox client trox_res_state_request_map"),
                                  failed("trox_res_state_request_map")}));
}

}  // namespace
}  // namespace vexal::testing
