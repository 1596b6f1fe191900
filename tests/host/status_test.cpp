// Status objects and the status header they travel as in a reply.
#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "binder_test_util.h"

namespace {

using ndk::ScopedAStatus;

struct StatusCase {
    const char* name;
    std::function<AStatus*()> make;
    binder_exception_t exception;
    binder_status_t status;
    int32_t serviceSpecific;
    const char* message;
    const char* wire;  // nullptr: never written, the transport error is returned instead
};

class StatusTest : public testing::TestWithParam<StatusCase> {};

TEST_P(StatusTest, CarriesItsKindAndTravelsAsItsHeader) {
    const StatusCase& c = GetParam();
    ScopedAStatus status(c.make());
    EXPECT_EQ(c.exception == EX_NONE, status.isOk());
    EXPECT_EQ(c.exception, status.getExceptionCode());
    EXPECT_EQ(c.status, status.getStatus());
    EXPECT_EQ(c.serviceSpecific, status.getServiceSpecificError());
    EXPECT_STREQ(c.message, status.getMessage());

    ndk::ScopedAParcel parcel(AParcel_create());
    if (c.wire == nullptr) {
        EXPECT_EQ(c.status, AParcel_writeStatusHeader(parcel.get(), status.get()));
        EXPECT_EQ(0, AParcel_getDataSize(parcel.get()));
        return;
    }
    ASSERT_EQ(STATUS_OK, AParcel_writeStatusHeader(parcel.get(), status.get()));
    EXPECT_EQ(c.wire, binder_test::hex(binder_test::bytesOf(parcel.get())));
    AParcel_setDataPosition(parcel.get(), 0);
    ScopedAStatus back;
    ASSERT_EQ(STATUS_OK, AParcel_readStatusHeader(parcel.get(), back.getR()));
    EXPECT_EQ(c.exception, back.getExceptionCode());
    EXPECT_EQ(c.serviceSpecific, back.getServiceSpecificError());
    EXPECT_STREQ(c.message, back.getMessage());
    EXPECT_EQ(AParcel_getDataSize(parcel.get()), AParcel_getDataPosition(parcel.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Kinds, StatusTest,
        testing::Values(
                StatusCase{"ok", [] { return AStatus_newOk(); }, EX_NONE, STATUS_OK, 0, "",
                           "00000000"},
                StatusCase{"fromStatusOk", [] { return AStatus_fromStatus(STATUS_OK); }, EX_NONE,
                           STATUS_OK, 0, "", "00000000"},
                StatusCase{"transportError", [] { return AStatus_fromStatus(STATUS_DEAD_OBJECT); },
                           EX_TRANSACTION_FAILED, STATUS_DEAD_OBJECT, 0, "", nullptr},
                // Asking for a transaction failure without a status still names one.
                StatusCase{"transactionFailed",
                           [] { return AStatus_fromExceptionCode(EX_TRANSACTION_FAILED); },
                           EX_TRANSACTION_FAILED, STATUS_FAILED_TRANSACTION, 0, "", nullptr},
                StatusCase{"exceptionWithMessage",
                           [] {
                               return AStatus_fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT,
                                                                           "bad");
                           },
                           EX_ILLEGAL_ARGUMENT, STATUS_OK, 0, "bad",
                           "fdffffff 03000000 62006100 64000000 00000000"},
                StatusCase{"security", [] { return AStatus_fromExceptionCode(EX_SECURITY); },
                           EX_SECURITY, STATUS_OK, 0, "", "ffffffff 00000000 00000000 00000000"},
                StatusCase{"serviceSpecific", [] { return AStatus_fromServiceSpecificError(42); },
                           EX_SERVICE_SPECIFIC, STATUS_OK, 42, "",
                           "f8ffffff 00000000 00000000 00000000 2a000000"},
                StatusCase{"serviceSpecificWithMessage",
                           [] { return AStatus_fromServiceSpecificErrorWithMessage(-7, "busy"); },
                           EX_SERVICE_SPECIFIC, STATUS_OK, -7, "busy",
                           "f8ffffff 04000000 62007500 73007900 00000000 00000000 f9ffffff"}),
        [](const testing::TestParamInfo<StatusCase>& test) { return test.param.name; });

TEST(StatusHeader, SkipsRemoteStackTraceHeader) {
    // Exception, empty message, an 8-byte trace header to skip, then a following int32.
    ndk::ScopedAParcel parcel = binder_test::parcelOf(
            binder_test::unhex("fbffffff 00000000 00000000 08000000 01020304 05060708 09000000"));
    ScopedAStatus status;
    ASSERT_EQ(STATUS_OK, AParcel_readStatusHeader(parcel.get(), status.getR()));
    EXPECT_EQ(EX_ILLEGAL_STATE, status.getExceptionCode());
    int32_t next = 0;
    ASSERT_EQ(STATUS_OK, AParcel_readInt32(parcel.get(), &next));
    EXPECT_EQ(9, next);
}

TEST(StatusHeader, OkIsSharedAndSafeToDelete) {
    AStatus* a = AStatus_newOk();
    AStatus* b = AStatus_newOk();
    AStatus_delete(a);
    EXPECT_TRUE(AStatus_isOk(b));
    AStatus_delete(b);
    EXPECT_STREQ("", AStatus_getMessage(AStatus_newOk()));
    EXPECT_FALSE(ScopedAStatus().isOk());
}

}  // namespace
