#pragma once

// The library's side of the service's callback interface: wraps one caller callback object and
// routes the service's records to it. The client-class members (halclient.h) make these; a
// caller only needs the type to read the exported registry below.

#include "IClientCallback.h"
#include "vexal_export.h"

#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>

#include <memory>
#include <mutex>
#include <vector>

class VEXAL_EXPORT TroxCallbackClient : public aidl::vendor::vexal::hardware::trox::BnTroxCallback {
  public:
    // One record of the service's callback.
    using TroxRequestData = aidl::vendor::vexal::hardware::trox::TroxRequestData;

    // Create only through ndk::SharedRefBase::make: the binder runtime shares ownership.
    // Wraps an id-form callback; `is_register` and `is_by_path` fill the fields of those names.
    // Each construction also points BnTroxCallback::logFunc at the library's transaction logger,
    // without a lock (every writer stores the same function). The constructor throws nothing;
    // make may throw std::bad_alloc.
    explicit TroxCallbackClient(const std::shared_ptr<IClientCallback>& callback,
                                bool is_register = true, bool is_by_path = false);
    // Wraps a path-form callback; otherwise as above. Callers pass both flags.
    TroxCallbackClient(const std::shared_ptr<IClientCallbackByPath>& callback, bool is_register,
                       bool is_by_path);
    // Runs when the last holder, the library's registry or binder, lets go: possibly on a
    // binder thread. Lets go of the caller's object.
    ~TroxCallbackClient() override;

    // Called by binder on one of the process's binder threads when the service calls back (a
    // one-way call: the service does not wait). Converts the records to the wrapped callback's
    // form and calls it, with no library lock held; an empty record list, or a client without a
    // callback of its form, calls nothing. A one-shot client then leaves request_callbacks under
    // request_callback_mutex. Always answers ok: the service has nothing to do with what the
    // caller thinks. Lets through whatever the caller's callback throws (it must not), and
    // std::bad_alloc.
    ndk::ScopedAStatus onCallback(const std::vector<TroxRequestData>& data) override;

    // The wrapped callback; only the one of the client's form is set.
    std::shared_ptr<IClientCallback> mCallback;
    std::shared_ptr<IClientCallbackByPath> mCallbackByPath;
    // A registration client stays put after a callback; a one-shot client leaves
    // request_callbacks after its first one.
    bool is_register;
    // Delivers to mCallbackByPath in path form when true, else to mCallback in id form.
    bool is_by_path;
};

// One-shot request clients waiting for their answer; this keeps them alive until it arrives.
// A client whose request failed or is never answered stays until unload. Guarded by
// request_callback_mutex: hold it for any access, and call nothing of the library while
// holding it.
VEXAL_EXPORT extern std::vector<std::shared_ptr<TroxCallbackClient>> request_callbacks;
VEXAL_EXPORT extern std::mutex request_callback_mutex;
