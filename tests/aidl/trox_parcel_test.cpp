// Wire encoding of the trox records and of the C++ parcel helpers under them: golden bytes, round
// trips, hostile input and text form.
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <tuple>

#include "RecordingCallback.h"

using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using vexal::testing::RecordingCallback;

namespace {

using Bytes = std::vector<uint8_t>;
constexpr int64_t kWideId = 0x00000000FFFFFFFBLL;  // a 32-bit id, zero-extended

// Bytes as space-separated little-endian 4-byte words, the way the wire layout is written down.
std::string hex(const Bytes& bytes) {
    std::string out;
    char digits[3];
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0) out += ' ';
        snprintf(digits, sizeof(digits), "%02x", bytes[i]);
        out += digits;
    }
    return out;
}

Bytes unhex(const std::string& text) {
    Bytes out;
    for (size_t i = 0; i + 1 < text.size(); i += text[i] == ' ' ? 1 : 2) {
        if (text[i] != ' ')
            out.push_back(static_cast<uint8_t>(std::stoi(text.substr(i, 2), 0, 16)));
    }
    return out;
}

Bytes marshal(const AParcel* parcel) {
    Bytes out(static_cast<size_t>(AParcel_getDataSize(parcel)));
    if (AParcel_marshal(parcel, out.data(), 0, out.size()) != STATUS_OK) out.clear();
    return out;
}

ndk::ScopedAParcel parcelOf(const Bytes& bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size());
    AParcel_setDataPosition(parcel.get(), 0);
    return parcel;
}

template <typename T>
Bytes written(const T& record) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(record.writeToParcel(parcel.get()), STATUS_OK);
    return marshal(parcel.get());
}

template <typename T>
binder_status_t readRecord(const Bytes& bytes, T* out) {
    return out->readFromParcel(parcelOf(bytes).get());
}

// Through the helpers, which add the null markers records and arrays travel with.
template <typename T>
binder_status_t readValue(const std::string& wire, T* out) {
    return ndk::AParcel_readData(parcelOf(unhex(wire)).get(), out);
}

