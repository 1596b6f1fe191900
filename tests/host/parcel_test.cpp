#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "binder_test_util.h"

namespace {

using binder_test::bytesOf;
using binder_test::parcelOf;
using binder_test::readString;

// Bytes as space-separated 4-byte groups, the way the wire layout is written down.
std::string hex(const std::vector<uint8_t>& bytes) {
    std::string out;
    char digits[3];
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0) out += ' ';
        snprintf(digits, sizeof(digits), "%02x", bytes[i]);
        out += digits;
    }
    return out;
}

std::vector<uint8_t> unhex(const std::string& text) {
    std::vector<uint8_t> out;
    for (size_t i = 0; i + 1 < text.size();) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        out.push_back(static_cast<uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
        i += 2;
    }
    return out;
}

std::string written(const std::function<void(AParcel*)>& write) {
    ndk::ScopedAParcel parcel(AParcel_create());
    write(parcel.get());
    return hex(bytesOf(parcel.get()));
}

struct StringCase {
    const char* name;
    const char* utf8;  // nullptr for a null string
    const char* wire;
};

class StringGoldenTest : public testing::TestWithParam<StringCase> {};

TEST_P(StringGoldenTest, EncodesAndDecodes) {
    const StringCase& c = GetParam();
    ndk::ScopedAParcel parcel(AParcel_create());
    const int32_t length = c.utf8 == nullptr ? -1 : static_cast<int32_t>(strlen(c.utf8));
    ASSERT_EQ(STATUS_OK, AParcel_writeString(parcel.get(), c.utf8, length));
    EXPECT_EQ(c.wire, hex(bytesOf(parcel.get())));

    auto back = parcelOf(unhex(c.wire));
    std::optional<std::string> text = "sentinel";
    ASSERT_EQ(STATUS_OK, readString(back.get(), &text));
    if (c.utf8 == nullptr) {
        EXPECT_FALSE(text.has_value());
    } else {
        EXPECT_EQ(c.utf8, text.value());
    }
    EXPECT_EQ(AParcel_getDataSize(back.get()), AParcel_getDataPosition(back.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Wire, StringGoldenTest,
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

TEST(ParcelGolden, Primitives) {
    EXPECT_EQ("feffffff", written([](AParcel* p) { AParcel_writeInt32(p, -2); }));
    EXPECT_EQ("ffffffff", written([](AParcel* p) { AParcel_writeUint32(p, 0xffffffffu); }));
    // 8-byte values are only 4-byte aligned.
    EXPECT_EQ("07000000 08070605 04030201", written([](AParcel* p) {
                  AParcel_writeInt32(p, 7);
                  AParcel_writeInt64(p, 0x0102030405060708);
              }));
    EXPECT_EQ("01000000 00000000", written([](AParcel* p) {
                  AParcel_writeBool(p, true);
                  AParcel_writeBool(p, false);
              }));
}

TEST(ParcelGolden, PrimitivesReadBack) {
    ndk::ScopedAParcel p(AParcel_create());
    AParcel_writeInt32(p.get(), -2);
    AParcel_writeInt64(p.get(), -3);
    AParcel_writeUint64(p.get(), 0x8000000000000001ull);
    AParcel_writeBool(p.get(), true);
    AParcel_setDataPosition(p.get(), 0);
    int32_t i32 = 0;
    int64_t i64 = 0;
    uint64_t u64 = 0;
    bool b = false;
    EXPECT_EQ(STATUS_OK, AParcel_readInt32(p.get(), &i32));
    EXPECT_EQ(STATUS_OK, AParcel_readInt64(p.get(), &i64));
    EXPECT_EQ(STATUS_OK, AParcel_readUint64(p.get(), &u64));
    EXPECT_EQ(STATUS_OK, AParcel_readBool(p.get(), &b));
    EXPECT_EQ(-2, i32);
    EXPECT_EQ(-3, i64);
    EXPECT_EQ(0x8000000000000001ull, u64);
    EXPECT_TRUE(b);
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, AParcel_readInt32(p.get(), &i32));
}

TEST(ParcelGolden, IntArrays) {
    const int32_t three[] = {1, 2, 3};
    const int64_t one[] = {1};
    EXPECT_EQ("ffffffff", written([](AParcel* p) { AParcel_writeInt32Array(p, nullptr, -1); }));
    EXPECT_EQ("00000000", written([&](AParcel* p) { AParcel_writeInt32Array(p, three, 0); }));
    EXPECT_EQ("03000000 01000000 02000000 03000000",
              written([&](AParcel* p) { AParcel_writeInt32Array(p, three, 3); }));
    EXPECT_EQ("01000000 01000000 00000000",
              written([&](AParcel* p) { AParcel_writeInt64Array(p, one, 1); }));
}

bool allocInts(void* data, int32_t length, int32_t** buffer) {
    auto* out = static_cast<std::optional<std::vector<int32_t>>*>(data);
    if (length < 0) {
        out->reset();
        return true;
    }
    out->emplace(static_cast<size_t>(length));
    *buffer = out->value().data();
    return true;
}

TEST(ParcelGolden, IntArraysReadBack) {
    std::optional<std::vector<int32_t>> values;
    auto p = parcelOf(unhex("03000000 01000000 02000000 03000000"));
    ASSERT_EQ(STATUS_OK, AParcel_readInt32Array(p.get(), &values, allocInts));
    EXPECT_EQ((std::vector<int32_t>{1, 2, 3}), values.value());

    auto null = parcelOf(unhex("ffffffff"));
    ASSERT_EQ(STATUS_OK, AParcel_readInt32Array(null.get(), &values, allocInts));
    EXPECT_FALSE(values.has_value());

    // A reader that refuses null, as a required array does.
    auto required = [](void*, int32_t length, int32_t**) { return length >= 0; };
    AParcel_setDataPosition(null.get(), 0);
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, AParcel_readInt32Array(null.get(), nullptr, required));
}

TEST(ParcelGolden, BoolArray) {
    const bool values[] = {true, false};
    auto getter = [](const void* data, size_t i) { return static_cast<const bool*>(data)[i]; };
    EXPECT_EQ("02000000 01000000 00000000",
              written([&](AParcel* p) { AParcel_writeBoolArray(p, values, 2, getter); }));

    auto p = parcelOf(unhex("02000000 01000000 00000000"));
    std::vector<bool> out;
    auto allocator = [](void* data, int32_t length) {
        static_cast<std::vector<bool>*>(data)->assign(static_cast<size_t>(length), true);
        return length >= 0;
    };
    auto setter = [](void* data, size_t i, bool v) {
        (*static_cast<std::vector<bool>*>(data))[i] = v;
    };
    ASSERT_EQ(STATUS_OK, AParcel_readBoolArray(p.get(), &out, allocator, setter));
    EXPECT_EQ((std::vector<bool>{true, false}), out);
}

using StringList = std::vector<std::optional<std::string>>;

TEST(ParcelGolden, StringArrayWithNullEntry) {
    const StringList values = {"a", std::nullopt, ""};
    auto getter = [](const void* data, size_t i, int32_t* length) -> const char* {
        const auto& entry = (*static_cast<const StringList*>(data))[i];
        *length = entry ? static_cast<int32_t>(entry->size()) : -1;
        return entry ? entry->c_str() : nullptr;
    };
    const std::string wire = "03000000 01000000 61000000 ffffffff 00000000 00000000";
    EXPECT_EQ(wire, written([&](AParcel* p) { AParcel_writeStringArray(p, &values, 3, getter); }));

    StringList out;
    auto allocator = [](void* data, int32_t length) {
        if (length < 0) return false;
        static_cast<StringList*>(data)->resize(static_cast<size_t>(length));
        return true;
    };
    auto elementAllocator = [](void* data, size_t i, int32_t length, char** buffer) {
        return binder_test::allocString(&(*static_cast<StringList*>(data))[i], length, buffer);
    };
    auto p = parcelOf(unhex(wire));
    ASSERT_EQ(STATUS_OK, AParcel_readStringArray(p.get(), &out, allocator, elementAllocator));
    ASSERT_EQ(3u, out.size());
    EXPECT_EQ(std::string("a", 2), out[0].value());  // allocator form keeps the NUL
    EXPECT_FALSE(out[1].has_value());
    EXPECT_EQ(std::string("", 1), out[2].value());
}

TEST(ParcelGolden, ParcelableArrayUsesElementCallbacks) {
    const std::vector<int32_t> values = {5, 6};
    auto writer = [](AParcel* p, const void* data, size_t i) {
        return AParcel_writeInt32(p, (*static_cast<const std::vector<int32_t>*>(data))[i]);
    };
    EXPECT_EQ("02000000 05000000 06000000",
              written([&](AParcel* p) { AParcel_writeParcelableArray(p, &values, 2, writer); }));

    std::vector<int32_t> out;
    auto allocator = [](void* data, int32_t length) {
        static_cast<std::vector<int32_t>*>(data)->resize(static_cast<size_t>(length));
        return length >= 0;
    };
    auto reader = [](const AParcel* p, void* data, size_t i) {
        return AParcel_readInt32(p, &(*static_cast<std::vector<int32_t>*>(data))[i]);
    };
    auto p = parcelOf(unhex("02000000 05000000 06000000"));
    ASSERT_EQ(STATUS_OK, AParcel_readParcelableArray(p.get(), &out, allocator, reader));
    EXPECT_EQ(values, out);
}

TEST(ParcelGolden, BinderObjectLayout) {
    binder_test::EchoState state;
    ndk::SpAIBinder local = binder_test::newEcho(&state);
    AIBinder_markVintfStability(local.get());
    ndk::ScopedAParcel p(AParcel_create());
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(p.get(), local.get()));
    ASSERT_EQ(STATUS_OK, AParcel_writeStrongBinder(p.get(), nullptr));
    std::vector<uint8_t> bytes = bytesOf(p.get());
    ASSERT_EQ(20u, bytes.size());
    const std::string text = hex(bytes);
    EXPECT_EQ("01000000", text.substr(0, 8));            // present
    EXPECT_NE("00000000 00000000", text.substr(9, 17));  // object id
    EXPECT_EQ("3f000000 00000000", text.substr(27));     // stability word, then the null binder

    AParcel_setDataPosition(p.get(), 0);
    ndk::SpAIBinder first;
    ndk::SpAIBinder second;
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(p.get(), first.getR()));
    ASSERT_EQ(STATUS_OK, AParcel_readStrongBinder(p.get(), second.getR()));
    ASSERT_NE(nullptr, first.get());
    EXPECT_TRUE(AIBinder_isRemote(first.get()));
    EXPECT_EQ(nullptr, second.get());
}

