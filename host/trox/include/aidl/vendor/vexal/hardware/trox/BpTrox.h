// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITrox.aidl; keep it in that shape.
#pragma once

#include "aidl/vendor/vexal/hardware/trox/ITrox.h"

#include <android/binder_ibinder.h>
#include <chrono>
#include <functional>
#include <sstream>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class BpTrox : public ::ndk::BpCInterface<ITrox> {
  public:
    explicit BpTrox(const ::ndk::SpAIBinder& binder);
    virtual ~BpTrox();

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
    int32_t _aidl_cached_version = -1;
    std::string _aidl_cached_hash = "-1";
    std::mutex _aidl_cached_hash_mutex;
    struct TransactionLog {
        double duration_ms;
        std::string interface_name;
        std::string method_name;
        const void* proxy_address;
        const void* stub_address;
        std::vector<std::pair<std::string, std::string>> input_args;
        std::vector<std::pair<std::string, std::string>> output_args;
        std::string result;
        std::string exception_message;
        int32_t exception_code;
        int32_t transaction_error;
        int32_t service_specific_error_code;
    };
    static std::function<void(const TransactionLog&)> logFunc;
};
}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
