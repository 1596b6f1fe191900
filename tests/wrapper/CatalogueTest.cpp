// The action catalogue and the wrapper's acquire, release and notify doors.
#include "WrapperTestSupport.h"

#include <cctype>

namespace vexal::testing {
namespace {

using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

constexpr int32_t kHandle = 4711;

// The lookup as a straightforward walk: marker anywhere, plain cut of seven, first equal row.
int32_t linearFind(const std::string& eventName) {
    if (eventName.find("QUARNE_") == std::string::npos) return -1;
    for (size_t position = 0; position < gActionList.size(); ++position) {
        if (eventName.substr(7) == gActionList[position]) return static_cast<int32_t>(position);
    }
    return -1;
}

class CatalogueTest : public WrapperTest {
  protected:
    void SetUp() override { fake().setIntResult("troxResCtlRequest", kHandle); }

    // Acquires through the wrapper and checks that the action id `expected` reached the service.
    void expectLookup(const std::string& eventName, int32_t expected) {
        SCOPED_TRACE('"' + eventName + '"');
        fake().clearCalls();
        EXPECT_EQ(PymEventAcquireWrapper(eventName, "scene", "who", 10),
                  expected < 0 ? -1 : kHandle);
        const auto calls = fake().calls();
        ASSERT_EQ(calls.size(), expected < 0 ? 0u : 1u);
        EXPECT_EQ(calls.empty() ? -1 : calls[0].parcel->requestData.at(0).res_Id, expected);
    }
};

// Any edit of a name, its position or the count changes the digest (FNV-1a over "name\n"...).
TEST_F(CatalogueTest, HoldsTheVocabularyLetterForLetter) {
    ASSERT_EQ(gActionList.size(), 199u);
    uint64_t digest = 0xcbf29ce484222325u;
    for (const auto& name : gActionList) {
        for (char c : name + '\n') digest = (digest ^ static_cast<uint8_t>(c)) * 0x100000001b3u;
    }
    EXPECT_EQ(digest, 0x7d421052eb4170f5u);
    EXPECT_EQ(gActionList[78], "ACTION_CAMERA_STIKER_RECORD");
}

// With the digest above, this pins every name to its first position.
TEST_F(CatalogueTest, NamesResolveToTheirFirstPositionAndNearMissesToNothing) {
    for (const std::string& name : gActionList) {
        std::string lower = name;
        for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        for (const std::string& text :
             {"QUARNE_" + name, "QUARNE_" + lower, "QUARNE_" + name + " ", " QUARNE_" + name,
              "QUARNE_ " + name, name, "XQUARNE_" + name, name + "QUARNE_", "ABCDEFG" + name,
              "quarne_" + name, "QUARNE" + name, "QUARNE_QUARNE_" + name,
              "QUARNE_" + name.substr(0, name.size() - 1), "QUARNE_" + name + "_L1"}) {
            expectLookup(text, linearFind(text));
        }
    }
}

TEST_F(CatalogueTest, AcquireSendsTheActionIdWithoutResourcesAndLogsItsLine) {
    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_ACTION_WFD", "com.app", "who", -300), kHandle);
    TroxRequestParcel expected;
    expected.requestType = 8;
    expected.requestData = {TroxRequestData{}};
    expected.requestData[0].res_Id = 124;
    expected.identity = "who";
    expected.duration = -300;
    expected.pkg = "com.app";
    ASSERT_EQ(fake().callCount(), 1u);
    EXPECT_EQ(fake().lastCall().method, "troxResCtlRequest");
    EXPECT_EQ(fake().lastCall().parcel, expected);
    // Empty texts are logged as none; an unknown name reaches nothing.
    EXPECT_EQ(PymEventAcquireWrapper("", "", "", 0), -1);
    EXPECT_EQ(fake().callCount(), 1u);
    const std::string logged = "[PymEventAcquireWrapper] eventId:";
    EXPECT_EQ(wrapperLines(),
              (std::vector<LogLine>{
                      wrapperInfo(logged +
                                  "QUARNE_ACTION_WFD, scene:com.app, identity:who, timeout:-300"),
                      wrapperInfo(logged + "none, scene:none, identity:none, timeout:0")}));
    service.kill();
    EXPECT_EQ(PymEventAcquireWrapper("QUARNE_ACTION_LAUNCH", "s", "i", 5), -1);
}

TEST_F(CatalogueTest, ReleasePassesTheHandleOnAndNotifyGivesZeroEvenWithoutAService) {
    PymReleaseWapper(-3);
    EXPECT_EQ(fake().lastCall().method, "troxResCtlRelease");
    EXPECT_EQ(fake().lastCall().ints, std::vector<int32_t>{-3});
    EXPECT_EQ(wrapperLines(), std::vector<LogLine>{wrapperInfo("[PymReleaseWapper] -3")});
    fake().failNextCalls(1);
    EXPECT_EQ(PymNotifyWapper("", 10, 0, 0, 0, 0, ""), 0);
    service.kill();
    EXPECT_EQ(PymNotifyWapper("x", 10, 0, 0, 0, 0, ""), 0);
    EXPECT_EQ(wrapperLines().at(1), wrapperInfo("[PymNotifyWapper] none, src:10, type:0"));
}

}  // namespace
}  // namespace vexal::testing