TEST(ParcelGolden, NullBinderIsOneWord) {
    EXPECT_EQ("00000000", written([](AParcel* p) { AParcel_writeStrongBinder(p, nullptr); }));
}

TEST(ParcelWrite, RejectsInvalidUtf8) {
    for (const char* bad : {"\xff", "\xc0\x80", "\xed\xa0\x80", "\xe2\x82", "\xf4\x90\x80\x80"}) {
        ndk::ScopedAParcel p(AParcel_create());
        EXPECT_EQ(STATUS_BAD_VALUE,
                  AParcel_writeString(p.get(), bad, static_cast<int32_t>(strlen(bad))))
                << hex(std::vector<uint8_t>(bad, bad + strlen(bad)));
    }
}

TEST(ParcelPosition, SetDataPositionBounds) {
    ndk::ScopedAParcel p(AParcel_create());
    AParcel_writeInt32(p.get(), 1);
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(p.get(), -1));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(p.get(), 5));
    EXPECT_EQ(STATUS_OK, AParcel_setDataPosition(p.get(), 4));
    EXPECT_EQ(STATUS_OK, AParcel_setDataPosition(p.get(), 0));
    // Writing after rewinding overwrites in place, which size-prefixed records rely on.
    AParcel_writeInt32(p.get(), 9);
    EXPECT_EQ(4, AParcel_getDataSize(p.get()));
    EXPECT_EQ("09000000", hex(bytesOf(p.get())));
}

