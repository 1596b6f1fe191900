// The parcel's wire layout, what reads it back, and hostile input.
#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "binder_test_util.h"

namespace {

using namespace binder_test;
using StringList = std::vector<std::optional<std::string>>;
using Ints = std::optional<std::vector<int32_t>>;

// What write puts in a parcel must be wire; read must find the values again in wire, consuming it
// all.
struct WireCase {
    std::string name;
    std::function<void(AParcel*)> write;
    std::string wire;
    std::function<bool(const AParcel*)> read;
};

WireCase stringCase(std::string name, const char* utf8, std::string wire) {
    const int32_t length = utf8 == nullptr ? -1 : static_cast<int32_t>(strlen(utf8));
    return {std::move(name), [=](AParcel* p) { AParcel_writeString(p, utf8, length); },
            std::move(wire),
            [=](const AParcel* p) {
                std::optional<std::string> text = "sentinel";
                return readString(p, &text) == STATUS_OK &&
                       (utf8 == nullptr ? !text.has_value() : text == utf8);
            }};
}

WireCase intArrayCase(std::string name, Ints values, std::string wire) {
    return {std::move(name),
            [=](AParcel* p) {
                AParcel_writeInt32Array(p, values ? values->data() : nullptr,
                                        values ? static_cast<int32_t>(values->size()) : -1);
            },
            std::move(wire),
            [=](const AParcel* p) {
                Ints read = std::vector<int32_t>{42};
                return AParcel_readInt32Array(p, &read, allocArray<int32_t>) == STATUS_OK &&
                       read == values;
            }};
}

const StringList kStrings = {"a", std::nullopt, ""};
const std::vector<int32_t> kElements = {5, 6};

const char* stringAt(const void* data, size_t i, int32_t* length) {
    const auto& entry = (*static_cast<const StringList*>(data))[i];
    *length = entry ? static_cast<int32_t>(entry->size()) : -1;
    return entry ? entry->c_str() : nullptr;
}

bool readStrings(const AParcel* p) {
    StringList out;
    auto resize = [](void* data, int32_t length) {
        static_cast<StringList*>(data)->resize(static_cast<size_t>(length));
        return length >= 0;
    };
    auto element = [](void* data, size_t i, int32_t length, char** buffer) {
        return allocString(&(*static_cast<StringList*>(data))[i], length, buffer);
    };
    // The allocator form keeps the NUL.
    return AParcel_readStringArray(p, &out, resize, element) == STATUS_OK &&
           out == StringList{std::string("a", 2), std::nullopt, std::string("", 1)};
}

bool readElements(const AParcel* p) {
    std::vector<int32_t> out;
    auto resize = [](void* data, int32_t length) {
        static_cast<std::vector<int32_t>*>(data)->resize(static_cast<size_t>(length));
        return length >= 0;
    };
    auto reader = [](const AParcel* in, void* data, size_t i) {
        return AParcel_readInt32(in, &(*static_cast<std::vector<int32_t>*>(data))[i]);
    };
    return AParcel_readParcelableArray(p, &out, resize, reader) == STATUS_OK && out == kElements;
}

bool readBools(const AParcel* p) {
    std::vector<bool> out;
    auto resize = [](void* data, int32_t length) {
        static_cast<std::vector<bool>*>(data)->assign(static_cast<size_t>(length), true);
        return length >= 0;
    };
    auto set = [](void* data, size_t i, bool v) {
        (*static_cast<std::vector<bool>*>(data))[i] = v;
    };
    return AParcel_readBoolArray(p, &out, resize, set) == STATUS_OK &&
           out == std::vector<bool>{true, false};
}

class WireTest : public testing::TestWithParam<WireCase> {};

TEST_P(WireTest, WritesTheGoldenBytesAndReadsThemBack) {
    const WireCase& c = GetParam();
    ndk::ScopedAParcel written(AParcel_create());
    c.write(written.get());
    EXPECT_EQ(c.wire, hex(bytesOf(written.get())));
    ndk::ScopedAParcel back = parcelOf(unhex(c.wire));
    EXPECT_TRUE(c.read(back.get()));
    EXPECT_EQ(AParcel_getDataSize(back.get()), AParcel_getDataPosition(back.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Golden, WireTest,
        testing::Values(
                stringCase("emptyString", "", "00000000 00000000"),
                stringCase("a", "a", "01000000 61000000"),
                stringCase("abc", "abc", "03000000 61006200 63000000"),
                stringCase("eAcute", "\xc3\xa9", "01000000 e9000000"),
                stringCase("euroBetweenAscii",
                           "a\xe2\x82\xac"
                           "b",
                           "03000000 6100ac20 62000000"),
                stringCase("beyondBmp", "\xf0\x9f\x98\x80", "02000000 3dd800de 00000000"),
                stringCase("nullString", nullptr, "ffffffff"),
                // 8-byte values are only 4-byte aligned.
                WireCase{"int32ThenInt64",
                         [](AParcel* p) {
                             AParcel_writeInt32(p, -2);
                             AParcel_writeInt64(p, 0x0102030405060708);
                         },
                         "feffffff 08070605 04030201",
                         [](const AParcel* p) {
                             int32_t i = 0;
                             int64_t l = 0;
                             return AParcel_readInt32(p, &i) == STATUS_OK && i == -2 &&
                                    AParcel_readInt64(p, &l) == STATUS_OK &&
                                    l == 0x0102030405060708;
                         }},
                WireCase{"uint64AndBools",
                         [](AParcel* p) {
                             AParcel_writeUint64(p, 0x8000000000000001ull);
                             AParcel_writeBool(p, true);
                             AParcel_writeBool(p, false);
                         },
                         "01000000 00000080 01000000 00000000",
                         [](const AParcel* p) {
                             uint64_t u = 0;
                             bool yes = false, no = true;
                             return AParcel_readUint64(p, &u) == STATUS_OK &&
                                    u == 0x8000000000000001ull &&
                                    AParcel_readBool(p, &yes) == STATUS_OK && yes &&
                                    AParcel_readBool(p, &no) == STATUS_OK && !no;
                         }},
                intArrayCase("nullIntArray", std::nullopt, "ffffffff"),
                intArrayCase("emptyIntArray", std::vector<int32_t>{}, "00000000"),
                intArrayCase("intArray", std::vector<int32_t>{1, 2, 3},
                             "03000000 01000000 02000000 03000000"),
                WireCase{"int64Array",
                         [](AParcel* p) {
                             const int64_t one[] = {-1};
                             AParcel_writeInt64Array(p, one, 1);
                         },
                         "01000000 ffffffff ffffffff",
                         [](const AParcel* p) {
                             std::optional<std::vector<int64_t>> v;
                             return AParcel_readInt64Array(p, &v, allocArray<int64_t>) ==
                                            STATUS_OK &&
                                    v == std::vector<int64_t>{-1};
                         }},
                WireCase{"boolArray",
                         [](AParcel* p) {
                             const bool values[] = {true, false};
                             AParcel_writeBoolArray(p, values, 2, [](const void* data, size_t i) {
                                 return static_cast<const bool*>(data)[i];
                             });
                         },
                         "02000000 01000000 00000000", readBools},
                WireCase{"stringArrayWithNullEntry",
                         [](AParcel* p) { AParcel_writeStringArray(p, &kStrings, 3, stringAt); },
                         "03000000 01000000 61000000 ffffffff 00000000 00000000", readStrings},
                WireCase{"parcelableArrayUsesElementCallbacks",
                         [](AParcel* p) {
                             AParcel_writeParcelableArray(
                                     p, &kElements, 2,
                                     [](AParcel* out, const void* data, size_t i) {
                                         return AParcel_writeInt32(
                                                 out, (*static_cast<const std::vector<int32_t>*>(
                                                              data))[i]);
                                     });
                         },
                         "02000000 05000000 06000000", readElements},
                WireCase{"nullBinder", [](AParcel* p) { AParcel_writeStrongBinder(p, nullptr); },
                         "00000000",
                         [](const AParcel* p) {
                             AIBinder* b = reinterpret_cast<AIBinder*>(1);
                             return AParcel_readStrongBinder(p, &b) == STATUS_OK && b == nullptr;
                         }}),
        [](const testing::TestParamInfo<WireCase>& test) { return test.param.name; });

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
// an allocator for a length the data cannot back. A reader returns its status and counts in
// *allocations what it was given.
using Reader = binder_status_t (*)(const AParcel*, int* allocations);
struct HostileCase {
    const char* name;
    const char* wire;
    binder_status_t expected;
    Reader read;
};

int gAllocations = 0;

binder_status_t readInt64(const AParcel* p, int*) {
    int64_t v;
    return AParcel_readInt64(p, &v);
}

binder_status_t readIntArray(const AParcel* p, int* allocations) {
    auto alloc = [](void*, int32_t, int32_t**) { return ++gAllocations, false; };
    binder_status_t s = AParcel_readInt32Array(p, nullptr, alloc);
    *allocations = gAllocations;
    return s;
}

binder_status_t readInt64Array(const AParcel* p, int* allocations) {
    auto alloc = [](void*, int32_t, int64_t**) { return ++gAllocations, false; };
    binder_status_t s = AParcel_readInt64Array(p, nullptr, alloc);
    *allocations = gAllocations;
    return s;
}

binder_status_t readOneString(const AParcel* p, int* allocations) {
    std::optional<std::string> out;
    binder_status_t s = readString(p, &out);
    *allocations = out.has_value();
    return s;
}

binder_status_t readStringArray(const AParcel* p, int* allocations) {
    auto alloc = [](void*, int32_t) { return ++gAllocations, true; };
    auto element = [](void*, size_t, int32_t, char**) { return false; };
    binder_status_t s = AParcel_readStringArray(p, nullptr, alloc, element);
    *allocations = gAllocations;
    return s;
}

binder_status_t readBinder(const AParcel* p, int* allocations) {
    AIBinder* b = nullptr;
    binder_status_t s = AParcel_readStrongBinder(p, &b);
    *allocations = b != nullptr;
    return s;
}

binder_status_t readStatus(const AParcel* p, int* allocations) {
    AStatus* status = nullptr;
    binder_status_t s = AParcel_readStatusHeader(p, &status);
    *allocations = status != nullptr;
    return s;
}

class HostileReadTest : public testing::TestWithParam<HostileCase> {};

TEST_P(HostileReadTest, FailsWithoutSideEffects) {
    const HostileCase& c = GetParam();
    // Exact-size heap copy so ASan catches any read past the end.
    auto p = parcelOf(unhex(c.wire));
    int allocations = 0;
    gAllocations = 0;
    EXPECT_EQ(c.expected, c.read(p.get(), &allocations));
    EXPECT_EQ(0, allocations);
    EXPECT_EQ(0, AParcel_getDataPosition(p.get()));
}

INSTANTIATE_TEST_SUITE_P(
        Readers, HostileReadTest,
        testing::Values(
                HostileCase{"int64Truncated", "01000000", STATUS_NOT_ENOUGH_DATA, readInt64},
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
                            readInt64Array},
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
