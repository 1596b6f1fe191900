// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITroxCallback.aidl; keep it in that shape.
#pragma once

#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>
#include <android/binder_interface_utils.h>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>
#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl::vendor::vexal::hardware::trox {
class TroxRequestData;
}  // namespace aidl::vendor::vexal::hardware::trox
namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class ITroxCallbackDelegator;

class ITroxCallback : public ::ndk::ICInterface {
  public:
    typedef ITroxCallbackDelegator DefaultDelegator;
    static const char* descriptor;
    ITroxCallback();
    virtual ~ITroxCallback();

    static const int32_t version = 1;
    static inline const std::string hash = "d3f096dba0346c89ec4bd5ba6d3668a13f845826";
    static constexpr uint32_t TRANSACTION_onCallback = FIRST_CALL_TRANSACTION + 0;

    static std::shared_ptr<ITroxCallback> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel,
                                         const std::shared_ptr<ITroxCallback>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<ITroxCallback>* instance);
    static bool setDefaultImpl(const std::shared_ptr<ITroxCallback>& impl);
    static const std::shared_ptr<ITroxCallback>& getDefaultImpl();
    virtual ::ndk::ScopedAStatus onCallback(
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

  private:
    static std::shared_ptr<ITroxCallback> default_impl;
};
class ITroxCallbackDefault : public ITroxCallback {
  public:
    ::ndk::ScopedAStatus onCallback(
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data)
            override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};
}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
