// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITroxCallback.aidl; keep it in that shape.
#pragma once

#include "aidl/vendor/vexal/hardware/trox/ITroxCallback.h"

#include <android/binder_ibinder.h>
#include <cassert>

#ifndef __BIONIC__
#ifndef __assert2
#define __assert2(a, b, c, d) ((void)0)
#endif
#endif

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
class BnTroxCallback : public ::ndk::BnCInterface<ITroxCallback> {
  public:
    BnTroxCallback();
    virtual ~BnTroxCallback();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;
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

  protected:
    ::ndk::SpAIBinder createBinder() override;

  private:
};
class ITroxCallbackDelegator : public BnTroxCallback {
  public:
    explicit ITroxCallbackDelegator(const std::shared_ptr<ITroxCallback>& impl) : _impl(impl) {
        int32_t _impl_ver = 0;
        if (!impl->getInterfaceVersion(&_impl_ver).isOk()) {
            ;
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__,
                      "Delegator failed to get version of the implementation.");
        }
        if (_impl_ver != ITroxCallback::version) {
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__,
                      "Mismatched versions of delegator and implementation is not allowed.");
        }
    }

    ::ndk::ScopedAStatus onCallback(
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data)
            override {
        return _impl->onCallback(in_data);
    }

  protected:
  private:
    std::shared_ptr<ITroxCallback> _impl;
};

}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
