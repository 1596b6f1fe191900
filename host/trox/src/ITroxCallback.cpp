// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITroxCallback.aidl; keep it in that shape.
#include "aidl/vendor/vexal/hardware/trox/ITroxCallback.h"

#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/BpTroxCallback.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
static binder_status_t _aidl_vendor_vexal_hardware_trox_ITroxCallback_onTransact(
        AIBinder* _aidl_binder, transaction_code_t _aidl_code, const AParcel* _aidl_in,
        AParcel* _aidl_out) {
    (void)_aidl_in;
    (void)_aidl_out;
    binder_status_t _aidl_ret_status = STATUS_UNKNOWN_TRANSACTION;
    std::shared_ptr<BnTroxCallback> _aidl_impl =
            std::static_pointer_cast<BnTroxCallback>(::ndk::ICInterface::asInterface(_aidl_binder));
    switch (_aidl_code) {
        case (FIRST_CALL_TRANSACTION + 0 /*onCallback*/): {
            std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData> in_data;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_data);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTroxCallback::TransactionLog _transaction_log;
            if (BnTroxCallback::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_data",
                                                         ::android::internal::ToString(in_data));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->onCallback(in_data);
            if (BnTroxCallback::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITroxCallback";
                _transaction_log.method_name = "onCallback";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                BnTroxCallback::logFunc(_transaction_log);
            }
            _aidl_ret_status = STATUS_OK;
            break;
        }
        case (FIRST_CALL_TRANSACTION + 16777214 /*getInterfaceVersion*/): {
            int32_t _aidl_return;

            BnTroxCallback::TransactionLog _transaction_log;
            if (BnTroxCallback::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->getInterfaceVersion(&_aidl_return);
            if (BnTroxCallback::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITroxCallback";
                _transaction_log.method_name = "getInterfaceVersion";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTroxCallback::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 16777213 /*getInterfaceHash*/): {
            std::string _aidl_return;

            BnTroxCallback::TransactionLog _transaction_log;
            if (BnTroxCallback::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->getInterfaceHash(&_aidl_return);
            if (BnTroxCallback::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITroxCallback";
                _transaction_log.method_name = "getInterfaceHash";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTroxCallback::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
    }
    return _aidl_ret_status;
}

static AIBinder_Class* _g_aidl_vendor_vexal_hardware_trox_ITroxCallback_clazz =
        ::ndk::ICInterface::defineClass(ITroxCallback::descriptor,
                                        _aidl_vendor_vexal_hardware_trox_ITroxCallback_onTransact);

BpTroxCallback::BpTroxCallback(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpTroxCallback::~BpTroxCallback() {}
std::function<void(const BpTroxCallback::TransactionLog&)> BpTroxCallback::logFunc;

::ndk::ScopedAStatus BpTroxCallback::onCallback(
        const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTroxCallback::TransactionLog _transaction_log;
    if (BpTroxCallback::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_data", ::android::internal::ToString(in_data));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_data);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 0 /*onCallback*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              FLAG_ONEWAY
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITroxCallback::getDefaultImpl()) {
        _aidl_status = ITroxCallback::getDefaultImpl()->onCallback(in_data);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTroxCallback::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITroxCallback";
        _transaction_log.method_name = "onCallback";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        BpTroxCallback::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTroxCallback::getInterfaceVersion(int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    if (_aidl_cached_version != -1) {
        *_aidl_return = _aidl_cached_version;
        _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
        return _aidl_status;
    }
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTroxCallback::TransactionLog _transaction_log;
    if (BpTroxCallback::logFunc != nullptr) {
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(
            asBinder().get(), (FIRST_CALL_TRANSACTION + 16777214 /*getInterfaceVersion*/),
            _aidl_in.getR(), _aidl_out.getR(),
            0
#ifdef BINDER_STABILITY_SUPPORT
                    | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITroxCallback::getDefaultImpl()) {
        _aidl_status = ITroxCallback::getDefaultImpl()->getInterfaceVersion(_aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_cached_version = *_aidl_return;
_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTroxCallback::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITroxCallback";
        _transaction_log.method_name = "getInterfaceVersion";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTroxCallback::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTroxCallback::getInterfaceHash(std::string* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    const std::lock_guard<std::mutex> lock(_aidl_cached_hash_mutex);
    if (_aidl_cached_hash != "-1") {
        *_aidl_return = _aidl_cached_hash;
        _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
        return _aidl_status;
    }
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTroxCallback::TransactionLog _transaction_log;
    if (BpTroxCallback::logFunc != nullptr) {
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(asBinder().get(),
                                         (FIRST_CALL_TRANSACTION + 16777213 /*getInterfaceHash*/),
                                         _aidl_in.getR(), _aidl_out.getR(),
                                         0
#ifdef BINDER_STABILITY_SUPPORT
                                                 | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITroxCallback::getDefaultImpl()) {
        _aidl_status = ITroxCallback::getDefaultImpl()->getInterfaceHash(_aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_cached_hash = *_aidl_return;
_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTroxCallback::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITroxCallback";
        _transaction_log.method_name = "getInterfaceHash";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTroxCallback::logFunc(_transaction_log);
    }
    return _aidl_status;
}
// Source for BnTroxCallback
BnTroxCallback::BnTroxCallback() {}
BnTroxCallback::~BnTroxCallback() {}
std::function<void(const BnTroxCallback::TransactionLog&)> BnTroxCallback::logFunc;
::ndk::SpAIBinder BnTroxCallback::createBinder() {
    AIBinder* binder = AIBinder_new(_g_aidl_vendor_vexal_hardware_trox_ITroxCallback_clazz,
                                    static_cast<void*>(this));
#ifdef BINDER_STABILITY_SUPPORT
    AIBinder_markVintfStability(binder);
#endif  // BINDER_STABILITY_SUPPORT
    return ::ndk::SpAIBinder(binder);
}
::ndk::ScopedAStatus BnTroxCallback::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ITroxCallback::version;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::ScopedAStatus BnTroxCallback::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ITroxCallback::hash;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
// Source for ITroxCallback
const char* ITroxCallback::descriptor = "vendor.vexal.hardware.trox.ITroxCallback";
ITroxCallback::ITroxCallback() {}
ITroxCallback::~ITroxCallback() {}

std::shared_ptr<ITroxCallback> ITroxCallback::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (!AIBinder_associateClass(binder.get(),
                                 _g_aidl_vendor_vexal_hardware_trox_ITroxCallback_clazz)) {
#if __ANDROID_API__ >= 31
        const AIBinder_Class* originalClass = AIBinder_getClass(binder.get());
        if (originalClass == nullptr) return nullptr;
        if (0 == strcmp(AIBinder_Class_getDescriptor(originalClass), descriptor)) {
            return ::ndk::SharedRefBase::make<BpTroxCallback>(binder);
        }
#endif
        return nullptr;
    }
    std::shared_ptr<::ndk::ICInterface> interface = ::ndk::ICInterface::asInterface(binder.get());
    if (interface) {
        return std::static_pointer_cast<ITroxCallback>(interface);
    }
    return ::ndk::SharedRefBase::make<BpTroxCallback>(binder);
}

binder_status_t ITroxCallback::writeToParcel(AParcel* parcel,
                                             const std::shared_ptr<ITroxCallback>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}
binder_status_t ITroxCallback::readFromParcel(const AParcel* parcel,
                                              std::shared_ptr<ITroxCallback>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status != STATUS_OK) return status;
    *instance = ITroxCallback::fromBinder(binder);
    return STATUS_OK;
}
bool ITroxCallback::setDefaultImpl(const std::shared_ptr<ITroxCallback>& impl) {
    // One default implementation per process: a second one is a caller bug.
    assert(!ITroxCallback::default_impl);
    if (impl) {
        ITroxCallback::default_impl = impl;
        return true;
    }
    return false;
}
const std::shared_ptr<ITroxCallback>& ITroxCallback::getDefaultImpl() {
    return ITroxCallback::default_impl;
}
std::shared_ptr<ITroxCallback> ITroxCallback::default_impl = nullptr;
::ndk::ScopedAStatus ITroxCallbackDefault::onCallback(
        const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& /*in_data*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxCallbackDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::ScopedAStatus ITroxCallbackDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::SpAIBinder ITroxCallbackDefault::asBinder() {
    return ::ndk::SpAIBinder();
}
bool ITroxCallbackDefault::isRemote() {
    return false;
}
}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