TEST(ParcelPosition, MarshalRejectsOutOfRange) {
    ndk::ScopedAParcel p(AParcel_create());
    AParcel_writeInt32(p.get(), 1);
    uint8_t buffer[8] = {};
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_marshal(p.get(), buffer, 2, 4));
    EXPECT_EQ(STATUS_OK, AParcel_marshal(p.get(), buffer, 2, 2));
}

TEST(ParcelPosition, AppendFromCopiesRange) {
    ndk::ScopedAParcel from(AParcel_create());
    AParcel_writeInt32(from.get(), 1);
    AParcel_writeInt32(from.get(), 2);
    ndk::ScopedAParcel to(AParcel_create());
    EXPECT_EQ(STATUS_OK, AParcel_appendFrom(from.get(), to.get(), 4, 4));
    EXPECT_EQ("02000000", hex(bytesOf(to.get())));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_appendFrom(from.get(), to.get(), 4, 8));
}

// Hostile input: each reader must fail cleanly, leave the position where it was and never ask
// an allocator for a length the data cannot back.
struct HostileCase {
    const char* name;
    const char* wire;
    binder_status_t expected;
    std::function<binder_status_t(const AParcel*, int* allocations)> read;
};

int gAllocations = 0;

bool countingIntAlloc(void*, int32_t length, int32_t** buffer) {
    ++gAllocations;
    static int32_t storage[4];
    *buffer = length <= 4 ? storage : nullptr;
    return length <= 4;
}

binder_status_t readIntArray(const AParcel* p, int* allocations) {
    gAllocations = 0;
    binder_status_t s = AParcel_readInt32Array(p, nullptr, countingIntAlloc);
    *allocations = gAllocations;
    return s;
}

