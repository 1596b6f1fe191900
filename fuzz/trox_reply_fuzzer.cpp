// A hostile or broken service: every reply is fuzzer bytes. Calls each BpTrox operation, then the
// library's own entry points that read what the service answers.
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <aidl/vendor/vexal/hardware/trox/ITrox.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <binder_host/service_control.h>

#include "FuzzSupport.h"
#include "halclient.h"
#include "pym.h"

#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

using aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using aidl::vendor::vexal::hardware::trox::ITrox;
using aidl::vendor::vexal::hardware::trox::ITroxCallback;
using aidl::vendor::vexal::hardware::trox::TroxRequestData;
using aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

namespace {

constexpr char kInstance[] = "vendor.vexal.hardware.trox.ITrox/default";

// Replies for the calls of one input, in order; an empty queue answers with no bytes at all.
struct Script {
    std::vector<std::string> replies;
    size_t next = 0;
    binder_status_t status = STATUS_OK;
};
Script gScript;

binder_status_t onTransact(AIBinder*, transaction_code_t, const AParcel*, AParcel* reply) {
    if (gScript.next < gScript.replies.size()) {
        const std::string& bytes = gScript.replies[gScript.next++];
        FUZZ_CHECK(AParcel_unmarshal(reply, reinterpret_cast<const uint8_t*>(bytes.data()),
                                     bytes.size()) == STATUS_OK);
    }
    return gScript.status;
}

void* onCreate(void* args) {
    return args;
}
void onDestroy(void*) {}

class NullCallback : public BnTroxCallback {
  public:
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>&) override {
        return ndk::ScopedAStatus::ok();
    }
};

struct World {
    ndk::SpAIBinder service;
    std::shared_ptr<ITrox> trox;
    std::shared_ptr<ITroxCallback> callback;
};

World& world() {
    static World w;
    return w;
}

class CountingCallback : public IClientCallback {
  public:
    void onCallback(std::list<PymClient::Resource>) override {}
};

void callBpTrox(ITrox& trox, int which) {
    TroxRequestParcel request;
    request.requestData.resize(2);
    int32_t i = 0;
    std::string s;
    std::vector<TroxRequestData> records;
    // One line per call reads as a table.
    // clang-format off
    switch (which) {
        case 0: (void)trox.reservedSlot1(); break;
        case 1: (void)trox.trox_init(); break;
        case 2: (void)trox.troxResCtlRequest(request, &i); break;
        case 3: (void)trox.troxResCtlRelease(7, &i); break;
        case 4: (void)trox.troxResStateRequest(request, &records); break;
        case 5: (void)trox.troxResListeningRegister(request, world().callback, &i); break;
        case 6: (void)trox.troxResListeningUnRegister(7, &i); break;
        case 7: (void)trox.troxPropertyGet("k", &s); break;
        case 8: (void)trox.troxPropertySet("k", "v", &i); break;
        case 9: (void)trox.troxThermalListeningRegister({1, 2}, world().callback, &i); break;
        case 10: (void)trox.troxThermalListeningUnregister(7, &i); break;
        case 11: (void)trox.reservedSlot12(); break;
        case 12: (void)trox.setRelatedSysInfo(1, 2, &i); break;
        case 13: (void)trox.troxRuleCtl(1, 2, records, &i); break;
        case 14: (void)trox.troxResCtlRequestOneWay(request); break;
        case 15: (void)trox.getInterfaceVersion(&i); break;
        default: (void)trox.getInterfaceHash(&s); break;
    }
    // clang-format on
}

// The library's callers, each reading one kind of reply. The entry points documented to throw on
// a bad answer are allowed to; a troxPropertyGet value of 256 characters aborts by contract, so
// that one is left to the BpTrox half.
void callLibrary(int which) {
    std::vector<PymClient::Resource> resources{{0x40400000, "1"}, {0x40800000, "2"}};
    std::string text;
    try {
        // One line per call reads as a table.
        // clang-format off
        switch (which) {
            case 0: (void)pymInit(); break;
            case 1: (void)PymResAcquire(resources, 0, "fuzz", 100); break;
            case 2: PymRelease(7); break;
            case 3: (void)PymMutiResStateRequest(resources); break;
            case 4: PymResStateRequest(0x40400000, text); break;
            case 5: (void)PymGetHistory(text); break;
            case 6: (void)PymGetPMStatus(1); break;
            case 7: (void)Pym_fetch_dataset(resources); break;
            case 8: (void)PymGetFeatureStatus(1); break;
            case 9: (void)PymGetPowerConsis(); break;
            case 10: (void)PymNotify(1, 2, {3, 4}); break;
            case 11: (void)pymRuleCtl(1, 2, resources); break;
            case 12: {
                std::vector<std::string> result;
                (void)troxHalclient::trox_res_state_request_by_path({"/a", "/b"}, {"1", "2"}, 0,
                                                                    result);
                break;
            }
            case 13: {
                troxHalclient::ResourceList list{{0x40400000, "1"}};
                (void)troxHalclient::troxResListeningRegister(
                        list, 0, std::make_shared<CountingCallback>());
                break;
            }
            default: (void)troxHalclient::troxPropertySet("k", "v"); break;
        }
        // clang-format on
    } catch (const std::bad_optional_access&) {
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    // Calls from the other side and death notices come in on binder threads only.
    ABinderProcess_startThreadPool();
    static AIBinder_Class* clazz =
            AIBinder_Class_define(ITrox::descriptor, onCreate, onDestroy, onTransact);
    AIBinder* raw = AIBinder_new(clazz, nullptr);
    binder_host::declareService(kInstance);
    FUZZ_CHECK(AServiceManager_addService(raw, kInstance) == STATUS_OK);
    AIBinder_decStrong(raw);
    World& w = world();
    w.service = ndk::SpAIBinder(AServiceManager_checkService(kInstance));
    FUZZ_CHECK(w.service.get() != nullptr && AIBinder_isRemote(w.service.get()));
    w.trox = ITrox::fromBinder(w.service);
    FUZZ_CHECK(w.trox != nullptr);
    w.callback = ndk::SharedRefBase::make<NullCallback>();
    return 0;
}

// Byte 0: the service's transaction status (mostly ok); then per call: one byte choosing the
// operation, then that call's reply as a length-prefixed chunk.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    // ConsumeIntegral would take bytes from the far end; the layout above reads front to back.
    auto nextByte = [&input] {
        const std::vector<uint8_t> byte = input.ConsumeBytes<uint8_t>(1);
        return byte.empty() ? uint8_t{0} : byte[0];
    };
    const uint8_t statusByte = nextByte();
    gScript = Script{};
    static constexpr binder_status_t kFailures[] = {
            STATUS_UNKNOWN_ERROR,   STATUS_DEAD_OBJECT, STATUS_FAILED_TRANSACTION,
            STATUS_BAD_VALUE,       STATUS_NO_MEMORY,   STATUS_UNKNOWN_TRANSACTION,
            STATUS_UNEXPECTED_NULL, STATUS_BAD_TYPE};
    gScript.status = statusByte < 0xf0 ? STATUS_OK : kFailures[statusByte & 7];
    std::vector<int> calls;
    while (input.remaining_bytes() > 0 && calls.size() < 8) {
        calls.push_back(nextByte());
        gScript.replies.push_back(input.ConsumeRandomLengthString(4096));
    }
    for (int call : calls) {
        if (call < 0x80) {
            callBpTrox(*world().trox, call % 17);
        } else {
            callLibrary((call - 0x80) % 15);
        }
    }
    // One-way calls and one-shot callbacks must not pile up between inputs.
    binder_host::drainNotifications();
    return 0;
}
