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

// Transaction codes are checked against aidl/ by interface_drift.sh.
TEST(TroxIdentity, Descriptors) {
    EXPECT_STREQ(ITrox::descriptor, "vendor.vexal.hardware.trox.ITrox");
    EXPECT_STREQ(ITroxCallback::descriptor, "vendor.vexal.hardware.trox.ITroxCallback");
}

}  // namespace
