#pragma once

// Shared by the call benchmarks: a service that does nothing, the raw binder calls used as
// baselines, and the request the Event API builds for the same arguments.

#include "PymClient.h"

#include <aidl/vendor/vexal/hardware/trox/BnTrox.h>
#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_status.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace bench {

using ::aidl::vendor::vexal::hardware::trox::BnTrox;
using ::aidl::vendor::vexal::hardware::trox::BnTroxCallback;
using ::aidl::vendor::vexal::hardware::trox::ITrox;
using ::aidl::vendor::vexal::hardware::trox::ITroxCallback;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;
using ::aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

inline constexpr char kTroxInstance[] = "vendor.vexal.hardware.trox.ITrox/default";

// Answers every call at once without looking at it, so that only the call's own cost remains.
class NullTrox : public BnTrox {
  public:
    using Status = ndk::ScopedAStatus;
    Status reservedSlot1() override { return Status::ok(); }
    Status trox_init() override { return Status::ok(); }
    Status troxResCtlRequest(const TroxRequestParcel&, int32_t* out) override {
        pause();
        *out = 1;
        return Status::ok();
    }
    Status troxResCtlRelease(int32_t, int32_t* out) override {
        pause();
        *out = 0;
        return Status::ok();
    }
    // A service that takes this long per acquire or release, off the CPU: with it, whether
    // callers overlap no longer depends on how many free cores the machine has.
    void setPause(std::chrono::microseconds pause) { pause_.store(pause.count()); }
    Status troxResStateRequest(const TroxRequestParcel&, std::vector<TroxRequestData>*) override {
        return Status::ok();
    }
    Status troxResListeningRegister(const TroxRequestParcel&, const std::shared_ptr<ITroxCallback>&,
                                    int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status troxResListeningUnRegister(int32_t, int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status troxPropertyGet(const std::string&, std::string*) override { return Status::ok(); }
    Status troxPropertySet(const std::string&, const std::string&, int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status troxThermalListeningRegister(const std::vector<int32_t>&,
                                        const std::shared_ptr<ITroxCallback>&,
                                        int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status troxThermalListeningUnregister(int32_t, int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status reservedSlot12() override { return Status::ok(); }
    Status setRelatedSysInfo(int32_t, int32_t, int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status troxRuleCtl(int32_t, int32_t, const std::vector<TroxRequestData>&,
                       int32_t* out) override {
        *out = 0;
        return Status::ok();
    }
    Status troxResCtlRequestOneWay(const TroxRequestParcel&) override { return Status::ok(); }

  private:
    void pause() const {
        if (const long us = pause_.load(std::memory_order_relaxed); us > 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(us));
        }
    }
    std::atomic<long> pause_{0};
};

class NullCallback : public BnTroxCallback {
  public:
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>&) override {
        return ndk::ScopedAStatus::ok();
    }
};

// The arguments every acquire benchmark passes: an event id and one resource.
inline constexpr int32_t kEventId = 4097;
inline const std::string kPkg = "com.example.camera";
inline const std::string kIdentity = "bench";
inline constexpr int32_t kDuration = 1000;
inline const std::vector<PymClient::Resource> kResources = {{0x40800000, std::string("1800000")}};

inline TroxRequestData entry(int32_t id, const std::optional<std::string>& value) {
    TroxRequestData data;
    data.res_Id = static_cast<int64_t>(static_cast<uint32_t>(id));
    data.res_Value = value;
    return data;
}

// Byte for byte what PymEventAcquire sends for the arguments above.
inline TroxRequestParcel eventRequest() {
    TroxRequestParcel parcel;
    parcel.requestType = 8;
    parcel.identity = kIdentity;
    parcel.duration = kDuration;
    parcel.pkg = kPkg;
    parcel.requestData.push_back(entry(kEventId, std::nullopt));
    for (const auto& r : kResources) parcel.requestData.push_back(entry(r.id, r.value));
    return parcel;
}

// A request with `count` resources, as the client class sends it.
inline TroxRequestParcel resourceRequest(int count) {
    TroxRequestParcel parcel;
    parcel.requestType = 1;
    parcel.handle = -1;
    parcel.duration = kDuration;
    parcel.param = -1;
    parcel.pid = 1234;
    for (int i = 0; i < count; ++i) {
        parcel.requestData.push_back(entry(0x40800000 + i, std::to_string(1000000 + i)));
    }
    return parcel;
}

// One two-way call made with nothing but the binder C API: prepare, write, transact, read the
// status header and the int result.
template <typename Arg>
inline binder_status_t rawCall(AIBinder* binder, transaction_code_t code, const Arg& arg,
                               int32_t* result) {
    AParcel* in = nullptr;
    if (binder_status_t s = AIBinder_prepareTransaction(binder, &in); s != STATUS_OK) return s;
    ndk::ScopedAParcel request(in);
    if (binder_status_t s = ndk::AParcel_writeData(request.get(), arg); s != STATUS_OK) return s;
    AParcel* out = nullptr;
    binder_status_t s = AIBinder_transact(binder, code, request.getR(), &out, 0);
    if (s != STATUS_OK) return s;
    ndk::ScopedAParcel reply(out);
    AStatus* status = nullptr;
    if ((s = AParcel_readStatusHeader(reply.get(), &status)) != STATUS_OK) return s;
    ndk::ScopedAStatus owned(status);
    if (!owned.isOk()) return STATUS_FAILED_TRANSACTION;
    return AParcel_readInt32(reply.get(), result);
}

inline binder_status_t rawAcquire(AIBinder* binder, const TroxRequestParcel& parcel,
                                  int32_t* handle) {
    return rawCall(binder, ITrox::TRANSACTION_troxResCtlRequest, parcel, handle);
}

inline binder_status_t rawRelease(AIBinder* binder, int32_t handle) {
    int32_t ignored = 0;
    return rawCall(binder, ITrox::TRANSACTION_troxResCtlRelease, handle, &ignored);
}

// Runs the tasks in turn, one of each per iteration with the order rotating, and records each
// task's time. Under a drifting load every task sees the same conditions, which separate runs
// cannot promise. Returns false when a task failed.
class Interleaved {
  public:
    using Task = std::function<bool()>;
    explicit Interleaved(std::vector<Task> tasks)
        : tasks_(std::move(tasks)), samples_(tasks_.size()) {}

    bool runOnce() {
        const size_t n = tasks_.size();
        for (size_t k = 0; k < n; ++k) {
            const size_t i = (k + turn_) % n;
            const auto start = std::chrono::steady_clock::now();
            const bool ok = tasks_[i]();
            const auto end = std::chrono::steady_clock::now();
            if (!ok) return false;
            samples_[i].push_back(std::chrono::duration<double, std::nano>(end - start).count());
        }
        ++turn_;
        return true;
    }

    // Median time of task i in ns: a preempted sample moves it less than it moves a mean.
    double median(size_t i) {
        auto& v = samples_[i];
        if (v.empty()) return 0;
        std::nth_element(v.begin(), v.begin() + static_cast<long>(v.size() / 2), v.end());
        return v[v.size() / 2];
    }

  private:
    std::vector<Task> tasks_;
    std::vector<std::vector<double>> samples_;
    size_t turn_ = 0;
};

}  // namespace bench
