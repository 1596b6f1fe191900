// The library's BnTroxCallback receiving arbitrary transactions through an in-process proxy, the
// way the service reaches it.
#include <aidl/vendor/vexal/hardware/trox/ITroxCallback.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <binder_host/service_control.h>

#include "FuzzSupport.h"
#include "TroxCallbackClient.h"

#include <cstring>
#include <string>
#include <vector>

using aidl::vendor::vexal::hardware::trox::ITroxCallback;

namespace {

class IdSink : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource> resources) override {
        count += resources.size();
    }
    size_t count = 0;
};

class PathSink : public IClientCallbackByPath {
  public:
    void onCallback(std::vector<std::string> values, std::vector<std::string> paths) override {
        FUZZ_CHECK(values.size() == paths.size());
    }
};

// Registration clients in both forms, and a one-shot client that is not in request_callbacks.
std::vector<ndk::SpAIBinder>& proxies() {
    static std::vector<ndk::SpAIBinder> all;
    return all;
}

ndk::SpAIBinder publish(const std::shared_ptr<TroxCallbackClient>& client,
                        const std::string& name) {
    FUZZ_CHECK(AServiceManager_addService(client->asBinder().get(), name.c_str()) == STATUS_OK);
    ndk::SpAIBinder proxy(AServiceManager_checkService(name.c_str()));
    FUZZ_CHECK(proxy.get() != nullptr && AIBinder_isRemote(proxy.get()));
    // Associates the proxy with the interface's class, as the service's own proxy would be.
    FUZZ_CHECK(ITroxCallback::fromBinder(proxy) != nullptr);
    return proxy;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    // Calls from the other side and death notices come in on binder threads only.
    ABinderProcess_startThreadPool();
    auto ids = std::make_shared<IdSink>();
    auto paths = std::make_shared<PathSink>();
    proxies().push_back(publish(ndk::SharedRefBase::make<TroxCallbackClient>(ids, true, false),
                                "fuzz.callback.ids"));
    proxies().push_back(publish(ndk::SharedRefBase::make<TroxCallbackClient>(paths, true, true),
                                "fuzz.callback.paths"));
    proxies().push_back(publish(ndk::SharedRefBase::make<TroxCallbackClient>(ids, false, false),
                                "fuzz.callback.oneshot"));
    return 0;
}

// Byte 0: which client (bits 0-1), whether to skip the interface token (bit 2), one-way (bit 3);
// byte 1: the transaction code, mostly the real ones; the rest is the parcel after the token.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const ndk::SpAIBinder& proxy = proxies()[(data[0] & 3) % proxies().size()];
    const bool withToken = (data[0] & 4) == 0;
    const binder_flags_t flags = (data[0] & 8) != 0 ? FLAG_ONEWAY : 0;
    transaction_code_t code = data[1];
    if (code >= 0xf0) code = 0x00ffffff - (0xff - code);  // reach the version and hash codes
    data += 2;
    size -= 2;

    std::vector<uint8_t> bytes;
    if (withToken) {
        ndk::ScopedAParcel token(AParcel_create());
        FUZZ_CHECK(AParcel_writeString(token.get(), ITroxCallback::descriptor,
                                       static_cast<int32_t>(strlen(ITroxCallback::descriptor))) ==
                   STATUS_OK);
        bytes = vexal::fuzz::parcelBytes(token.get());
    }
    bytes.insert(bytes.end(), data, data + size);

    AParcel* in = nullptr;
    FUZZ_CHECK(AIBinder_prepareTransaction(proxy.get(), &in) == STATUS_OK);
    FUZZ_CHECK(AParcel_unmarshal(in, bytes.data(), bytes.size()) == STATUS_OK);
    AParcel* out = nullptr;
    AIBinder_transact(proxy.get(), code, &in, &out, flags);
    AParcel_delete(out);
    if (flags & FLAG_ONEWAY) binder_host::drainNotifications();
    return 0;
}
