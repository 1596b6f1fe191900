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

namespace probe_types {
struct Counted : ndk::SharedRefBase {};
}  // namespace probe_types
using probe_types::Counted;

#if defined(PROBE_write_nullable_string)
binder_status_t probe(AParcel* parcel, const TroxRequestParcel& request) {
#ifdef PROBE_MISTAKE
    return ndk::AParcel_writeData(parcel, request.pkg);
#else
    return ndk::AParcel_writeNullableData(parcel, request.pkg);
#endif
}
#elif defined(PROBE_read_nullable_string)
binder_status_t probe(const AParcel* parcel, TroxRequestParcel* request) {
#ifdef PROBE_MISTAKE
    return ndk::AParcel_readData(parcel, &request->identity);
#else
    return ndk::AParcel_readNullableData(parcel, &request->identity);
#endif
}
#elif defined(PROBE_write_nullable_string_array)
binder_status_t probe(AParcel* parcel, const TroxRequestParcel& request) {
#ifdef PROBE_MISTAKE
    return ndk::AParcel_writeData(parcel, request.debugTags);
#else
    return ndk::AParcel_writeNullableData(parcel, request.debugTags);
#endif
}
#elif defined(PROBE_read_nullable_int_array)
binder_status_t probe(const AParcel* parcel, TroxRequestParcel* request) {
#ifdef PROBE_MISTAKE
    return ndk::AParcel_readData(parcel, &request->values);
#else
    return ndk::AParcel_readNullableData(parcel, &request->values);
#endif
}
#elif defined(PROBE_new_shared_ref_base)
std::shared_ptr<Counted> probe() {
#ifdef PROBE_MISTAKE
    return std::shared_ptr<Counted>(new Counted());
#else
    return ndk::SharedRefBase::make<Counted>();
#endif
}
#elif defined(PROBE_make_shared_shared_ref_base)
std::shared_ptr<Counted> probe() {
#ifdef PROBE_MISTAKE
    return std::make_shared<Counted>();
#else
    return ndk::SharedRefBase::make<Counted>();
#endif
}
#elif defined(PROBE_discarded_status)
void probe() {
#ifdef PROBE_MISTAKE
    AStatus_fromServiceSpecificError(3);
#else
    AStatus_delete(AStatus_fromServiceSpecificError(3));
#endif
}
#elif defined(PROBE_discarded_release)
void probe(ndk::ScopedAStatus status) {
#ifdef PROBE_MISTAKE
    status.release();
#else
    AStatus_delete(status.release());
#endif
}
#elif defined(PROBE_deprecated_get_service)
ndk::SpAIBinder probe(const char* instance) {
#ifdef PROBE_MISTAKE
    return ndk::SpAIBinder(AServiceManager_getService(instance));
#else
    return ndk::SpAIBinder(AServiceManager_checkService(instance));
#endif
}
#elif defined(PROBE_system_stability)
void probe(AIBinder* binder) {
#ifdef PROBE_MISTAKE
    AIBinder_markSystemStability(binder);
#else
    AIBinder_markVendorStability(binder);
#endif
}
#elif defined(PROBE_sp_binder_release)
AIBinder* probe(ndk::SpAIBinder binder) {
#ifdef PROBE_MISTAKE
    return binder.release();
#else
    AIBinder* raw = binder.get();
    AIBinder_incStrong(raw);
    return raw;
#endif
}
#else
#error "no PROBE_<case> defined"
#endif
