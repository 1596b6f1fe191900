// The parcel's wire layout, hostile input to its readers, and status headers.
#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_stability.h>
#include <android/binder_status.h>
#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "binder_test_util.h"

namespace {

using namespace binder_test;
using StringList = std::vector<std::optional<std::string>>;

TEST(ParcelTest, StringsAreUtf16WithTheirLengthAndNul) {
    const std::pair<const char*, const char*> cases[] = {
            {"", "00000000 00000000"},
            {"a", "01000000 61000000"},
            {"abc", "03000000 61006200 63000000"},
            {"\xc3\xa9", "01000000 e9000000"},
            {"a\xe2\x82\xac"
             "b",
             "03000000 6100ac20 62000000"},
            {"\xf0\x9f\x98\x80", "02000000 3dd800de 00000000"},  // a surrogate pair
            {nullptr, "ffffffff"},
    };
    for (const auto& [utf8, wire] : cases) {
        ndk::ScopedAParcel parcel(AParcel_create());
        const int32_t length = utf8 == nullptr ? -1 : static_cast<int32_t>(strlen(utf8));
        ASSERT_EQ(STATUS_OK, AParcel_writeString(parcel.get(), utf8, length));
        EXPECT_EQ(wire, hex(bytesOf(parcel.get())));
        ndk::ScopedAParcel back = parcelOf(unhex(wire));
        std::optional<std::string> text = "sentinel";
        ASSERT_EQ(STATUS_OK, readString(back.get(), &text)) << wire;
        EXPECT_EQ(utf8 == nullptr ? std::nullopt : std::optional<std::string>(utf8), text);
        EXPECT_EQ(AParcel_getDataSize(back.get()), AParcel_getDataPosition(back.get())) << wire;
    }
}

TEST(ParcelTest, ValuesAndArraysHaveTheirGoldenBytes) {
    const int32_t ints[] = {1, 2, 3};
    const int64_t longs[] = {-1};
    const bool bools[] = {true, false};
    const StringList strings = {"a", std::nullopt, ""};
    ndk::ScopedAParcel p(AParcel_create());
    AParcel_writeInt32(p.get(), -2);
    AParcel_writeInt64(p.get(), 0x0102030405060708);
    AParcel_writeUint64(p.get(), 0x8000000000000001ull);
    AParcel_writeBool(p.get(), true);
    AParcel_writeInt32Array(p.get(), nullptr, -1);
    AParcel_writeInt32Array(p.get(), ints, 0);
    AParcel_writeInt32Array(p.get(), ints, 3);
    AParcel_writeInt64Array(p.get(), longs, 1);
    AParcel_writeStringArray(p.get(), &strings, 3, [](const void* data, size_t i, int32_t* length) {
        const auto& entry = (*static_cast<const StringList*>(data))[i];
        *length = entry ? static_cast<int32_t>(entry->size()) : -1;
        return entry ? entry->c_str() : nullptr;
    });
    AParcel_writeStrongBinder(p.get(), nullptr);
    AParcel_writeBoolArray(p.get(), bools, 2, [](const void* data, size_t i) {
        return static_cast<const bool*>(data)[i];
    });
    AParcel_writeParcelableArray(p.get(), ints, 2, [](AParcel* out, const void* data, size_t i) {
        return AParcel_writeInt32(out, static_cast<const int32_t*>(data)[i] + 4);
    });
    EXPECT_EQ(
            // 8-byte values are only 4-byte aligned.
            "feffffff 08070605 04030201 01000000 00000080 01000000 "
            "ffffffff 00000000 03000000 01000000 02000000 03000000 01000000 ffffffff ffffffff "
            "03000000 01000000 61000000 ffffffff 00000000 00000000 00000000 "
            "02000000 01000000 00000000 02000000 05000000 06000000",
            hex(bytesOf(p.get())));

    AParcel_setDataPosition(p.get(), 0);
    int32_t i32 = 0;
    int64_t i64 = 0;
    uint64_t u64 = 0;
    bool b = false;
    EXPECT_EQ(STATUS_OK, AParcel_readInt32(p.get(), &i32));
    EXPECT_EQ(STATUS_OK, AParcel_readInt64(p.get(), &i64));
    EXPECT_EQ(STATUS_OK, AParcel_readUint64(p.get(), &u64));
    EXPECT_EQ(STATUS_OK, AParcel_readBool(p.get(), &b));
    EXPECT_EQ(std::make_tuple(-2, int64_t{0x0102030405060708}, 0x8000000000000001ull, true),
              std::make_tuple(i32, i64, u64, b));
    // Arrays are read back through the AIDL helpers in tests/aidl, hostile ones below.
    EXPECT_EQ(24, AParcel_getDataPosition(p.get()));
}

TEST(ParcelTest, BinderObjectLayout) {
    EchoState state;
    ndk::SpAIBinder local = newEcho(&state);
    AIBinder_markVintfStability(local.get());
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(p.get(), local.get()));
    const std::string text = hex(bytesOf(p.get()));
    ASSERT_EQ(35u, text.size()) << text;                 // 16 bytes
    EXPECT_EQ("01000000", text.substr(0, 8));            // present
    EXPECT_NE("00000000 00000000", text.substr(9, 17));  // object id
    EXPECT_EQ("3f000000", text.substr(27));              // stability word
}

