// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/TroxRequestParcel.aidl; keep it in that shape.
#pragma once

#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>
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

namespace aidl::vendor::vexal::hardware::trox {
class ITroxCallback;
class TroxRequestData;
}  // namespace aidl::vendor::vexal::hardware::trox
namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class TroxRequestParcel {
  public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    int32_t requestType = 0;
    std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData> requestData;
    bool flag = false;
    int32_t param = 0;
    int32_t pid = 0;
    int64_t duration = 0L;
    std::optional<std::vector<std::optional<std::string>>> debugTags;
    int32_t handle = 0;
    std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback> callback;
    std::optional<std::string> pkg;
    std::optional<std::string> identity;
    std::optional<std::vector<int32_t>> values;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    inline bool operator==(const TroxRequestParcel& _rhs) const {
        return std::tie(requestType, requestData, flag, param, pid, duration, debugTags, handle,
                        callback, pkg, identity, values) ==
               std::tie(_rhs.requestType, _rhs.requestData, _rhs.flag, _rhs.param, _rhs.pid,
                        _rhs.duration, _rhs.debugTags, _rhs.handle, _rhs.callback, _rhs.pkg,
                        _rhs.identity, _rhs.values);
    }
    inline bool operator<(const TroxRequestParcel& _rhs) const {
        return std::tie(requestType, requestData, flag, param, pid, duration, debugTags, handle,
                        callback, pkg, identity, values) <
               std::tie(_rhs.requestType, _rhs.requestData, _rhs.flag, _rhs.param, _rhs.pid,
                        _rhs.duration, _rhs.debugTags, _rhs.handle, _rhs.callback, _rhs.pkg,
                        _rhs.identity, _rhs.values);
    }
    inline bool operator!=(const TroxRequestParcel& _rhs) const { return !(*this == _rhs); }
    inline bool operator>(const TroxRequestParcel& _rhs) const { return _rhs < *this; }
    inline bool operator>=(const TroxRequestParcel& _rhs) const { return !(*this < _rhs); }
    inline bool operator<=(const TroxRequestParcel& _rhs) const { return !(_rhs < *this); }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    inline std::string toString() const {
        std::ostringstream _aidl_os;
        _aidl_os << "TroxRequestParcel{";
        _aidl_os << "requestType: " << ::android::internal::ToString(requestType);
        _aidl_os << ", requestData: " << ::android::internal::ToString(requestData);
        _aidl_os << ", flag: " << ::android::internal::ToString(flag);
        _aidl_os << ", param: " << ::android::internal::ToString(param);
        _aidl_os << ", pid: " << ::android::internal::ToString(pid);
        _aidl_os << ", duration: " << ::android::internal::ToString(duration);
        _aidl_os << ", debugTags: " << ::android::internal::ToString(debugTags);
        _aidl_os << ", handle: " << ::android::internal::ToString(handle);
        _aidl_os << ", callback: " << ::android::internal::ToString(callback);
        _aidl_os << ", pkg: " << ::android::internal::ToString(pkg);
        _aidl_os << ", identity: " << ::android::internal::ToString(identity);
        _aidl_os << ", values: " << ::android::internal::ToString(values);
        _aidl_os << "}";
        return _aidl_os.str();
    }
};
}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
