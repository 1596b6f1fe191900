// TroxRequestParcel from arbitrary bytes: the service reads it from every caller.
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>

#include "FuzzSupport.h"

using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;
using vexal::fuzz::parcelBytes;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ndk::ScopedAParcel in(AParcel_create());
    FUZZ_CHECK(AParcel_unmarshal(in.get(), data, size) == STATUS_OK);
    TroxRequestParcel value;
    if (value.readFromParcel(in.get()) != STATUS_OK) return 0;
    FUZZ_CHECK(AParcel_getDataPosition(in.get()) <= static_cast<int32_t>(size));
    (void)value.toString();

    // Whatever was accepted must survive a write and a second read unchanged.
    ndk::ScopedAParcel out(AParcel_create());
    FUZZ_CHECK(value.writeToParcel(out.get()) == STATUS_OK);
    const std::vector<uint8_t> bytes = parcelBytes(out.get());
    ndk::ScopedAParcel again(AParcel_create());
    FUZZ_CHECK(AParcel_unmarshal(again.get(), bytes.data(), bytes.size()) == STATUS_OK);
    TroxRequestParcel copy;
    FUZZ_CHECK(copy.readFromParcel(again.get()) == STATUS_OK);
    FUZZ_CHECK(copy == value);
    return 0;
}
