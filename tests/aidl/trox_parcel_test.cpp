// Wire encoding of the trox records: golden bytes, round trips and hostile input.
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <limits>

#include "trox_test_util.h"

using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using namespace trox_test;

namespace {

class NullCallback : public BnTroxCallback {
  public:
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>&) override {
        return ndk::ScopedAStatus::ok();
    }
};

TroxRequestData data(int64_t id, std::optional<std::string> value = std::nullopt,
                     std::optional<std::string> path = std::nullopt,
                     std::optional<std::string> extra = std::nullopt) {
    TroxRequestData d;
    d.res_Id = id;
    d.res_Value = std::move(value);
    d.res_Path = std::move(path);
    d.res_Extra = std::move(extra);
    return d;
}

TroxRequestParcel fullParcel() {
    TroxRequestParcel p;
    p.requestType = 7;
    p.requestData = {data(1, "v")};
    p.flag = true;
    p.param = -2;
    p.pid = 1234;
    p.duration = 0x0000000100000002LL;
    p.debugTags = std::vector<std::optional<std::string>>{"t", std::nullopt};
    p.handle = 9;
    p.pkg = "p";
    p.identity = "";
    p.values = std::vector<int32_t>{5, -6};
    return p;
}

template <typename T>
Bytes written(const T& value) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(value.writeToParcel(parcel.get()), STATUS_OK);
    return marshal(parcel.get());
}

template <typename T>
binder_status_t readBack(const Bytes& bytes, T* out) {
    ndk::ScopedAParcel parcel = parcelOf(bytes);
    return out->readFromParcel(parcel.get());
}

TEST(TroxRequestDataWire, GoldenBytesWithoutTexts) {
    Bytes want;
    put32(&want, 24);
    put64(&want, 0x00000000FFFFFFFBULL);
    putNull(&want);
    putNull(&want);
    putNull(&want);
    EXPECT_EQ(written(data(0x00000000FFFFFFFBLL)), want);
}

TEST(TroxRequestDataWire, GoldenBytesWithTexts) {
    Bytes want;
    put32(&want, 40);
    put64(&want, 42);
    putString(&want, "a");
    putString(&want, "");
    putString(&want, "xyz");
    EXPECT_EQ(written(data(42, "a", "", "xyz")), want);
    // Spot-check the helper against the documented literal forms.
    Bytes a;
    putString(&a, "a");
    EXPECT_EQ(a, (Bytes{1, 0, 0, 0, 0x61, 0, 0, 0}));
}

TEST(TroxRequestParcelWire, GoldenBytesEveryFieldSet) {
    TroxRequestParcel p = fullParcel();
    p.callback = ndk::SharedRefBase::make<NullCallback>();
    Bytes got = written(p);

    Bytes head;
    put32(&head, 0);  // size, patched below
    put32(&head, 7);
    put32(&head, 1);  // requestData length
    put32(&head, 1);  // element present
    put32(&head, 28);
    put64(&head, 1);
    putString(&head, "v");
    putNull(&head);
    putNull(&head);
    put32(&head, 1);  // flag
    put32(&head, static_cast<uint32_t>(-2));
    put32(&head, 1234);
    put64(&head, 0x0000000100000002ULL);
    put32(&head, 2);
    putString(&head, "t");
    putNull(&head);
    put32(&head, 9);
    put32(&head, 1);  // binder present
    Bytes tail;
    put32(&tail, 0x3f);  // vintf stability
    putString(&tail, "p");
    putString(&tail, "");
    put32(&tail, 2);
    put32(&tail, 5);
    put32(&tail, static_cast<uint32_t>(-6));

    const size_t total = head.size() + 8 + tail.size();
    ASSERT_EQ(got.size(), total);
    Bytes size;
    put32(&size, static_cast<uint32_t>(total));
    std::copy(size.begin(), size.end(), head.begin());
    EXPECT_EQ(Bytes(got.begin(), got.begin() + head.size()), head);
    EXPECT_EQ(Bytes(got.begin() + head.size() + 8, got.end()), tail);
}

