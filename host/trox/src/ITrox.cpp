// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/ITrox.aidl; keep it in that shape.
#include "aidl/vendor/vexal/hardware/trox/ITrox.h"

#include <aidl/vendor/vexal/hardware/trox/BnTrox.h>
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/BpTrox.h>
#include <aidl/vendor/vexal/hardware/trox/BpTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
static binder_status_t _aidl_vendor_vexal_hardware_trox_ITrox_onTransact(
        AIBinder* _aidl_binder, transaction_code_t _aidl_code, const AParcel* _aidl_in,
        AParcel* _aidl_out) {
    (void)_aidl_in;
    (void)_aidl_out;
    binder_status_t _aidl_ret_status = STATUS_UNKNOWN_TRANSACTION;
    std::shared_ptr<BnTrox> _aidl_impl =
            std::static_pointer_cast<BnTrox>(::ndk::ICInterface::asInterface(_aidl_binder));
    switch (_aidl_code) {
        case (FIRST_CALL_TRANSACTION + 0 /*reservedSlot1*/): {
            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->reservedSlot1();
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "reservedSlot1";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 1 /*trox_init*/): {
            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->trox_init();
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "trox_init";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 2 /*troxResCtlRequest*/): {
            ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel in_request;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_request);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_request",
                                                         ::android::internal::ToString(in_request));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxResCtlRequest(in_request, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxResCtlRequest";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 3 /*troxResCtlRelease*/): {
            int32_t in_handle;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_handle);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_handle",
                                                         ::android::internal::ToString(in_handle));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxResCtlRelease(in_handle, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxResCtlRelease";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 4 /*troxResStateRequest*/): {
            ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel in_request;
            std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData> _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_request);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_request",
                                                         ::android::internal::ToString(in_request));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxResStateRequest(in_request, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxResStateRequest";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 5 /*troxResListeningRegister*/): {
            ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel in_request;
            std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback> in_callback;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_request);
            if (_aidl_ret_status != STATUS_OK) break;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_callback);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_request",
                                                         ::android::internal::ToString(in_request));
                _transaction_log.input_args.emplace_back(
                        "in_callback", ::android::internal::ToString(in_callback));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxResListeningRegister(in_request, in_callback, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxResListeningRegister";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 6 /*troxResListeningUnRegister*/): {
            int32_t in_handle;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_handle);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_handle",
                                                         ::android::internal::ToString(in_handle));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxResListeningUnRegister(in_handle, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxResListeningUnRegister";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 7 /*troxPropertyGet*/): {
            std::string in_key;
            std::string _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_key);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_key",
                                                         ::android::internal::ToString(in_key));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->troxPropertyGet(in_key, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxPropertyGet";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 8 /*troxPropertySet*/): {
            std::string in_key;
            std::string in_value;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_key);
            if (_aidl_ret_status != STATUS_OK) break;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_value);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_key",
                                                         ::android::internal::ToString(in_key));
                _transaction_log.input_args.emplace_back("in_value",
                                                         ::android::internal::ToString(in_value));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxPropertySet(in_key, in_value, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxPropertySet";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 9 /*troxThermalListeningRegister*/): {
            std::vector<int32_t> in_ids;
            std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback> in_callback;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_ids);
            if (_aidl_ret_status != STATUS_OK) break;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_callback);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_ids",
                                                         ::android::internal::ToString(in_ids));
                _transaction_log.input_args.emplace_back(
                        "in_callback", ::android::internal::ToString(in_callback));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxThermalListeningRegister(in_ids, in_callback, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxThermalListeningRegister";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 10 /*troxThermalListeningUnregister*/): {
            int32_t in_handle;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_handle);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_handle",
                                                         ::android::internal::ToString(in_handle));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxThermalListeningUnregister(in_handle, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxThermalListeningUnregister";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 11 /*reservedSlot12*/): {
            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->reservedSlot12();
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "reservedSlot12";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 12 /*setRelatedSysInfo*/): {
            int32_t in_info;
            int32_t in_value;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_info);
            if (_aidl_ret_status != STATUS_OK) break;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_value);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_info",
                                                         ::android::internal::ToString(in_info));
                _transaction_log.input_args.emplace_back("in_value",
                                                         ::android::internal::ToString(in_value));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->setRelatedSysInfo(in_info, in_value, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "setRelatedSysInfo";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 13 /*troxRuleCtl*/): {
            int32_t in_ruleId;
            int32_t in_status;
            std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData> in_data;
            int32_t _aidl_return;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_ruleId);
            if (_aidl_ret_status != STATUS_OK) break;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_status);
            if (_aidl_ret_status != STATUS_OK) break;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_data);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_ruleId",
                                                         ::android::internal::ToString(in_ruleId));
                _transaction_log.input_args.emplace_back("in_status",
                                                         ::android::internal::ToString(in_status));
                _transaction_log.input_args.emplace_back("in_data",
                                                         ::android::internal::ToString(in_data));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status =
                    _aidl_impl->troxRuleCtl(in_ruleId, in_status, in_data, &_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxRuleCtl";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = AParcel_writeStatusHeader(_aidl_out, _aidl_status.get());
            if (_aidl_ret_status != STATUS_OK) break;

            if (!AStatus_isOk(_aidl_status.get())) break;

            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_out, _aidl_return);
            if (_aidl_ret_status != STATUS_OK) break;

            break;
        }
        case (FIRST_CALL_TRANSACTION + 14 /*troxResCtlRequestOneWay*/): {
            ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel in_request;

            _aidl_ret_status = ::ndk::AParcel_readData(_aidl_in, &in_request);
            if (_aidl_ret_status != STATUS_OK) break;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
                _transaction_log.input_args.emplace_back("in_request",
                                                         ::android::internal::ToString(in_request));
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->troxResCtlRequestOneWay(in_request);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "troxResCtlRequestOneWay";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                BnTrox::logFunc(_transaction_log);
            }
            _aidl_ret_status = STATUS_OK;
            break;
        }
        case (FIRST_CALL_TRANSACTION + 16777214 /*getInterfaceVersion*/): {
            int32_t _aidl_return;

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->getInterfaceVersion(&_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "getInterfaceVersion";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
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

            BnTrox::TransactionLog _transaction_log;
            if (BnTrox::logFunc != nullptr) {
            }
            auto _log_start = std::chrono::steady_clock::now();
            ::ndk::ScopedAStatus _aidl_status = _aidl_impl->getInterfaceHash(&_aidl_return);
            if (BnTrox::logFunc != nullptr) {
                auto _log_end = std::chrono::steady_clock::now();
                _transaction_log.duration_ms =
                        std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
                _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
                _transaction_log.method_name = "getInterfaceHash";
                _transaction_log.stub_address = _aidl_impl.get();
                _transaction_log.proxy_address = nullptr;
                _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
                _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
                _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
                _transaction_log.service_specific_error_code =
                        AStatus_getServiceSpecificError(_aidl_status.get());
                _transaction_log.result = ::android::internal::ToString(_aidl_return);
                BnTrox::logFunc(_transaction_log);
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

static AIBinder_Class* _g_aidl_vendor_vexal_hardware_trox_ITrox_clazz =
        ::ndk::ICInterface::defineClass(ITrox::descriptor,
                                        _aidl_vendor_vexal_hardware_trox_ITrox_onTransact);

BpTrox::BpTrox(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpTrox::~BpTrox() {}
std::function<void(const BpTrox::TransactionLog&)> BpTrox::logFunc;

::ndk::ScopedAStatus BpTrox::reservedSlot1() {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 0 /*reservedSlot1*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->reservedSlot1();
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "reservedSlot1";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::trox_init() {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 1 /*trox_init*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->trox_init();
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "trox_init";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxResCtlRequest(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
        int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_request",
                                                 ::android::internal::ToString(in_request));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_request);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 2 /*troxResCtlRequest*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxResCtlRequest(in_request, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxResCtlRequest";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxResCtlRelease(int32_t in_handle, int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_handle",
                                                 ::android::internal::ToString(in_handle));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_handle);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 3 /*troxResCtlRelease*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxResCtlRelease(in_handle, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxResCtlRelease";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxResStateRequest(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
        std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_request",
                                                 ::android::internal::ToString(in_request));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_request);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(asBinder().get(),
                                         (FIRST_CALL_TRANSACTION + 4 /*troxResStateRequest*/),
                                         _aidl_in.getR(), _aidl_out.getR(),
                                         0
#ifdef BINDER_STABILITY_SUPPORT
                                                 | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxResStateRequest(in_request, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxResStateRequest";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxResListeningRegister(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request,
        const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>& in_callback,
        int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_request",
                                                 ::android::internal::ToString(in_request));
        _transaction_log.input_args.emplace_back("in_callback",
                                                 ::android::internal::ToString(in_callback));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_request);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_callback);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(asBinder().get(),
                                         (FIRST_CALL_TRANSACTION + 5 /*troxResListeningRegister*/),
                                         _aidl_in.getR(), _aidl_out.getR(),
                                         0
#ifdef BINDER_STABILITY_SUPPORT
                                                 | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxResListeningRegister(in_request, in_callback,
                                                                         _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxResListeningRegister";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxResListeningUnRegister(int32_t in_handle, int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_handle",
                                                 ::android::internal::ToString(in_handle));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_handle);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(
            asBinder().get(), (FIRST_CALL_TRANSACTION + 6 /*troxResListeningUnRegister*/),
            _aidl_in.getR(), _aidl_out.getR(),
            0
#ifdef BINDER_STABILITY_SUPPORT
                    | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxResListeningUnRegister(in_handle, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxResListeningUnRegister";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxPropertyGet(const std::string& in_key, std::string* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_key", ::android::internal::ToString(in_key));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_key);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 7 /*troxPropertyGet*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxPropertyGet(in_key, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxPropertyGet";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxPropertySet(const std::string& in_key, const std::string& in_value,
                                             int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_key", ::android::internal::ToString(in_key));
        _transaction_log.input_args.emplace_back("in_value",
                                                 ::android::internal::ToString(in_value));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_key);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_value);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 8 /*troxPropertySet*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxPropertySet(in_key, in_value, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxPropertySet";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxThermalListeningRegister(
        const std::vector<int32_t>& in_ids,
        const std::shared_ptr<::aidl::vendor::vexal::hardware::trox::ITroxCallback>& in_callback,
        int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_ids", ::android::internal::ToString(in_ids));
        _transaction_log.input_args.emplace_back("in_callback",
                                                 ::android::internal::ToString(in_callback));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_ids);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_callback);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(
            asBinder().get(), (FIRST_CALL_TRANSACTION + 9 /*troxThermalListeningRegister*/),
            _aidl_in.getR(), _aidl_out.getR(),
            0
#ifdef BINDER_STABILITY_SUPPORT
                    | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxThermalListeningRegister(in_ids, in_callback,
                                                                             _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxThermalListeningRegister";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxThermalListeningUnregister(int32_t in_handle,
                                                            int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_handle",
                                                 ::android::internal::ToString(in_handle));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_handle);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(
            asBinder().get(), (FIRST_CALL_TRANSACTION + 10 /*troxThermalListeningUnregister*/),
            _aidl_in.getR(), _aidl_out.getR(),
            0
#ifdef BINDER_STABILITY_SUPPORT
                    | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status =
                ITrox::getDefaultImpl()->troxThermalListeningUnregister(in_handle, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxThermalListeningUnregister";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::reservedSlot12() {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 11 /*reservedSlot12*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->reservedSlot12();
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "reservedSlot12";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::setRelatedSysInfo(int32_t in_info, int32_t in_value,
                                               int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_info", ::android::internal::ToString(in_info));
        _transaction_log.input_args.emplace_back("in_value",
                                                 ::android::internal::ToString(in_value));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_info);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_value);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 12 /*setRelatedSysInfo*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->setRelatedSysInfo(in_info, in_value, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "setRelatedSysInfo";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxRuleCtl(
        int32_t in_ruleId, int32_t in_status,
        const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& in_data,
        int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_ruleId",
                                                 ::android::internal::ToString(in_ruleId));
        _transaction_log.input_args.emplace_back("in_status",
                                                 ::android::internal::ToString(in_status));
        _transaction_log.input_args.emplace_back("in_data", ::android::internal::ToString(in_data));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_ruleId);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_status);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_data);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status =
            AIBinder_transact(asBinder().get(), (FIRST_CALL_TRANSACTION + 13 /*troxRuleCtl*/),
                              _aidl_in.getR(), _aidl_out.getR(),
                              0
