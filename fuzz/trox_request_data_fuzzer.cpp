// TroxRequestData from arbitrary bytes, alone and as the array that callbacks and replies carry.
#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>

#include "FuzzSupport.h"

using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using vexal::fuzz::parcelBytes;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    return 0;
}

namespace {

template <typename T>
void roundTrip(const T& value) {
    ndk::ScopedAParcel out(AParcel_create());
    FUZZ_CHECK(ndk::AParcel_writeData(out.get(), value) == STATUS_OK);
    const std::vector<uint8_t> bytes = parcelBytes(out.get());
    ndk::ScopedAParcel again(AParcel_create());
    FUZZ_CHECK(AParcel_unmarshal(again.get(), bytes.data(), bytes.size()) == STATUS_OK);
    T copy;
    FUZZ_CHECK(ndk::AParcel_readData(again.get(), &copy) == STATUS_OK);
    FUZZ_CHECK(copy == value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    // The first byte picks the shape, the rest is the parcel.
    const bool asArray = (data[0] & 1) != 0;
    ndk::ScopedAParcel in(AParcel_create());
    FUZZ_CHECK(AParcel_unmarshal(in.get(), data + 1, size - 1) == STATUS_OK);
    if (asArray) {
        std::vector<TroxRequestData> values;
        if (ndk::AParcel_readData(in.get(), &values) != STATUS_OK) return 0;
        roundTrip(values);
    } else {
        TroxRequestData value;
        if (value.readFromParcel(in.get()) != STATUS_OK) return 0;
        (void)value.toString();
        roundTrip(value);
    }
    return 0;
}
