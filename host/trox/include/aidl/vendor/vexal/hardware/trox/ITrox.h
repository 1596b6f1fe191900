// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITrox.aidl; keep it in that shape.
#pragma once

#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>
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
class ITroxCallback;
class TroxRequestData;
class TroxRequestParcel;
}  // namespace aidl::vendor::vexal::hardware::trox
namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class ITroxDelegator;

class ITrox : public ::ndk::ICInterface {
  public:
    typedef ITroxDelegator DefaultDelegator;
    static const char* descriptor;
    ITrox();
    virtual ~ITrox();

    static const int32_t version = 1;
    static inline const std::string hash = "d3f096dba0346c89ec4bd5ba6d3668a13f845826";
    static constexpr uint32_t TRANSACTION_reservedSlot1 = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_trox_init = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_troxResCtlRequest = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_troxResCtlRelease = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_troxResStateRequest = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_troxResListeningRegister = FIRST_CALL_TRANSACTION + 5;
    static constexpr uint32_t TRANSACTION_troxResListeningUnRegister = FIRST_CALL_TRANSACTION + 6;
    static constexpr uint32_t TRANSACTION_troxPropertyGet = FIRST_CALL_TRANSACTION + 7;
    static constexpr uint32_t TRANSACTION_troxPropertySet = FIRST_CALL_TRANSACTION + 8;
    static constexpr uint32_t TRANSACTION_troxThermalListeningRegister = FIRST_CALL_TRANSACTION + 9;
    static constexpr uint32_t TRANSACTION_troxThermalListeningUnregister =
            FIRST_CALL_TRANSACTION + 10;
    static constexpr uint32_t TRANSACTION_reservedSlot12 = FIRST_CALL_TRANSACTION + 11;
    static constexpr uint32_t TRANSACTION_setRelatedSysInfo = FIRST_CALL_TRANSACTION + 12;
    static constexpr uint32_t TRANSACTION_troxRuleCtl = FIRST_CALL_TRANSACTION + 13;
    static constexpr uint32_t TRANSACTION_troxResCtlRequestOneWay = FIRST_CALL_TRANSACTION + 14;

    static std::shared_ptr<ITrox> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<ITrox>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<ITrox>* instance);
    static bool setDefaultImpl(const std::shared_ptr<ITrox>& impl);
    static const std::shared_ptr<ITrox>& getDefaultImpl();
    virtual ::ndk::ScopedAStatus reservedSlot1() = 0;
    virtual ::ndk::ScopedAStatus trox_init() = 0;
    virtual ::ndk::ScopedAStatus troxResCtlRequest(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxResCtlRelease(int32_t in_handle, int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxResStateRequest(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxResListeningRegister(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>&
                    in_callback,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxResListeningUnRegister(int32_t in_handle,
                                                            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxPropertyGet(const std::string& in_key,
                                                 std::string* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxPropertySet(const std::string& in_key,
                                                 const std::string& in_value,
                                                 int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxThermalListeningRegister(
            const std::vector<int32_t>& in_ids,
            const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>&
                    in_callback,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxThermalListeningUnregister(int32_t in_handle,
                                                                int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus reservedSlot12() = 0;
    virtual ::ndk::ScopedAStatus setRelatedSysInfo(int32_t in_info, int32_t in_value,
                                                   int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxRuleCtl(
            int32_t in_ruleId, int32_t in_status,
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus troxResCtlRequestOneWay(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

  private:
    static std::shared_ptr<ITrox> default_impl;
};
class ITroxDefault : public ITrox {
  public:
    ::ndk::ScopedAStatus reservedSlot1() override;
    ::ndk::ScopedAStatus trox_init() override;
    ::ndk::ScopedAStatus troxResCtlRequest(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxResCtlRelease(int32_t in_handle, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxResStateRequest(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>* _aidl_return)
            override;
    ::ndk::ScopedAStatus troxResListeningRegister(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>&
                    in_callback,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxResListeningUnRegister(int32_t in_handle,
                                                    int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxPropertyGet(const std::string& in_key,
                                         std::string* _aidl_return) override;
    ::ndk::ScopedAStatus troxPropertySet(const std::string& in_key, const std::string& in_value,
                                         int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxThermalListeningRegister(
            const std::vector<int32_t>& in_ids,
            const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>&
                    in_callback,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxThermalListeningUnregister(int32_t in_handle,
                                                        int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus reservedSlot12() override;
    ::ndk::ScopedAStatus setRelatedSysInfo(int32_t in_info, int32_t in_value,
                                           int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxRuleCtl(
            int32_t in_ruleId, int32_t in_status,
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus troxResCtlRequestOneWay(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request) override;
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