#ifdef BINDER_STABILITY_SUPPORT
                                      | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
            );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status =
                ITrox::getDefaultImpl()->troxRuleCtl(in_ruleId, in_status, in_data, _aidl_return);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AParcel_readStatusHeader(_aidl_out.get(), _aidl_status.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    if (!AStatus_isOk(_aidl_status.get())) goto _aidl_status_return;
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_out.get(), _aidl_return);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxRuleCtl";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::troxResCtlRequestOneWay(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& in_request) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
        _transaction_log.input_args.emplace_back("in_request",
                                                 ::android::internal::ToString(in_request));
    }
    auto _log_start = std::chrono::steady_clock::now();
    _aidl_ret_status = AIBinder_prepareTransaction(asBinder().get(), _aidl_in.getR());
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_in.get(), in_request);
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

    _aidl_ret_status = AIBinder_transact(asBinder().get(),
                                         (FIRST_CALL_TRANSACTION + 14 /*troxResCtlRequestOneWay*/),
                                         _aidl_in.getR(), _aidl_out.getR(),
                                         FLAG_ONEWAY
#ifdef BINDER_STABILITY_SUPPORT
                                                 | FLAG_PRIVATE_LOCAL
#endif  // BINDER_STABILITY_SUPPORT
    );
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->troxResCtlRequestOneWay(in_request);
        goto _aidl_status_return;
    }
    if (_aidl_ret_status != STATUS_OK) goto _aidl_error;

