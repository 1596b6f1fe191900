// Host copy of the NDK backend generated from vendor/vexal/hardware/trox/ITroxCallback.aidl; keep
// in the generated shape.
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/BpTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>

#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <android/binder_to_string.h>

#include <chrono>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {

namespace {
constexpr transaction_code_t kGetInterfaceVersion = 0x00FFFFFF;
constexpr transaction_code_t kGetInterfaceHash = 0x00FFFFFE;

const char* messageOf(const AStatus* status) {
    const char* message = AStatus_getMessage(status);
    return message == nullptr ? "" : message;
}
}  // namespace

static binder_status_t _aidl_vendor_vexal_hardware_trox_ITroxCallback_onTransact(
        AIBinder* _aidl_binder, transaction_code_t _aidl_code, const AParcel* _aidl_in,
        AParcel* _aidl_out) {
    (void)_aidl_in;
    (void)_aidl_out;
    binder_status_t _aidl_ret_status = STATUS_UNKNOWN_TRANSACTION;
    std::shared_ptr<BnTroxCallback> _aidl_impl =
            std::static_pointer_cast<BnTroxCallback>(::ndk::ICInterface::asInterface(_aidl_binder));
    if (_aidl_impl == nullptr) return STATUS_UNEXPECTED_NULL;
    switch (_aidl_code) {
        case ITroxCallback::TRANSACTION_onCallback: {
            std::vector<TroxRequestData> in_data;
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
                _transaction_log.exception_message = messageOf(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                BnTroxCallback::logFunc(_transaction_log);
            }
            _aidl_ret_status = STATUS_OK;
            break;
        }
        case kGetInterfaceVersion: {
            int32_t _aidl_return{};
            BnTroxCallback::TransactionLog _transaction_log;
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
                _transaction_log.exception_message = messageOf(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.output_args.emplace_back(
                        "_aidl_return", ::android::internal::ToString(_aidl_return));
                BnTroxCallback::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;
            if (!AStatus_isOk(_aidl_status.get())) break;
            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;
            break;
        }
        case kGetInterfaceHash: {
            std::string _aidl_return;
            BnTroxCallback::TransactionLog _transaction_log;
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
                _transaction_log.exception_message = messageOf(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.output_args.emplace_back(
                        "_aidl_return", ::android::internal::ToString(_aidl_return));
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

::ndk::ScopedAStatus BpTroxCallback::onCallback(const std::vector<TroxRequestData>& in_data) {
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

    _aidl_ret_status = AIBinder_transact(asBinder().get(), ITroxCallback::TRANSACTION_onCallback,
                                         _aidl_in.getR(), _aidl_out.getR(), FLAG_ONEWAY);
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
        _transaction_log.exception_message = messageOf(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        BpTroxCallback::logFunc(_transaction_log);
    }
    return _aidl_status;
}

::ndk::ScopedAStatus BpTroxCallback::getInterfaceVersion(int32_t* _aidl_return) {
    if (_aidl_cached_version != -1) {
        *_aidl_return = _aidl_cached_version;
        return ::ndk::ScopedAStatus(AStatus_newOk());
    }
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;
    BpTroxCallback::TransactionLog _transaction_log;
    auto _log_start = std::chrono::steady_clock::now();

    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(asBinder().get(), kGetInterfaceVersion, _aidl_in.getR(),
                                         _aidl_out.getR(), 0);
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
        _transaction_log.exception_message = messageOf(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.output_args.emplace_back("_aidl_return",
                                                  ::android::internal::ToString(*_aidl_return));
        BpTroxCallback::logFunc(_transaction_log);
    }
    return _aidl_status;
}

::ndk::ScopedAStatus BpTroxCallback::getInterfaceHash(std::string* _aidl_return) {
    {
        std::lock_guard<std::mutex> _aidl_lock(_aidl_cached_hash_mutex);
        if (_aidl_cached_hash != "-1") {
            *_aidl_return = _aidl_cached_hash;
            return ::ndk::ScopedAStatus(AStatus_newOk());
        }
    }
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;
    BpTroxCallback::TransactionLog _transaction_log;
    auto _log_start = std::chrono::steady_clock::now();

    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(asBinder().get(), kGetInterfaceHash, _aidl_in.getR(),
                                         _aidl_out.getR(), 0);
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
    {
        std::lock_guard<std::mutex> _aidl_lock(_aidl_cached_hash_mutex);
        _aidl_cached_hash = *_aidl_return;
    }

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
        _transaction_log.exception_message = messageOf(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.output_args.emplace_back("_aidl_return",
                                                  ::android::internal::ToString(*_aidl_return));
        BpTroxCallback::logFunc(_transaction_log);
    }
    return _aidl_status;
}

BnTroxCallback::BnTroxCallback() {}
BnTroxCallback::~BnTroxCallback() {}
std::function<void(const BnTroxCallback::TransactionLog&)> BnTroxCallback::logFunc;

::ndk::SpAIBinder BnTroxCallback::createBinder() {
    AIBinder* binder = AIBinder_new(_g_aidl_vendor_vexal_hardware_trox_ITroxCallback_clazz,
                                    static_cast<void*>(this));
    if (binder != nullptr) AIBinder_markVintfStability(binder);
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

const char* ITroxCallback::descriptor = "vendor.vexal.hardware.trox.ITroxCallback";
ITroxCallback::ITroxCallback() {}
ITroxCallback::~ITroxCallback() {}

std::shared_ptr<ITroxCallback> ITroxCallback::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (binder.get() == nullptr) return nullptr;
    if (!AIBinder_associateClass(binder.get(),
                                 _g_aidl_vendor_vexal_hardware_trox_ITroxCallback_clazz))
        return nullptr;
    std::shared_ptr<::ndk::ICInterface> interface = ::ndk::ICInterface::asInterface(binder.get());
    if (interface) return std::static_pointer_cast<ITroxCallback>(interface);
    return ::ndk::SharedRefBase::make<BpTroxCallback>(binder);
}

binder_status_t ITroxCallback::writeToParcel(AParcel* parcel,
                                             const std::shared_ptr<ITroxCallback>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

binder_status_t ITroxCallback::readFromParcel(const AParcel* parcel,
                                              std::shared_ptr<ITroxCallback>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t status = ::ndk::AParcel_readNullableStrongBinder(parcel, &binder);
    if (status != STATUS_OK) return status;
    *instance = ITroxCallback::fromBinder(binder);
    return STATUS_OK;
}

bool ITroxCallback::setDefaultImpl(const std::shared_ptr<ITroxCallback>& impl) {
    // One default per process, as in generated code: later callers are refused.
    if (!ITroxCallback::default_impl && impl) {
        ITroxCallback::default_impl = impl;
        return true;
    }
    return false;
}

const std::shared_ptr<ITroxCallback>& ITroxCallback::getDefaultImpl() {
    return ITroxCallback::default_impl;
}

std::shared_ptr<ITroxCallback> ITroxCallback::default_impl = nullptr;

::ndk::ScopedAStatus ITroxCallbackDefault::onCallback(const std::vector<TroxRequestData>& in_data) {
    (void)in_data;
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
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
