// Host copy of the NDK backend generated from vendor/vexal/hardware/trox/ITrox.aidl; keep in the
// generated shape.
#pragma once

#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <android/binder_ibinder.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {

class BnTrox : public ::ndk::BnCInterface<ITrox> {
  public:
    BnTrox();
    virtual ~BnTrox();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;
    struct TransactionLog {
        double duration_ms;
        std::string interface_name;
        std::string method_name;
        const void* stub_address;
        const void* proxy_address;
        int32_t exception_code;
        std::string exception_message;
        int32_t transaction_error;
        int32_t service_specific_error_code;
        std::vector<std::pair<std::string, std::string>> input_args;
        std::vector<std::pair<std::string, std::string>> output_args;
    };
    static std::function<void(const TransactionLog&)> logFunc;

  protected:
    ::ndk::SpAIBinder createBinder() override;
};

}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
