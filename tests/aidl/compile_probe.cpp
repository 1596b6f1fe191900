// Probes for code a device build refuses. tests/aidl/CMakeLists.txt compiles each PROBE_<case>
// twice: as written against the real API (must compile) and with PROBE_MISTAKE (must not, with the
// diagnostic that names the mistake). The control keeps a reject from passing for another reason.
#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>
#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>

#include <memory>

using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

// PICK(right, mistake): each case below names the correct form first.
#ifdef PROBE_MISTAKE
#define PICK(right, mistake) mistake
#else
#define PICK(right, mistake) right
#endif

namespace probe_types {
struct Counted : ndk::SharedRefBase {};

struct Probe {
    binder_status_t run();

    AParcel* out;
    const AParcel* in;
    TroxRequestParcel request;
    ndk::ScopedAStatus status;
    ndk::SpAIBinder binder;
    std::shared_ptr<Counted> made;
};

binder_status_t Probe::run() {
#if defined(PROBE_write_nullable_string)
    return PICK(ndk::AParcel_writeNullableData, ndk::AParcel_writeData)(out, request.pkg);
#elif defined(PROBE_read_nullable_string)
    return PICK(ndk::AParcel_readNullableData, ndk::AParcel_readData)(in, &request.identity);
#elif defined(PROBE_write_nullable_string_array)
    return PICK(ndk::AParcel_writeNullableData, ndk::AParcel_writeData)(out, request.debugTags);
#elif defined(PROBE_read_nullable_int_array)
    return PICK(ndk::AParcel_readNullableData, ndk::AParcel_readData)(in, &request.values);
#elif defined(PROBE_new_shared_ref_base)
    made = PICK(ndk::SharedRefBase::make<Counted>(), std::shared_ptr<Counted>(new Counted()));
#elif defined(PROBE_make_shared_shared_ref_base)
    made = PICK(ndk::SharedRefBase::make<Counted>(), std::make_shared<Counted>());
#elif defined(PROBE_discarded_status)
    PICK(AStatus_delete(AStatus_fromServiceSpecificError(3)), AStatus_fromServiceSpecificError(3));
#elif defined(PROBE_discarded_release)
    PICK(AStatus_delete(status.release()), status.release());
#elif defined(PROBE_deprecated_get_service)
    binder.set(PICK(AServiceManager_checkService, AServiceManager_getService)("x"));
#elif defined(PROBE_system_stability)
    PICK(AIBinder_markVendorStability, AIBinder_markSystemStability)(binder.get());
#elif defined(PROBE_sp_binder_release)
    PICK(AIBinder_incStrong(binder.get()), (void)binder.release());
#else
#error "no PROBE_<case> defined"
#endif
    return STATUS_OK;
}
}  // namespace probe_types
