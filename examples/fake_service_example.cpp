// Publishes the test kit's fake resource-control service in this process and talks to it the
// way a client on the device does: through the service manager and the generated proxy, so
// every call below is encoded into a parcel and decoded on the service side.
#include "FakeTroxService.h"

#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <cstdio>

using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

namespace {

bool report(const char* what, const ndk::ScopedAStatus& status) {
    std::printf("%-28s %s\n", what, status.getDescription().c_str());
    return status.isOk();
}

}  // namespace

int main() {
    // What binder sends this process on its own (one-way calls, callbacks, death notices)
    // arrives only on its binder threads.
    ABinderProcess_startThreadPool();
    vexal::testing::FakeTroxService service;
    service.fake().setIntResult("troxResCtlRequest", 1001);
    service.fake().setIntResult("troxResCtlRelease", 0);
    service.fake().setStateReply(
            {TroxRequestData{0x40800000, std::string("1800000"), std::nullopt, std::nullopt}});

    auto trox = ITrox::fromBinder(
            ndk::SpAIBinder(AServiceManager_waitForService(vexal::testing::kTroxInstance)));
    if (!trox) {
        std::fprintf(stderr, "no service under %s\n", vexal::testing::kTroxInstance);
        return 1;
    }
    int32_t version = 0;
    std::string hash;
    if (!report("getInterfaceVersion", trox->getInterfaceVersion(&version))) return 1;
    if (!report("getInterfaceHash", trox->getInterfaceHash(&hash))) return 1;
    std::printf("proxy: remote=%d version=%d hash=%s\n", trox->isRemote(), version, hash.c_str());

    TroxRequestParcel request;
    request.requestType = 1;
    request.duration = 3000;
    request.pid = 1234;
    request.requestData = {
            TroxRequestData{0x40800000, std::string("1800000"), std::nullopt, std::nullopt}};
    int32_t handle = -1;
    if (!report("troxResCtlRequest", trox->troxResCtlRequest(request, &handle))) return 1;
    std::printf("handle from the service: %d\n", handle);
    std::printf("the service received: %s\n", service.fake().lastCall().parcel->toString().c_str());

    std::vector<TroxRequestData> values;
    if (!report("troxResStateRequest", trox->troxResStateRequest(TroxRequestParcel{}, &values))) {
        return 1;
    }
    for (const auto& v : values) std::printf("value read: %s\n", v.toString().c_str());

    int32_t released = -1;
    if (!report("troxResCtlRelease", trox->troxResCtlRelease(handle, &released))) return 1;

    service.kill();
    int32_t after = -1;
    report("call after the service died", trox->troxResCtlRelease(handle, &after));
    std::printf("%zu calls reached the service\n", service.fake().callCount());
    return service.fake().callCount() == 3 ? 0 : 1;
}
