#pragma once

// The library's side of the service's callback interface: wraps one caller callback object and
// routes the service's records to it.

#include "IClientCallback.h"
#include "vexal_export.h"

#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>

#include <memory>
#include <mutex>
#include <vector>

class VEXAL_EXPORT TroxCallbackClient : public aidl::vendor::vexal::hardware::trox::BnTroxCallback {
  public:
    using TroxRequestData = aidl::vendor::vexal::hardware::trox::TroxRequestData;

    // Create only through ndk::SharedRefBase::make: the binder runtime shares ownership.
    explicit TroxCallbackClient(const std::shared_ptr<IClientCallback>& callback,
                                bool is_register = true, bool is_by_path = false);
    TroxCallbackClient(const std::shared_ptr<IClientCallbackByPath>& callback, bool is_register,
                       bool is_by_path);
    ~TroxCallbackClient() override;

    // Always answers ok: the service has nothing to do with what the caller thinks.
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>& data) override;

    std::shared_ptr<IClientCallback> mCallback;
    std::shared_ptr<IClientCallbackByPath> mCallbackByPath;
    // A registration client stays put after a callback; a one-shot client leaves
    // request_callbacks after its first one.
    bool is_register;
    bool is_by_path;
};

// One-shot request clients waiting for their answer; this keeps them alive until it arrives.
VEXAL_EXPORT extern std::vector<std::shared_ptr<TroxCallbackClient>> request_callbacks;
VEXAL_EXPORT extern std::mutex request_callback_mutex;