TEST(ParcelTest, RejectsInvalidUtf8) {
    for (const char* bad : {"\xff", "\xc0\x80", "\xed\xa0\x80", "\xe2\x82", "\xf4\x90\x80\x80"}) {
        ndk::ScopedAParcel p(AParcel_create());
        EXPECT_EQ(STATUS_BAD_VALUE,
                  AParcel_writeString(p.get(), bad, static_cast<int32_t>(strlen(bad))))
                << hex(std::vector<uint8_t>(bad, bad + strlen(bad)));
    }
}

TEST(ParcelTest, PositionsAndRangesStayInsideTheData) {
    ndk::ScopedAParcel p(AParcel_create());
    AParcel_writeInt32(p.get(), 1);
    AParcel_writeInt32(p.get(), 2);
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(p.get(), -1));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(p.get(), 9));
    uint8_t buffer[8] = {};
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_marshal(p.get(), buffer, 6, 4));
    ndk::ScopedAParcel to(AParcel_create());
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_appendFrom(p.get(), to.get(), 4, 8));
    EXPECT_EQ(STATUS_OK, AParcel_appendFrom(p.get(), to.get(), 4, 4));
    EXPECT_EQ("02000000", hex(bytesOf(to.get())));
    // Writing after rewinding overwrites in place, which size-prefixed records rely on.
    EXPECT_EQ(STATUS_OK, AParcel_setDataPosition(p.get(), 0));
    AParcel_writeInt32(p.get(), 9);
    EXPECT_EQ("09000000 02000000", hex(bytesOf(p.get())));
}

// Hostile input: each reader must fail cleanly, leave the position where it was and never ask
// an allocator for a length the data cannot back (counted in gGiven, with what it handed out).
int gGiven = 0;

binder_status_t readIntArray(const AParcel* p) {
    return AParcel_readInt32Array(p, nullptr, [](void*, int32_t, int32_t**) { return !++gGiven; });
}

binder_status_t readOneString(const AParcel* p) {
    std::optional<std::string> out;
    binder_status_t s = readString(p, &out);
    gGiven += out.has_value();
    return s;
}

binder_status_t readStringArray(const AParcel* p) {
    return AParcel_readStringArray(
            p, nullptr, [](void*, int32_t) { return ++gGiven > 0; },
            [](void*, size_t, int32_t, char**) { return false; });
}

binder_status_t readBinder(const AParcel* p) {
    ndk::SpAIBinder b;
    binder_status_t s = AParcel_readStrongBinder(p, b.getR());
    gGiven += b.get() != nullptr;
    return s;
}

binder_status_t readStatus(const AParcel* p) {
    ndk::ScopedAStatus status;
    binder_status_t s = AParcel_readStatusHeader(p, status.getR());
    gGiven += status.get() != nullptr;
    return s;
}