TEST(TroxRequestDataWire, RoundTripTable) {
    const std::vector<TroxRequestData> cases = {
            data(0),
            data(0x00000000FFFFFFFBLL, "value", "/sys/x", "history"),
            data(-1, "", std::nullopt, ""),
            data(std::numeric_limits<int64_t>::min(), std::nullopt, "p"),
            data(5, "\xc3\xa9t\xc3\xa9 \xe2\x82\xac"),  // non-ASCII survives UTF-16
    };
    for (const auto& d : cases) {
        SCOPED_TRACE(d.toString());
        TroxRequestData back = data(99, "junk");
        ASSERT_EQ(readBack(written(d), &back), STATUS_OK);
        EXPECT_EQ(back, d);
    }
}

TEST(TroxRequestParcelWire, RoundTripEveryField) {
    TroxRequestParcel p = fullParcel();
    p.requestData.push_back(data(0x00000000FFFFFFFBLL, std::nullopt, "path", "x"));
    TroxRequestParcel back;
    ASSERT_EQ(readBack(written(p), &back), STATUS_OK);
    EXPECT_EQ(back, p);
    EXPECT_EQ(back.requestData.at(1).res_Id, 0x00000000FFFFFFFBLL);
    ASSERT_TRUE(back.debugTags.has_value());
    ASSERT_EQ(back.debugTags->size(), 2u);
    EXPECT_EQ(back.debugTags->at(0), std::optional<std::string>("t"));
    EXPECT_FALSE(back.debugTags->at(1).has_value());
    EXPECT_EQ(back.values, (std::optional<std::vector<int32_t>>{{5, -6}}));
}

TEST(TroxRequestParcelWire, RoundTripNullsAndEmpties) {
    TroxRequestParcel p;  // all optionals null, empty array
    TroxRequestParcel back = fullParcel();
    ASSERT_EQ(readBack(written(p), &back), STATUS_OK);
    EXPECT_EQ(back, p);
    EXPECT_FALSE(back.debugTags.has_value());
    EXPECT_FALSE(back.values.has_value());
    EXPECT_FALSE(back.pkg.has_value());
    EXPECT_EQ(back.callback, nullptr);
}

TEST(TroxRequestParcelWire, CallbackSurvivesRoundTrip) {
    auto cb = ndk::SharedRefBase::make<NullCallback>();
    TroxRequestParcel p;
    p.callback = cb;
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(p.writeToParcel(parcel.get()), STATUS_OK);
    AParcel_setDataPosition(parcel.get(), 0);
    TroxRequestParcel back;
    ASSERT_EQ(back.readFromParcel(parcel.get()), STATUS_OK);
    // The host kit hands binders read from a parcel out as proxies; only presence is checked.
    ASSERT_NE(back.callback, nullptr);
    EXPECT_NE(back.callback->asBinder().get(), nullptr);
}

TEST(TroxRequestDataWire, ReaderLeavesPositionAfterRecord) {
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(ndk::AParcel_writeData(parcel.get(), data(3, "a")), STATUS_OK);
    ASSERT_EQ(AParcel_writeInt32(parcel.get(), 0x5a5a), STATUS_OK);
    AParcel_setDataPosition(parcel.get(), 0);
    TroxRequestData back;
    ASSERT_EQ(ndk::AParcel_readData(parcel.get(), &back), STATUS_OK);
    int32_t sentinel = 0;
    ASSERT_EQ(AParcel_readInt32(parcel.get(), &sentinel), STATUS_OK);
    EXPECT_EQ(sentinel, 0x5a5a);
}