TroxRequestData data(int64_t id, std::optional<std::string> value = std::nullopt,
                     std::optional<std::string> path = std::nullopt,
                     std::optional<std::string> extra = std::nullopt) {
    return {id, std::move(value), std::move(path), std::move(extra)};
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

TEST(TroxRequestDataWire, GoldenBytesAndRoundTrips) {
    const std::pair<TroxRequestData, const char*> cases[] = {
            {data(kWideId), "18000000 fbffffff 00000000 ffffffff ffffffff ffffffff"},
            {data(42, "a", "", "xyz"),
             "28000000 2a000000 00000000 01000000 61000000 00000000 00000000 03000000 78007900 "
             "7a000000"},
            {data(-1, "", std::nullopt, std::string("a\0b", 3)), nullptr},
            {data(std::numeric_limits<int64_t>::min(), std::nullopt, "p"), nullptr},
            {data(5, "\xc3\xa9t\xc3\xa9 \xe2\x82\xac"), nullptr},  // non-ASCII survives UTF-16
    };
    for (const auto& [record, golden] : cases) {
        SCOPED_TRACE(record.toString());
        const Bytes bytes = written(record);
        if (golden) {
            EXPECT_EQ(hex(bytes), golden);
        }
        TroxRequestData back = data(99, "junk");
        ASSERT_EQ(readRecord(bytes, &back), STATUS_OK);
        EXPECT_EQ(back, record);
    }
}

TEST(TroxRequestParcelWire, GoldenBytesEveryFieldSet) {
    TroxRequestParcel p = fullParcel();
    p.callback = ndk::SharedRefBase::make<RecordingCallback>();
    Bytes got = written(p);
    ASSERT_EQ(got.size(), 128u);
    std::fill(got.begin() + 88, got.begin() + 96, 0);  // the binder object's own words
    EXPECT_EQ(hex(got),
              "80000000 07000000 01000000 01000000 1c000000 01000000 00000000 01000000 76000000 "
              "ffffffff ffffffff 01000000 feffffff d2040000 02000000 01000000 02000000 01000000 "
              "74000000 ffffffff 09000000 01000000 00000000 00000000 3f000000 01000000 70000000 "
              "00000000 00000000 02000000 05000000 faffffff");
}

TEST(TroxRequestParcelWire, RoundTripsOverOtherContent) {
    TroxRequestParcel full = fullParcel();
    full.requestData.push_back(data(kWideId, std::nullopt, "path", "x"));
    const TroxRequestParcel empty;  // all optionals null, empty array
    for (const auto& [sent, junk] : {std::pair{full, empty}, std::pair{empty, full}}) {
        TroxRequestParcel back = junk;
        ASSERT_EQ(readRecord(written(sent), &back), STATUS_OK);
        EXPECT_EQ(back, sent);
    }
}

// The size word lets a reader skip fields a newer peer added and keep defaults for ones an older
// peer did not send, then carry on after the record.
TEST(TroxRequestDataWire, OtherVersionsOfTheRecord) {
    const std::tuple<const char*, TroxRequestData, int32_t> cases[] = {
            // wire, record, end
            {"20000000 4d000000 00000000 01000000 76000000 ffffffff ffffffff efbeadde 34120000",
             data(77, "v"), 32},
            {"0c000000 08000000 00000000 01000000 78000000", data(8), 12},
    };
    for (const auto& [wire, want, end] : cases) {
        SCOPED_TRACE(wire);
        ndk::ScopedAParcel parcel = parcelOf(unhex(wire));
        TroxRequestData back;
        ASSERT_EQ(back.readFromParcel(parcel.get()), STATUS_OK);
        EXPECT_EQ(back, want);
        EXPECT_EQ(AParcel_getDataPosition(parcel.get()), end);
    }
}

TEST(TroxRequestDataWire, HostileInputIsAnError) {
    const std::string rest = " 01000000 00000000 ffffffff ffffffff ffffffff";
    const std::string cases[] = {
            "",
            "1800",             // size word cut
            "00000000" + rest,  // sizes that cannot hold the record or pass the end
            "03000000" + rest,
            "ffffffff" + rest,
            "00000080" + rest,
            "e8030000" + rest,
            "ffffff7f" + rest,
            "18000000 01000000 00000000 f0ffff7f ffffffff ffffffff",  // huge string
            "18000000 01000000 00000000 feffffff ffffffff ffffffff",  // string length -2
    };
    for (const std::string& wire : cases) {
        TroxRequestData back;
        EXPECT_NE(readRecord(unhex(wire), &back), STATUS_OK) << wire;
    }
}

TEST(TroxRequestParcelWire, EveryTruncationIsAnError) {
    const Bytes full = written(fullParcel());
    for (size_t n = 0; n < full.size(); ++n) {
        TroxRequestParcel back;
        EXPECT_NE(readRecord(Bytes(full.begin(), full.begin() + n), &back), STATUS_OK) << n;
    }
}

TEST(TroxRequestParcelWire, HostileArrayLengthsAreErrors) {
    const Bytes full = written(fullParcel());
    const size_t values = full.size() - 12;
    // {offset of a length word (requestData, debugTags, values), what it holds, what it gets}
    const std::tuple<size_t, const char*, const char*> patches[] = {
            {8, "01000000", "feffffff"},      {8, "01000000", "ffffffff"},
            {8, "01000000", "ffffff7f"},      {8, "01000000", "00000080"},
            {8, "01000000", "02000000"},      {64, "02000000", "fbffffff"},
            {64, "02000000", "00000040"},     {values, "02000000", "fdffffff"},
            {values, "02000000", "ffffff3f"}, {values, "02000000", "03000000"},
    };
    for (const auto& [offset, was, length] : patches) {
        SCOPED_TRACE(std::to_string(offset) + " " + length);
        Bytes b = full;
        const auto at = b.begin() + static_cast<std::ptrdiff_t>(offset);
        ASSERT_EQ(hex(Bytes(at, at + 4)), was);
        const Bytes word = unhex(length);
        std::copy(word.begin(), word.end(), at);
        TroxRequestParcel back;
        EXPECT_NE(readRecord(b, &back), STATUS_OK);
    }
}

TEST(ParcelHelpers, NullMarkers) {
    // 0 marks an absent record, -1 an absent string or array; only nullable readers take them.
    TroxRequestData record;
    EXPECT_EQ(readValue("00000000", &record), STATUS_UNEXPECTED_NULL);
    std::optional<TroxRequestData> maybe = data(1);
    EXPECT_EQ(ndk::AParcel_readNullableData(parcelOf(unhex("00000000")).get(), &maybe), STATUS_OK);
    EXPECT_FALSE(maybe.has_value());
    std::vector<TroxRequestData> records;
    EXPECT_NE(readValue("01000000 00000000", &records), STATUS_OK);  // a null element
    EXPECT_EQ(readValue("ffffffff", &records), STATUS_UNEXPECTED_NULL);
    std::string text;
    EXPECT_EQ(readValue("ffffffff", &text), STATUS_UNEXPECTED_NULL);
    std::vector<int32_t> ints;
    EXPECT_EQ(readValue("ffffffff", &ints), STATUS_UNEXPECTED_NULL);
}

// Interfaces keep the device's leniency: a null one is written and read as a null binder by both
// the required and the nullable helpers, and the receiver decides. Raw binders do not.
TEST(ParcelHelpers, NullInterfacesTravelAsNullBinders) {
    ndk::ScopedAParcel parcel(AParcel_create());
    std::shared_ptr<ITroxCallback> none;
    ASSERT_EQ(ndk::AParcel_writeData(parcel.get(), none), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_writeNullableData(parcel.get(), none), STATUS_OK);
    EXPECT_EQ(hex(marshal(parcel.get())), "00000000 00000000");
    AParcel_setDataPosition(parcel.get(), 0);
    std::shared_ptr<ITroxCallback> first = ndk::SharedRefBase::make<RecordingCallback>();
    std::shared_ptr<ITroxCallback> second = first;
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &first), STATUS_OK);
    EXPECT_EQ(ndk::AParcel_readNullableData(parcel.get(), &second), STATUS_OK);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);
    AParcel_setDataPosition(parcel.get(), 0);
    ndk::SpAIBinder binder;
    EXPECT_EQ(ndk::AParcel_readRequiredStrongBinder(parcel.get(), &binder), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(ndk::AParcel_writeRequiredStrongBinder(parcel.get(), ndk::SpAIBinder()),
              STATUS_UNEXPECTED_NULL);
}

