// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/TroxRequestData.aidl; keep it in that shape.
#pragma once

#include <android/binder_interface_utils.h>
#include <android/binder_parcelable_utils.h>
#include <android/binder_to_string.h>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class TroxRequestData {
  public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    int64_t res_Id = 0L;
    std::optional<std::string> res_Value;
    std::optional<std::string> res_Path;
    std::optional<std::string> res_Extra;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    inline bool operator==(const TroxRequestData& _rhs) const {
        return std::tie(res_Id, res_Value, res_Path, res_Extra) ==
               std::tie(_rhs.res_Id, _rhs.res_Value, _rhs.res_Path, _rhs.res_Extra);
    }
    inline bool operator<(const TroxRequestData& _rhs) const {
        return std::tie(res_Id, res_Value, res_Path, res_Extra) <
               std::tie(_rhs.res_Id, _rhs.res_Value, _rhs.res_Path, _rhs.res_Extra);
    }
    inline bool operator!=(const TroxRequestData& _rhs) const { return !(*this == _rhs); }
    inline bool operator>(const TroxRequestData& _rhs) const { return _rhs < *this; }
    inline bool operator>=(const TroxRequestData& _rhs) const { return !(*this < _rhs); }
    inline bool operator<=(const TroxRequestData& _rhs) const { return !(_rhs < *this); }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    inline std::string toString() const {
        std::ostringstream _aidl_os;
        _aidl_os << "TroxRequestData{";
        _aidl_os << "res_Id: " << ::android::internal::ToString(res_Id);
        _aidl_os << ", res_Value: " << ::android::internal::ToString(res_Value);
        _aidl_os << ", res_Path: " << ::android::internal::ToString(res_Path);
        _aidl_os << ", res_Extra: " << ::android::internal::ToString(res_Extra);
        _aidl_os << "}";
        return _aidl_os.str();
    }
};
}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