TEST(TroxRequestDataWire, NewerPeerExtraFieldIsSkipped) {
    Bytes b;
    put32(&b, 24 + 4);
    put64(&b, 77);
    putString(&b, "v");  // +4 over the null form
    putNull(&b);
    putNull(&b);
    put32(&b, 0xDEADBEEF);  // unknown trailing field
    put32(&b, 0x1234);      // next item
    b[0] = static_cast<uint8_t>(b.size() - 4);
    ndk::ScopedAParcel parcel = parcelOf(b);
    TroxRequestData back;
    ASSERT_EQ(back.readFromParcel(parcel.get()), STATUS_OK);
    EXPECT_EQ(back, data(77, "v"));
    int32_t next = 0;
    ASSERT_EQ(AParcel_readInt32(parcel.get(), &next), STATUS_OK);
    EXPECT_EQ(next, 0x1234);
}

TEST(TroxRequestDataWire, OlderPeerMissingFieldsKeepDefaults) {
    Bytes b;
    put32(&b, 12);
    put64(&b, 8);
    putString(&b, "not mine");  // belongs to whatever follows
    ndk::ScopedAParcel parcel = parcelOf(b);
    TroxRequestData back;
    ASSERT_EQ(back.readFromParcel(parcel.get()), STATUS_OK);
    EXPECT_EQ(back, data(8));
    EXPECT_EQ(AParcel_getDataPosition(parcel.get()), 12);
}

struct Hostile {
    const char* name;
    Bytes bytes;
};

Bytes dataWithSize(int32_t size) {
    Bytes b;
    put32(&b, static_cast<uint32_t>(size));
    put64(&b, 1);
    putNull(&b);
    putNull(&b);
    putNull(&b);
    return b;
}

TEST(TroxRequestDataWire, HostileInputIsAnError) {
    Bytes hugeString;
    put32(&hugeString, 24);
    put64(&hugeString, 1);
    put32(&hugeString, 0x7FFFFFF0);
    putNull(&hugeString);
    putNull(&hugeString);
    Bytes badStringLength = hugeString;
    badStringLength[12] = 0xFE;  // -2
    badStringLength[15] = 0xFF;
    const std::vector<Hostile> cases = {
            {"empty", {}},
            {"size word cut", {24, 0}},
            {"size zero", dataWithSize(0)},
            {"size three", dataWithSize(3)},
            {"size negative", dataWithSize(-1)},
            {"size min", dataWithSize(std::numeric_limits<int32_t>::min())},
            {"size past end", dataWithSize(1000)},
            {"size max", dataWithSize(std::numeric_limits<int32_t>::max())},
            {"huge string", hugeString},
            {"string length -2", badStringLength},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TroxRequestData back;
        EXPECT_NE(readBack(c.bytes, &back), STATUS_OK);
    }
}

TEST(TroxRequestParcelWire, EveryTruncationIsAnError) {
    const Bytes full = written(fullParcel());
    ASSERT_GT(full.size(), 40u);
    for (size_t n = 0; n < full.size(); ++n) {
        SCOPED_TRACE(n);
        TroxRequestParcel back;
        EXPECT_NE(readBack(Bytes(full.begin(), full.begin() + n), &back), STATUS_OK);
    }
}

// Offsets into the bytes of fullParcel(): requestData length word, debugTags, values.
constexpr size_t kRequestDataLength = 8;

size_t offsetOfDebugTags() {
    return 8 + 4 + 4 + 28 + 4 + 4 + 4 + 8;
}

TEST(TroxRequestParcelWire, HostileArrayLengthsAreErrors) {
    const Bytes full = written(fullParcel());
    const size_t values = full.size() - 12;
    struct Patch {
        const char* name;
        size_t offset;
        int32_t length;
    };
    const std::vector<Patch> patches = {
            {"requestData -2", kRequestDataLength, -2},
            {"requestData null", kRequestDataLength, -1},
            {"requestData huge", kRequestDataLength, 0x7FFFFFFF},
            {"requestData min", kRequestDataLength, std::numeric_limits<int32_t>::min()},
            {"requestData one too many", kRequestDataLength, 2},
            {"debugTags -5", offsetOfDebugTags(), -5},
            {"debugTags huge", offsetOfDebugTags(), 0x40000000},
            {"values -3", values, -3},
            {"values huge", values, 0x3FFFFFFF},
            {"values one too many", values, 3},
    };
    for (const auto& p : patches) {
        SCOPED_TRACE(p.name);
        Bytes b = full;
        Bytes word;
        put32(&word, static_cast<uint32_t>(p.length));
        std::copy(word.begin(), word.end(), b.begin() + static_cast<std::ptrdiff_t>(p.offset));
        TroxRequestParcel back;
        EXPECT_NE(readBack(b, &back), STATUS_OK);
    }
}