binder_status_t readOneString(const AParcel* p, int* allocations) {
    std::optional<std::string> out;
    binder_status_t s = readString(p, &out);
    *allocations = out.has_value() ? 1 : 0;
    return s;
}

binder_status_t readStrings(const AParcel* p, int* allocations) {
    gAllocations = 0;
    auto allocator = [](void*, int32_t) {
        ++gAllocations;
        return true;
    };
    auto element = [](void*, size_t, int32_t, char**) { return false; };
    binder_status_t s = AParcel_readStringArray(p, nullptr, allocator, element);
    *allocations = gAllocations;
    return s;
}

class HostileReadTest : public testing::TestWithParam<HostileCase> {};

TEST_P(HostileReadTest, FailsWithoutSideEffects) {
    const HostileCase& c = GetParam();
    // Exact-size heap copy so ASan catches any read past the end.
    auto p = parcelOf(unhex(c.wire));
    int allocations = -1;
    EXPECT_EQ(c.expected, c.read(p.get(), &allocations));
    EXPECT_EQ(0, allocations);
    EXPECT_EQ(0, AParcel_getDataPosition(p.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Readers, HostileReadTest,
        testing::Values(
                HostileCase{"int32Truncated", "0100", STATUS_NOT_ENOUGH_DATA,
                            [](const AParcel* p, int* a) {
                                int32_t v;
                                *a = 0;
                                return AParcel_readInt32(p, &v);
                            }},
                HostileCase{"int64Truncated", "01000000", STATUS_NOT_ENOUGH_DATA,
                            [](const AParcel* p, int* a) {
                                int64_t v;
                                *a = 0;
                                return AParcel_readInt64(p, &v);
                            }},
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
                HostileCase{"int64ArrayShort", "01000000 01000000", STATUS_BAD_VALUE,
                            [](const AParcel* p, int* a) {
                                *a = 0;
                                auto alloc = [](void*, int32_t, int64_t**) {
                                    ++gAllocations;
                                    return false;
                                };
                                gAllocations = 0;
                                binder_status_t s = AParcel_readInt64Array(p, nullptr, alloc);
                                *a = gAllocations;
                                return s;
                            }},
                HostileCase{"stringArrayHuge", "ffffff7f", STATUS_BAD_VALUE, readStrings},
                HostileCase{"stringArrayNegative", "f0ffffff", STATUS_BAD_VALUE, readStrings},
                HostileCase{"binderTruncated", "01000000 07000000", STATUS_NOT_ENOUGH_DATA,
                            [](const AParcel* p, int* a) {
                                AIBinder* b = nullptr;
                                binder_status_t s = AParcel_readStrongBinder(p, &b);
                                *a = b != nullptr;
                                return s;
                            }},
                HostileCase{"binderBadFlag", "02000000", STATUS_BAD_VALUE,
                            [](const AParcel* p, int* a) {
                                AIBinder* b = nullptr;
                                binder_status_t s = AParcel_readStrongBinder(p, &b);
                                *a = b != nullptr;
                                return s;
                            }},
                HostileCase{"binderUnknownId", "01000000 ffffffff ffffff7f 03000000",
                            STATUS_BAD_VALUE,
                            [](const AParcel* p, int* a) {
                                AIBinder* b = nullptr;
                                binder_status_t s = AParcel_readStrongBinder(p, &b);
                                *a = b != nullptr;
                                return s;
                            }},
                HostileCase{"statusMessageTruncated", "fdffffff 05000000 6100", STATUS_BAD_VALUE,
                            [](const AParcel* p, int* a) {
                                AStatus* st = nullptr;
                                binder_status_t s = AParcel_readStatusHeader(p, &st);
                                *a = st != nullptr;
                                return s;
                            }},
                HostileCase{"statusTraceSizeNegative", "fdffffff 00000000 00000000 ffffffff",
                            STATUS_BAD_VALUE,
                            [](const AParcel* p, int* a) {
                                AStatus* st = nullptr;
                                binder_status_t s = AParcel_readStatusHeader(p, &st);
                                *a = st != nullptr;
                                return s;
                            }},
                HostileCase{"statusServiceSpecificMissingCode",
                            "f8ffffff 00000000 00000000 00000000", STATUS_NOT_ENOUGH_DATA,
                            [](const AParcel* p, int* a) {
                                AStatus* st = nullptr;
                                binder_status_t s = AParcel_readStatusHeader(p, &st);
                                *a = st != nullptr;
                                return s;
                            }}),
        [](const testing::TestParamInfo<HostileCase>& test) { return test.param.name; });

}  // namespace
