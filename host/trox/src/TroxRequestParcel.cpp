// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/TroxRequestParcel.aidl; keep it in that shape.
#include "aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h"

#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/BpTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <android/binder_parcel_utils.h>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
const char* TroxRequestParcel::descriptor = "vendor.vexal.hardware.trox.TroxRequestParcel";

binder_status_t TroxRequestParcel::readFromParcel(const AParcel* _aidl_parcel) {
    binder_status_t _aidl_ret_status = STATUS_OK;
    int32_t _aidl_start_pos = AParcel_getDataPosition(_aidl_parcel);
    int32_t _aidl_parcelable_size = 0;
    _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &_aidl_parcelable_size);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (_aidl_parcelable_size < 4) return STATUS_BAD_VALUE;
    if (_aidl_start_pos > INT32_MAX - _aidl_parcelable_size) return STATUS_BAD_VALUE;
    // Host check: a size claiming more than the parcel holds is corrupt, not a newer peer.
    if (_aidl_start_pos + _aidl_parcelable_size > AParcel_getDataSize(_aidl_parcel))
        return STATUS_BAD_VALUE;
    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &requestType);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &requestData);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &flag);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &param);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &pid);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &duration);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &debugTags);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &handle);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &callback);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &pkg);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &identity);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &values);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    // Host check: fields read past the declared end mean a corrupt size.
    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos > _aidl_parcelable_size)
        return STATUS_BAD_VALUE;
    return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
}
binder_status_t TroxRequestParcel::writeToParcel(AParcel* _aidl_parcel) const {
    binder_status_t _aidl_ret_status;
    int32_t _aidl_start_pos = AParcel_getDataPosition(_aidl_parcel);
    _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, 0);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, requestType);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, requestData);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, flag);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, param);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, pid);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, duration);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, debugTags);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, handle);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, callback);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, pkg);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, identity);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, values);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    int32_t _aidl_end_pos = AParcel_getDataPosition(_aidl_parcel);
    _aidl_ret_status = AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;
    _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, _aidl_end_pos - _aidl_start_pos);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;
    return AParcel_setDataPosition(_aidl_parcel, _aidl_end_pos);
}

}  // namespace trox
}  // namespace hardware
}  // namespace vexal
}  // namespace vendor
}  // namespace aidl
