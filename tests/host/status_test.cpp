#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "binder_test_util.h"

namespace {

using ndk::ScopedAStatus;

std::string hexOf(const AParcel* parcel) {
    std::string out;
    std::vector<uint8_t> bytes = binder_test::bytesOf(parcel);
    char digits[3];
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0) out += ' ';
        snprintf(digits, sizeof(digits), "%02x", bytes[i]);
        out += digits;
    }
    return out;
}

TEST(StatusObject, FromStatusOkIsOk) {
    ScopedAStatus status = ScopedAStatus::fromStatus(STATUS_OK);
    EXPECT_TRUE(status.isOk());
    EXPECT_EQ(EX_NONE, status.getExceptionCode());
    EXPECT_EQ(STATUS_OK, status.getStatus());
}

TEST(StatusObject, FromStatusCarriesTransportError) {
    ScopedAStatus status = ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_FALSE(status.isOk());
    EXPECT_EQ(EX_TRANSACTION_FAILED, status.getExceptionCode());
    EXPECT_EQ(STATUS_DEAD_OBJECT, status.getStatus());
    EXPECT_EQ(0, status.getServiceSpecificError());
}

TEST(StatusObject, ServiceSpecificWithMessage) {
    ScopedAStatus status = ScopedAStatus::fromServiceSpecificErrorWithMessage(42, "busy");
    EXPECT_EQ(EX_SERVICE_SPECIFIC, status.getExceptionCode());
    EXPECT_EQ(42, status.getServiceSpecificError());
    EXPECT_EQ(STATUS_OK, status.getStatus());
    EXPECT_STREQ("busy", status.getMessage());
    EXPECT_NE(std::string::npos, status.getDescription().find("42"));
    EXPECT_NE(std::string::npos, status.getDescription().find("busy"));
}

TEST(StatusObject, ExceptionCodes) {
    struct Case {
        binder_exception_t exception;
        bool ok;
    };
    for (const Case& c :
         {Case{EX_NONE, true}, Case{EX_SECURITY, false}, Case{EX_ILLEGAL_ARGUMENT, false},
          Case{EX_UNSUPPORTED_OPERATION, false}}) {
        ScopedAStatus status = ScopedAStatus::fromExceptionCodeWithMessage(c.exception, "m");
        EXPECT_EQ(c.ok, status.isOk()) << c.exception;
        EXPECT_EQ(c.exception, status.getExceptionCode());
        EXPECT_EQ(0, status.getServiceSpecificError());
    }
    // Asking for a transaction failure without a status still names one.
    EXPECT_EQ(STATUS_FAILED_TRANSACTION,
              ScopedAStatus::fromExceptionCode(EX_TRANSACTION_FAILED).getStatus());
}

TEST(StatusObject, OkSingletonIsSafeToDelete) {
    AStatus* a = AStatus_newOk();
    AStatus* b = AStatus_newOk();
    EXPECT_TRUE(AStatus_isOk(a));
    AStatus_delete(a);
    EXPECT_TRUE(AStatus_isOk(b));
    AStatus_delete(b);
    EXPECT_STREQ("", AStatus_getMessage(AStatus_newOk()));
}

TEST(StatusObject, ScopedDefaultIsNotOk) {
    ScopedAStatus empty;
    EXPECT_FALSE(empty.isOk());
    ScopedAStatus moved = ScopedAStatus::ok();
    ScopedAStatus target = std::move(moved);
    EXPECT_TRUE(target.isOk());
    EXPECT_EQ(nullptr, moved.get());  // NOLINT: checking the moved-from state on purpose
}

struct HeaderCase {
    const char* name;
    std::function<AStatus*()> make;
    const char* wire;
};

class StatusHeaderTest : public testing::TestWithParam<HeaderCase> {};

TEST_P(StatusHeaderTest, GoldenAndRoundTrip) {
    const HeaderCase& c = GetParam();
    ScopedAStatus status(c.make());
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(STATUS_OK, AParcel_writeStatusHeader(parcel.get(), status.get()));
    EXPECT_EQ(c.wire, hexOf(parcel.get()));

    AParcel_setDataPosition(parcel.get(), 0);
    ScopedAStatus back;
    ASSERT_EQ(STATUS_OK, AParcel_readStatusHeader(parcel.get(), back.getR()));
    EXPECT_EQ(status.getExceptionCode(), back.getExceptionCode());
    EXPECT_EQ(status.getServiceSpecificError(), back.getServiceSpecificError());
    EXPECT_STREQ(status.getMessage(), back.getMessage());
    EXPECT_EQ(AParcel_getDataSize(parcel.get()), AParcel_getDataPosition(parcel.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Wire, StatusHeaderTest,
        testing::Values(HeaderCase{"ok", [] { return AStatus_newOk(); }, "00000000"},
                        HeaderCase{"exceptionWithMessage",
                                   [] {
                                       return AStatus_fromExceptionCodeWithMessage(
                                               EX_ILLEGAL_ARGUMENT, "bad");
                                   },
                                   "fdffffff 03000000 62006100 64000000 00000000"},
                        HeaderCase{"serviceSpecific",
                                   [] { return AStatus_fromServiceSpecificError(42); },
                                   "f8ffffff 00000000 00000000 00000000 2a000000"}),
        [](const testing::TestParamInfo<HeaderCase>& test) { return test.param.name; });

TEST(StatusHeader, TransportErrorIsReturnedNotWritten) {
    ScopedAStatus status = ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_DEAD_OBJECT, AParcel_writeStatusHeader(parcel.get(), status.get()));
    EXPECT_EQ(0, AParcel_getDataSize(parcel.get()));
}

TEST(StatusHeader, SkipsRemoteStackTraceHeader) {
    // Exception, empty message, an 8-byte trace header to skip, then a following int32.
    const std::vector<uint8_t> bytes = {0xfb, 0xff, 0xff, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 8, 0,
                                        0,    0,    1,    2,    3, 4, 5, 6, 7, 8, 9, 0, 0, 0};
    ndk::ScopedAParcel parcel = binder_test::parcelOf(bytes);
    ScopedAStatus status;
    ASSERT_EQ(STATUS_OK, AParcel_readStatusHeader(parcel.get(), status.getR()));
    EXPECT_EQ(EX_ILLEGAL_STATE, status.getExceptionCode());
    int32_t next = 0;
    ASSERT_EQ(STATUS_OK, AParcel_readInt32(parcel.get(), &next));
    EXPECT_EQ(9, next);
}

}  // namespace
