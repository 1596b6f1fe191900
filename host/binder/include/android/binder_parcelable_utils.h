#pragma once

#include <android/binder_parcel_utils.h>

#include <optional>

namespace ndk {

// Stability a generated parcelable declares in _aidl_stability.
typedef int32_t parcelable_stability_t;
enum {
    STABILITY_LOCAL,
    STABILITY_VINTF,  // @VintfStability
};

}  // namespace ndk
