// The host backend must carry the frozen interface's identity exactly.
#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;

namespace {

std::string lastLine(const char* path) {
    std::ifstream in(path);
    std::string line, last;
    while (std::getline(in, line)) {
        if (!line.empty()) last = line;
    }
    return last;
}

TEST(TroxFrozenHash, MatchesCheckedInHashFile) {
    const std::string frozen = lastLine(TROX_HASH_FILE);
    ASSERT_EQ(frozen.size(), 40u) << TROX_HASH_FILE;
    EXPECT_EQ(ITrox::hash, frozen);
    EXPECT_EQ(ITroxCallback::hash, frozen);
    // `version` is a plain static const member, as generated, with no out-of-line definition: use
    // its value (binding it to a reference would not link, on a device either).
    EXPECT_EQ(int32_t{ITrox::version}, 1);
    EXPECT_EQ(int32_t{ITroxCallback::version}, 1);
}

TEST(TroxIdentity, DescriptorsAndTransactionCodes) {
    EXPECT_STREQ(ITrox::descriptor, "vendor.vexal.hardware.trox.ITrox");
    EXPECT_STREQ(ITroxCallback::descriptor, "vendor.vexal.hardware.trox.ITroxCallback");
    const std::pair<uint32_t, uint32_t> codes[] = {
            {ITrox::TRANSACTION_reservedSlot1, 1},
            {ITrox::TRANSACTION_trox_init, 2},
            {ITrox::TRANSACTION_troxResCtlRequest, 3},
            {ITrox::TRANSACTION_troxResCtlRelease, 4},
            {ITrox::TRANSACTION_troxResStateRequest, 5},
            {ITrox::TRANSACTION_troxResListeningRegister, 6},
            {ITrox::TRANSACTION_troxResListeningUnRegister, 7},
            {ITrox::TRANSACTION_troxPropertyGet, 8},
            {ITrox::TRANSACTION_troxPropertySet, 9},
            {ITrox::TRANSACTION_troxThermalListeningRegister, 10},
            {ITrox::TRANSACTION_troxThermalListeningUnregister, 11},
            {ITrox::TRANSACTION_reservedSlot12, 12},
            {ITrox::TRANSACTION_setRelatedSysInfo, 13},
            {ITrox::TRANSACTION_troxRuleCtl, 14},
            {ITrox::TRANSACTION_troxResCtlRequestOneWay, 15},
            {ITroxCallback::TRANSACTION_onCallback, 1},
    };
    for (const auto& [got, want] : codes) EXPECT_EQ(got, want);
}

}  // namespace
