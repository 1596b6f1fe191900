#include "ClientTestSupport.h"

#include <csignal>
#include <cstring>
#include <memory>

namespace vexal::testing {
namespace {

struct ArrayDelete {
    void operator()(char* p) const { delete[] p; }
};
using Property = std::unique_ptr<char, ArrayDelete>;
using PropertyTest = ClientTest;

TEST_F(PropertyTest, GetCopiesTheValueOrTheEmptyTextAndLogsIt) {
    const std::pair<std::string, bool> cases[] = {
            {"performance", false}, {"", false}, {std::string(255, 'v'), false}, {"unused", true}};
    for (const auto& [text, fails] : cases) {
        logs.clear();
        fake().setPropertyValue(text);
        if (fails) fake().failNextCalls(1);
        Property value(troxHalclient::troxPropertyGet("persist.trox.mode"));
        const std::string shown = fails ? "" : text;
        EXPECT_EQ(std::string(value.get()), shown);
        EXPECT_EQ(fake().lastCall().texts, Texts{"persist.trox.mode"});
        Lines expected{info("trox client troxPropertyGet")};
        if (fails) expected.push_back(failed("troxPropertyGet"));
        expected.push_back(info("troxPropertyGet " + shown + " "));
        EXPECT_EQ(troxLines(), expected);
    }
}

TEST(PropertyNoServiceTest, GetWithoutAConnectionReturnsAClearedArray) {
    LogCapture logs;
    FakeTroxService service(FakeTroxService::Start::kNotDeclared);
    Property value(troxHalclient::troxPropertyGet("k"));
    ASSERT_NE(value.get(), nullptr);
    const char zeros[256] = {};
    EXPECT_EQ(std::memcmp(value.get(), zeros, sizeof(zeros)), 0);
    EXPECT_EQ(logs.linesWithTag(kTroxTag),
              (Lines{info("trox client troxPropertyGet"),
                     error("Trox is not declared, AServiceManager_isDeclared:0"),
                     info("troxPropertyGet  ")}));
}

// Forked without exec: under an emulator the threadsafe style's exec of the test fails, and
// that failure would pass for the death.
TEST(PropertyDeathTest, ValueOfTwoHundredFiftySixCharactersEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_EXIT(
            {
                FakeTroxService service;
                service.fake().setPropertyValue(std::string(256, 'x'));
                delete[] troxHalclient::troxPropertyGet("k");
                _exit(0);
            },
            ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace vexal::testing