TEST(ParcelTest, HostileInputFailsWithoutSideEffects) {
    const struct {
        const char* wire;
        binder_status_t expected;
        binder_status_t (*read)(const AParcel*);
    } cases[] = {
            {"02000000 61000000", STATUS_BAD_VALUE, readOneString},       // length beyond the data
            {"feffffff 00000000", STATUS_BAD_VALUE, readOneString},       // negative length
            {"ffffff7f 00000000", STATUS_BAD_VALUE, readOneString},       // huge length
            {"01000000 61006200", STATUS_BAD_VALUE, readOneString},       // NUL missing
            {"01000000 00d80000", STATUS_BAD_VALUE, readOneString},       // lone surrogate
            {"02000000 61006200 0000", STATUS_BAD_VALUE, readOneString},  // padding cut off
            {"", STATUS_NOT_ENOUGH_DATA, readOneString},
            {"fbffffff", STATUS_BAD_VALUE, readIntArray},
            {"ffffff7f 01000000", STATUS_BAD_VALUE, readIntArray},
            {"03000000 01000000 02000000", STATUS_BAD_VALUE, readIntArray},
            {"ffffff7f", STATUS_BAD_VALUE, readStringArray},
            {"f0ffffff", STATUS_BAD_VALUE, readStringArray},
            {"01000000 07000000", STATUS_NOT_ENOUGH_DATA, readBinder},
            {"02000000", STATUS_BAD_VALUE, readBinder},                             // bad flag
            {"01000000 ffffffff ffffff7f 03000000", STATUS_BAD_VALUE, readBinder},  // unknown id
            {"fdffffff 05000000 6100", STATUS_BAD_VALUE, readStatus},  // message cut short
            {"fdffffff 00000000 00000000 ffffffff", STATUS_BAD_VALUE, readStatus},  // trace size
            {"f8ffffff 00000000 00000000 00000000", STATUS_NOT_ENOUGH_DATA, readStatus},  // code
    };
    for (const auto& c : cases) {
        // Exact-size heap copy so ASan catches any read past the end.
        auto p = parcelOf(unhex(c.wire));
        gGiven = 0;
        EXPECT_EQ(c.expected, c.read(p.get())) << c.wire;
        EXPECT_EQ(0, gGiven) << c.wire;
        EXPECT_EQ(0, AParcel_getDataPosition(p.get())) << c.wire;
    }
}

// Status objects, and the header they travel as in a reply.
TEST(StatusTest, CarriesItsKindAndTravelsAsItsHeader) {
    const struct {
        AStatus* status;
        binder_exception_t exception;
        binder_status_t transport;
        int32_t serviceSpecific;
        const char* message;
        const char* wire;  // nullptr: never written, the transport error is returned instead
    } cases[] = {
            {AStatus_newOk(), EX_NONE, STATUS_OK, 0, "", "00000000"},
            {AStatus_fromStatus(STATUS_DEAD_OBJECT), EX_TRANSACTION_FAILED, STATUS_DEAD_OBJECT, 0,
             "", nullptr},
            // Asking for a transaction failure without a status still names one.
            {AStatus_fromExceptionCode(EX_TRANSACTION_FAILED), EX_TRANSACTION_FAILED,
             STATUS_FAILED_TRANSACTION, 0, "", nullptr},
            {AStatus_fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, "bad"), EX_ILLEGAL_ARGUMENT,
             STATUS_OK, 0, "bad", "fdffffff 03000000 62006100 64000000 00000000"},
            {AStatus_fromServiceSpecificError(42), EX_SERVICE_SPECIFIC, STATUS_OK, 42, "",
             "f8ffffff 00000000 00000000 00000000 2a000000"},
            {AStatus_fromServiceSpecificErrorWithMessage(-7, "busy"), EX_SERVICE_SPECIFIC,
             STATUS_OK, -7, "busy",
             "f8ffffff 04000000 62007500 73007900 00000000 00000000 f9ffffff"},
    };
    for (const auto& c : cases) {
        ndk::ScopedAStatus status(c.status);
        SCOPED_TRACE(status.getDescription());
        EXPECT_EQ(c.exception == EX_NONE, status.isOk());
        EXPECT_EQ(c.exception, status.getExceptionCode());
        EXPECT_EQ(c.transport, status.getStatus());
        EXPECT_EQ(c.serviceSpecific, status.getServiceSpecificError());
        EXPECT_STREQ(c.message, status.getMessage());
        ndk::ScopedAParcel parcel(AParcel_create());
        if (c.wire == nullptr) {
            EXPECT_EQ(c.transport, AParcel_writeStatusHeader(parcel.get(), status.get()));
            EXPECT_EQ(0, AParcel_getDataSize(parcel.get()));
            continue;
        }
        ASSERT_EQ(STATUS_OK, AParcel_writeStatusHeader(parcel.get(), status.get()));
        EXPECT_EQ(c.wire, hex(bytesOf(parcel.get())));
        AParcel_setDataPosition(parcel.get(), 0);
        ndk::ScopedAStatus back;
        ASSERT_EQ(STATUS_OK, AParcel_readStatusHeader(parcel.get(), back.getR()));
        EXPECT_EQ(c.exception, back.getExceptionCode());
        EXPECT_EQ(c.serviceSpecific, back.getServiceSpecificError());
        EXPECT_STREQ(c.message, back.getMessage());
        EXPECT_EQ(AParcel_getDataSize(parcel.get()), AParcel_getDataPosition(parcel.get()));
    }
}

}  // namespace