_aidl_error:
    _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
_aidl_status_return:
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "troxResCtlRequestOneWay";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::getInterfaceVersion(int32_t* _aidl_return) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    ::ndk::ScopedAStatus _aidl_status;
    if (_aidl_cached_version != -1) {
        *_aidl_return = _aidl_cached_version;
        _aidl_status.set(AStatus_fromStatus(_aidl_ret_status));
        return _aidl_status;
    }
    ::ndk::ScopedAParcel _aidl_in;
    ::ndk::ScopedAParcel _aidl_out;

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
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
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->getInterfaceVersion(_aidl_return);
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
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "getInterfaceVersion";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
::ndk::ScopedAStatus BpTrox::getInterfaceHash(std::string* _aidl_return) {
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

    BpTrox::TransactionLog _transaction_log;
    if (BpTrox::logFunc != nullptr) {
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
    if (_aidl_ret_status == STATUS_UNKNOWN_TRANSACTION && ITrox::getDefaultImpl()) {
        _aidl_status = ITrox::getDefaultImpl()->getInterfaceHash(_aidl_return);
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
    if (BpTrox::logFunc != nullptr) {
        auto _log_end = std::chrono::steady_clock::now();
        _transaction_log.duration_ms =
                std::chrono::duration<double, std::milli>(_log_end - _log_start).count();
        _transaction_log.interface_name = "vendor.vexal.hardware.trox.ITrox";
        _transaction_log.method_name = "getInterfaceHash";
        _transaction_log.stub_address = nullptr;
        _transaction_log.proxy_address = static_cast<const void*>(this);
        _transaction_log.exception_code = AStatus_getExceptionCode(_aidl_status.get());
        _transaction_log.exception_message = AStatus_getMessage(_aidl_status.get());
        _transaction_log.transaction_error = AStatus_getStatus(_aidl_status.get());
        _transaction_log.service_specific_error_code =
                AStatus_getServiceSpecificError(_aidl_status.get());
        _transaction_log.result = ::android::internal::ToString(*_aidl_return);
        BpTrox::logFunc(_transaction_log);
    }
    return _aidl_status;
}
// Source for BnTrox
BnTrox::BnTrox() {}
BnTrox::~BnTrox() {}
std::function<void(const BnTrox::TransactionLog&)> BnTrox::logFunc;
::ndk::SpAIBinder BnTrox::createBinder() {
    AIBinder* binder =
            AIBinder_new(_g_aidl_vendor_vexal_hardware_trox_ITrox_clazz, static_cast<void*>(this));
#ifdef BINDER_STABILITY_SUPPORT
    AIBinder_markVintfStability(binder);
#endif  // BINDER_STABILITY_SUPPORT
    return ::ndk::SpAIBinder(binder);
}
::ndk::ScopedAStatus BnTrox::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ITrox::version;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::ScopedAStatus BnTrox::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ITrox::hash;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
// Source for ITrox
const char* ITrox::descriptor = "vendor.vexal.hardware.trox.ITrox";
ITrox::ITrox() {}
ITrox::~ITrox() {}

std::shared_ptr<ITrox> ITrox::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (!AIBinder_associateClass(binder.get(), _g_aidl_vendor_vexal_hardware_trox_ITrox_clazz)) {
#if __ANDROID_API__ >= 31
        const AIBinder_Class* originalClass = AIBinder_getClass(binder.get());
        if (originalClass == nullptr) return nullptr;
        if (0 == strcmp(AIBinder_Class_getDescriptor(originalClass), descriptor)) {
            return ::ndk::SharedRefBase::make<BpTrox>(binder);
        }
#endif
        return nullptr;
    }
    std::shared_ptr<::ndk::ICInterface> interface = ::ndk::ICInterface::asInterface(binder.get());
    if (interface) {
        return std::static_pointer_cast<ITrox>(interface);
    }
    return ::ndk::SharedRefBase::make<BpTrox>(binder);
}

binder_status_t ITrox::writeToParcel(AParcel* parcel, const std::shared_ptr<ITrox>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}
binder_status_t ITrox::readFromParcel(const AParcel* parcel, std::shared_ptr<ITrox>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status != STATUS_OK) return status;
    *instance = ITrox::fromBinder(binder);
    return STATUS_OK;
}
bool ITrox::setDefaultImpl(const std::shared_ptr<ITrox>& impl) {
    // One default implementation per process: a second one is a caller bug.
    assert(!ITrox::default_impl);
    if (impl) {
        ITrox::default_impl = impl;
        return true;
    }
    return false;
}
const std::shared_ptr<ITrox>& ITrox::getDefaultImpl() {
    return ITrox::default_impl;
}
std::shared_ptr<ITrox> ITrox::default_impl = nullptr;
::ndk::ScopedAStatus ITroxDefault::reservedSlot1() {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::trox_init() {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxResCtlRequest(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& /*in_request*/,
        int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxResCtlRelease(int32_t /*in_handle*/,
                                                     int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxResStateRequest(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& /*in_request*/,
        std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxResListeningRegister(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& /*in_request*/,
        const std::shared_ptr<
                ::aidl::vendor::vexal::hardware::trox::ITroxCallback>& /*in_callback*/,
        int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxResListeningUnRegister(int32_t /*in_handle*/,
                                                              int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxPropertyGet(const std::string& /*in_key*/,
                                                   std::string* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxPropertySet(const std::string& /*in_key*/,
                                                   const std::string& /*in_value*/,
                                                   int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxThermalListeningRegister(
        const std::vector<int32_t>& /*in_ids*/,
        const std::shared_ptr<
                ::aidl::vendor::vexal::hardware::trox::ITroxCallback>& /*in_callback*/,
        int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxThermalListeningUnregister(int32_t /*in_handle*/,
                                                                  int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::reservedSlot12() {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::setRelatedSysInfo(int32_t /*in_info*/, int32_t /*in_value*/,
                                                     int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxRuleCtl(
        int32_t /*in_ruleId*/, int32_t /*in_status*/,
        const std::vector<::aidl::vendor::vexal::hardware::trox::TroxRequestData>& /*in_data*/,
        int32_t* /*_aidl_return*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::troxResCtlRequestOneWay(
        const ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel& /*in_request*/) {
    ::ndk::ScopedAStatus _aidl_status;
    _aidl_status.set(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
    return _aidl_status;
}
::ndk::ScopedAStatus ITroxDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::ScopedAStatus ITroxDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::SpAIBinder ITroxDefault::asBinder() {
    return ::ndk::SpAIBinder();
}
bool ITroxDefault::isRemote() {
    return false;
}
}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
