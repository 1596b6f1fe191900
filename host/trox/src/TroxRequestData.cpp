// Host copy of the NDK backend the Android build generates from
// aidl/vendor/vexal/hardware/trox/TroxRequestData.aidl; keep it in that shape.
#include "aidl/vendor/vexal/hardware/trox/TroxRequestData.h"

#include <android/binder_parcel_utils.h>

namespace aidl {
namespace vendor {
namespace vexal {
namespace hardware {
namespace trox {
const char* TroxRequestData::descriptor = "vendor.vexal.hardware.trox.TroxRequestData";

binder_status_t TroxRequestData::readFromParcel(const AParcel* _aidl_parcel) {
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
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &res_Id);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &res_Value);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &res_Path);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
    }
    _aidl_ret_status = ::ndk::AParcel_readNullableData(_aidl_parcel, &res_Extra);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    // Host check: fields read past the declared end mean a corrupt size.
    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos > _aidl_parcelable_size)
        return STATUS_BAD_VALUE;
    return AParcel_setDataPosition(_aidl_parcel, _aidl_start_pos + _aidl_parcelable_size);
}
binder_status_t TroxRequestData::writeToParcel(AParcel* _aidl_parcel) const {
    binder_status_t _aidl_ret_status;
    int32_t _aidl_start_pos = AParcel_getDataPosition(_aidl_parcel);
    _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, 0);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, res_Id);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, res_Value);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, res_Path);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeNullableData(_aidl_parcel, res_Extra);
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
