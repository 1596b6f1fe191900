// The parcel's wire layout, what reads it back, and hostile input.
#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "binder_test_util.h"

namespace {

using namespace binder_test;
using StringList = std::vector<std::optional<std::string>>;

struct StringCase {
    const char* name;
    const char* utf8;  // nullptr for a null string
    const char* wire;
};

class StringTest : public testing::TestWithParam<StringCase> {};

TEST_P(StringTest, WritesTheGoldenBytesAndReadsThemBack) {
    const StringCase& c = GetParam();
    ndk::ScopedAParcel parcel(AParcel_create());
    const int32_t length = c.utf8 == nullptr ? -1 : static_cast<int32_t>(strlen(c.utf8));
    ASSERT_EQ(STATUS_OK, AParcel_writeString(parcel.get(), c.utf8, length));
    EXPECT_EQ(c.wire, hex(bytesOf(parcel.get())));
    ndk::ScopedAParcel back = parcelOf(unhex(c.wire));
    std::optional<std::string> text = "sentinel";
    ASSERT_EQ(STATUS_OK, readString(back.get(), &text));
    EXPECT_EQ(c.utf8 == nullptr ? std::nullopt : std::optional<std::string>(c.utf8), text);
    EXPECT_EQ(AParcel_getDataSize(back.get()), AParcel_getDataPosition(back.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Golden, StringTest,
        testing::Values(StringCase{"empty", "", "00000000 00000000"},
                        StringCase{"a", "a", "01000000 61000000"},
                        StringCase{"abc", "abc", "03000000 61006200 63000000"},
                        StringCase{"eAcute", "\xc3\xa9", "01000000 e9000000"},
                        StringCase{"euroBetweenAscii",
                                   "a\xe2\x82\xac"
                                   "b",
                                   "03000000 6100ac20 62000000"},
                        StringCase{"beyondBmp", "\xf0\x9f\x98\x80", "02000000 3dd800de 00000000"},
                        StringCase{"null", nullptr, "ffffffff"}),
        [](const testing::TestParamInfo<StringCase>& test) { return test.param.name; });

TEST(ParcelTest, ValuesAndArraysHaveTheirGoldenBytesAndReadBack) {
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
    AParcel_writeBoolArray(p.get(), bools, 2, [](const void* data, size_t i) {
        return static_cast<const bool*>(data)[i];
    });
    AParcel_writeStringArray(p.get(), &strings, 3, [](const void* data, size_t i, int32_t* length) {
        const auto& entry = (*static_cast<const StringList*>(data))[i];
        *length = entry ? static_cast<int32_t>(entry->size()) : -1;
        return entry ? entry->c_str() : nullptr;
    });
    AParcel_writeParcelableArray(p.get(), ints, 2, [](AParcel* out, const void* data, size_t i) {
        return AParcel_writeInt32(out, static_cast<const int32_t*>(data)[i] + 4);
    });
    AParcel_writeStrongBinder(p.get(), nullptr);
    EXPECT_EQ(
            "feffffff "
            "08070605 04030201 "  // 8-byte values are only 4-byte aligned
            "01000000 00000080 "
            "01000000 "
            "ffffffff "
            "00000000 "
            "03000000 01000000 02000000 03000000 "
            "01000000 ffffffff ffffffff "
            "02000000 01000000 00000000 "
            "03000000 01000000 61000000 ffffffff 00000000 00000000 "
            "02000000 05000000 06000000 "
            "00000000",
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
    std::optional<std::vector<int32_t>> null = std::vector<int32_t>{}, empty, three;
    std::optional<std::vector<int64_t>> one;
    EXPECT_EQ(STATUS_OK, AParcel_readInt32Array(p.get(), &null, allocArray<int32_t>));
    EXPECT_EQ(STATUS_OK, AParcel_readInt32Array(p.get(), &empty, allocArray<int32_t>));
    EXPECT_EQ(STATUS_OK, AParcel_readInt32Array(p.get(), &three, allocArray<int32_t>));
    EXPECT_EQ(STATUS_OK, AParcel_readInt64Array(p.get(), &one, allocArray<int64_t>));
    EXPECT_FALSE(null.has_value());
    EXPECT_EQ(std::vector<int32_t>{}, empty);
    EXPECT_EQ((std::vector<int32_t>{1, 2, 3}), three);
    EXPECT_EQ(std::vector<int64_t>{-1}, one);
    std::vector<int32_t> values;  // the bools as 7 and 8, then the parcelables
    auto resize = [](void* data, int32_t length) {
        static_cast<std::vector<int32_t>*>(data)->resize(static_cast<size_t>(length));
        return length >= 0;
    };
    EXPECT_EQ(STATUS_OK,
              AParcel_readBoolArray(p.get(), &values, resize, [](void* data, size_t i, bool v) {
                  (*static_cast<std::vector<int32_t>*>(data))[i] = v ? 7 : 8;
              }));
    EXPECT_EQ((std::vector<int32_t>{7, 8}), values);
    StringList read;
    EXPECT_EQ(STATUS_OK,
              AParcel_readStringArray(
                      p.get(), &read,
                      [](void* data, int32_t length) {
                          static_cast<StringList*>(data)->resize(static_cast<size_t>(length));
                          return length >= 0;
                      },
                      [](void* data, size_t i, int32_t length, char** buffer) {
                          return allocString(&(*static_cast<StringList*>(data))[i], length, buffer);
                      }));
    // The allocator form keeps the NUL.
    EXPECT_EQ((StringList{std::string("a", 2), std::nullopt, std::string("", 1)}), read);
    EXPECT_EQ(STATUS_OK,
              AParcel_readParcelableArray(
                      p.get(), &values, resize, [](const AParcel* in, void* data, size_t i) {
                          return AParcel_readInt32(in,
                                                   &(*static_cast<std::vector<int32_t>*>(data))[i]);
                      }));
    EXPECT_EQ((std::vector<int32_t>{5, 6}), values);
    AIBinder* binder = reinterpret_cast<AIBinder*>(1);
    EXPECT_EQ(STATUS_OK, AParcel_readStrongBinder(p.get(), &binder));
    EXPECT_EQ(nullptr, binder);
    EXPECT_EQ(AParcel_getDataSize(p.get()), AParcel_getDataPosition(p.get()));
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

    AParcel_setDataPosition(p.get(), 0);
    ndk::SpAIBinder read;
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(p.get(), read.getR()));
    ASSERT_NE(nullptr, read.get());
    EXPECT_TRUE(AIBinder_isRemote(read.get()));
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

struct HostileCase {
    const char* name;
    const char* wire;
    binder_status_t expected;
    binder_status_t (*read)(const AParcel*);
};

class HostileReadTest : public testing::TestWithParam<HostileCase> {};

TEST_P(HostileReadTest, FailsWithoutSideEffects) {
    const HostileCase& c = GetParam();
    // Exact-size heap copy so ASan catches any read past the end.
    auto p = parcelOf(unhex(c.wire));
    gGiven = 0;
    EXPECT_EQ(c.expected, c.read(p.get()));
    EXPECT_EQ(0, gGiven);
    EXPECT_EQ(0, AParcel_getDataPosition(p.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Readers, HostileReadTest,
        testing::Values(
                HostileCase{"stringLengthBeyondData", "02000000 61000000", STATUS_BAD_VALUE,
                            readOneString},
                HostileCase{"stringNegativeLength", "feffffff 00000000", STATUS_BAD_VALUE,
                            readOneString},
                HostileCase{"stringHugeLength", "ffffff7f 00000000", STATUS_BAD_VALUE,
                            readOneString},
                HostileCase{"stringMissingNul", "01000000 61006200", STATUS_BAD_VALUE,
                            readOneString},
                HostileCase{"stringLoneSurrogate", "01000000 00d80000", STATUS_BAD_VALUE,
                            readOneString},
                HostileCase{"stringEmptyParcel", "", STATUS_NOT_ENOUGH_DATA, readOneString},
                HostileCase{"arrayNegativeLength", "fbffffff", STATUS_BAD_VALUE, readIntArray},
                HostileCase{"arrayHugeLength", "ffffff7f 01000000", STATUS_BAD_VALUE, readIntArray},
                HostileCase{"arrayShort", "03000000 01000000 02000000", STATUS_BAD_VALUE,
                            readIntArray},
                HostileCase{"stringArrayHuge", "ffffff7f", STATUS_BAD_VALUE, readStringArray},
                HostileCase{"stringArrayNegative", "f0ffffff", STATUS_BAD_VALUE, readStringArray},
                HostileCase{"binderTruncated", "01000000 07000000", STATUS_NOT_ENOUGH_DATA,
                            readBinder},
                HostileCase{"binderBadFlag", "02000000", STATUS_BAD_VALUE, readBinder},
                HostileCase{"binderUnknownId", "01000000 ffffffff ffffff7f 03000000",
                            STATUS_BAD_VALUE, readBinder},
                HostileCase{"statusMessageTruncated", "fdffffff 05000000 6100", STATUS_BAD_VALUE,
                            readStatus},
                HostileCase{"statusTraceSizeNegative", "fdffffff 00000000 00000000 ffffffff",
                            STATUS_BAD_VALUE, readStatus},
                HostileCase{"statusServiceSpecificMissingCode",
                            "f8ffffff 00000000 00000000 00000000", STATUS_NOT_ENOUGH_DATA,
                            readStatus}),
        [](const testing::TestParamInfo<HostileCase>& test) { return test.param.name; });

}  // namespace