TEST(TroxRequestParcelWire, PatchOffsetsPointAtLengthWords) {
    // Guards the offsets above: they must hold the lengths fullParcel() writes.
    const Bytes full = written(fullParcel());
    auto at = [&](size_t o) {
        return static_cast<int32_t>(full[o] | full[o + 1] << 8 | full[o + 2] << 16 |
                                    full[o + 3] << 24);
    };
    EXPECT_EQ(at(kRequestDataLength), 1);
    EXPECT_EQ(at(offsetOfDebugTags()), 2);
    EXPECT_EQ(at(full.size() - 12), 2);
}

TEST(ParcelableValueWire, NullMarkerAndArrays) {
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(AParcel_writeInt32(parcel.get(), 0), STATUS_OK);
    AParcel_setDataPosition(parcel.get(), 0);
    TroxRequestData value;
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &value), STATUS_UNEXPECTED_NULL);

    AParcel_setDataPosition(parcel.get(), 0);
    std::optional<TroxRequestData> maybe = data(1);
    EXPECT_EQ(ndk::AParcel_readNullableData(parcel.get(), &maybe), STATUS_OK);
    EXPECT_FALSE(maybe.has_value());

    // An array whose element is marked null is refused for a non-null element type.
    Bytes b;
    put32(&b, 1);
    put32(&b, 0);
    ndk::ScopedAParcel arr = parcelOf(b);
    std::vector<TroxRequestData> list;
    EXPECT_NE(ndk::AParcel_readData(arr.get(), &list), STATUS_OK);
}

TEST(ParcelableValueWire, VectorRoundTripTable) {
    const std::vector<std::vector<TroxRequestData>> cases = {
            {}, {data(1)}, {data(1, "a"), data(2, std::nullopt, "b"), data(3, "", "", "")}};
    for (const auto& v : cases) {
        ndk::ScopedAParcel parcel(AParcel_create());
        ASSERT_EQ(ndk::AParcel_writeData(parcel.get(), v), STATUS_OK);
        Bytes b = marshal(parcel.get());
        ASSERT_GE(b.size(), 4u);
        EXPECT_EQ(b[0], v.size());
        AParcel_setDataPosition(parcel.get(), 0);
        std::vector<TroxRequestData> back{data(9)};
        ASSERT_EQ(ndk::AParcel_readData(parcel.get(), &back), STATUS_OK);
        EXPECT_EQ(back, v);
    }
}

TEST(RecordText, ToStringNamesEveryField) {
    TroxRequestParcel p = fullParcel();
    const std::string text = p.toString();
    for (const char* field :
         {"requestType: 7", "requestData: [TroxRequestData{res_Id: 1", "flag: true", "param: -2",
          "pid: 1234", "debugTags: [t, (null)]", "handle: 9", "callback: (null)", "pkg: p",
          "identity: ", "values: [5, -6]"}) {
        EXPECT_NE(text.find(field), std::string::npos) << field << " in " << text;
    }
}

TEST(RecordCompare, OrderingFollowsFieldOrder) {
    EXPECT_LT(data(1, "z"), data(2, "a"));
    EXPECT_LT(data(1), data(1, "a"));  // null sorts first
    EXPECT_GT(data(1, "b"), data(1, "a"));
    EXPECT_NE(data(1), data(1, ""));
    TroxRequestParcel a, b;
    b.callback = ndk::SharedRefBase::make<NullCallback>();
    EXPECT_NE(a, b);  // callbacks compare by pointer
    TroxRequestParcel c = b;
    EXPECT_EQ(b, c);
}

}  // namespace
