// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITroxCallback.aidl; keep it in that shape.
#pragma once

#include "aidl/vendor/vexal/hardware/trox/ITroxCallback.h"

#include <android/binder_ibinder.h>
#include <chrono>
#include <functional>
#include <sstream>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class BpTroxCallback : public ::ndk::BpCInterface<ITroxCallback> {
  public:
    explicit BpTroxCallback(const ::ndk::SpAIBinder& binder);
    virtual ~BpTroxCallback();

    ::ndk::ScopedAStatus onCallback(
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data)
            override;
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
