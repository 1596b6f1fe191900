// Host copy of the NDK backend generated from vendor/vexal/hardware/trox/TroxRequestData.aidl; keep
// in the generated shape.
#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>

#include <android/binder_parcel_utils.h>

#include <cstdint>
#include <limits>

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
    if (_aidl_start_pos > std::numeric_limits<int32_t>::max() - _aidl_parcelable_size) {
        return STATUS_BAD_VALUE;
    }
    // A size claiming more than the parcel holds is corrupt, not a newer peer.
    const int32_t _aidl_end_pos = _aidl_start_pos + _aidl_parcelable_size;
    if (_aidl_end_pos > AParcel_getDataSize(_aidl_parcel)) return STATUS_BAD_VALUE;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_end_pos);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &res_Id);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_end_pos);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &res_Value);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_end_pos);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &res_Path);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos >= _aidl_parcelable_size) {
        return AParcel_setDataPosition(_aidl_parcel, _aidl_end_pos);
    }
    _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, &res_Extra);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    if (AParcel_getDataPosition(_aidl_parcel) - _aidl_start_pos > _aidl_parcelable_size) {
        return STATUS_BAD_VALUE;
    }
    return AParcel_setDataPosition(_aidl_parcel, _aidl_end_pos);
}

binder_status_t TroxRequestData::writeToParcel(AParcel* _aidl_parcel) const {
    binder_status_t _aidl_ret_status = STATUS_OK;
    int32_t _aidl_start_pos = AParcel_getDataPosition(_aidl_parcel);
    _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, 0);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, res_Id);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, res_Value);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, res_Path);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;

    _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, res_Extra);
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