TEST(ParcelHelpers, HugeLengthsAllocateNothing) {
    for (const char* wire : {"ffffff7f 00000000 00000000", "00000010 00000000 00000000",
                             "03000000 00000000 00000000"}) {
        SCOPED_TRACE(wire);
        std::vector<int32_t> ints;
        EXPECT_NE(readValue(wire, &ints), STATUS_OK);
        EXPECT_EQ(ints.capacity(), 0u);
        std::optional<std::vector<std::optional<std::string>>> strings;
        EXPECT_NE(ndk::AParcel_readNullableData(parcelOf(unhex(wire)).get(), &strings), STATUS_OK);
        std::vector<TroxRequestData> records;
        EXPECT_NE(readValue(wire, &records), STATUS_OK);
        EXPECT_EQ(records.capacity(), 0u);
    }
}

TEST(RecordText, EveryFieldAndValueKind) {
    using android::internal::ToString;
    EXPECT_EQ(
            fullParcel().toString(),
            "TroxRequestParcel{requestType: 7, requestData: [TroxRequestData{res_Id: 1, res_Value: "
            "v, res_Path: (null), res_Extra: (null)}], flag: true, param: -2, pid: 1234, "
            "duration: 4294967298, debugTags: [t, (null)], handle: 9, callback: (null), pkg: p, "
            "identity: , values: [5, -6]}");
    EXPECT_EQ(ToString(kWideId), "4294967291");
    EXPECT_EQ(ToString(std::vector<int32_t>{}), "[]");
    // An interface has no text of its own.
    std::shared_ptr<ITroxCallback> cb = ndk::SharedRefBase::make<RecordingCallback>();
    EXPECT_EQ(ToString(cb), "<unimplemented>");
}

}  // namespace
