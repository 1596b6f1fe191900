// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITrox.aidl; keep it in that shape.
#pragma once

#include "aidl/vendor/vexal/hardware/trox/ITrox.h"

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
class ITroxDelegator : public BnTrox {
  public:
    explicit ITroxDelegator(const std::shared_ptr<ITrox>& impl) : _impl(impl) {
        int32_t _impl_ver = 0;
        if (!impl->getInterfaceVersion(&_impl_ver).isOk()) {
            ;
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__,
                      "Delegator failed to get version of the implementation.");
        }
        if (_impl_ver != ITrox::version) {
            __assert2(__FILE__, __LINE__, __PRETTY_FUNCTION__,
                      "Mismatched versions of delegator and implementation is not allowed.");
        }
    }

    ::ndk::ScopedAStatus reservedSlot1() override { return _impl->reservedSlot1(); }
    ::ndk::ScopedAStatus trox_init() override { return _impl->trox_init(); }
    ::ndk::ScopedAStatus troxResCtlRequest(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            int32_t* _aidl_return) override {
        return _impl->troxResCtlRequest(in_request, _aidl_return);
    }
    ::ndk::ScopedAStatus troxResCtlRelease(int32_t in_handle, int32_t* _aidl_return) override {
        return _impl->troxResCtlRelease(in_handle, _aidl_return);
    }
    ::ndk::ScopedAStatus troxResStateRequest(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>* _aidl_return)
            override {
        return _impl->troxResStateRequest(in_request, _aidl_return);
    }
    ::ndk::ScopedAStatus troxResListeningRegister(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
            const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>&
                    in_callback,
            int32_t* _aidl_return) override {
        return _impl->troxResListeningRegister(in_request, in_callback, _aidl_return);
    }
    ::ndk::ScopedAStatus troxResListeningUnRegister(int32_t in_handle,
                                                    int32_t* _aidl_return) override {
        return _impl->troxResListeningUnRegister(in_handle, _aidl_return);
    }
    ::ndk::ScopedAStatus troxPropertyGet(const std::string& in_key,
                                         std::string* _aidl_return) override {
        return _impl->troxPropertyGet(in_key, _aidl_return);
    }
    ::ndk::ScopedAStatus troxPropertySet(const std::string& in_key, const std::string& in_value,
                                         int32_t* _aidl_return) override {
        return _impl->troxPropertySet(in_key, in_value, _aidl_return);
    }
    ::ndk::ScopedAStatus troxThermalListeningRegister(
            const std::vector<int32_t>& in_ids,
            const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>&
                    in_callback,
            int32_t* _aidl_return) override {
        return _impl->troxThermalListeningRegister(in_ids, in_callback, _aidl_return);
    }
    ::ndk::ScopedAStatus troxThermalListeningUnregister(int32_t in_handle,
                                                        int32_t* _aidl_return) override {
        return _impl->troxThermalListeningUnregister(in_handle, _aidl_return);
    }
    ::ndk::ScopedAStatus reservedSlot12() override { return _impl->reservedSlot12(); }
    ::ndk::ScopedAStatus setRelatedSysInfo(int32_t in_info, int32_t in_value,
                                           int32_t* _aidl_return) override {
        return _impl->setRelatedSysInfo(in_info, in_value, _aidl_return);
    }
    ::ndk::ScopedAStatus troxRuleCtl(
            int32_t in_ruleId, int32_t in_status,
            const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data,
            int32_t* _aidl_return) override {
        return _impl->troxRuleCtl(in_ruleId, in_status, in_data, _aidl_return);
    }
    ::ndk::ScopedAStatus troxResCtlRequestOneWay(
            const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request) override {
        return _impl->troxResCtlRequestOneWay(in_request);
    }

  protected:
  private:
    std::shared_ptr<ITrox> _impl;
};

}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
