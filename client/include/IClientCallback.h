#pragma once

// Callback interfaces that callers implement to receive answers and resource changes that the
// service sends later. The library holds them by shared pointer and never creates or deletes them.
//
// Threads: onCallback runs on one of the caller process's binder threads, with no library lock
// held, so it may call the library. The process must run a binder thread pool
// (ABinderProcess_startThreadPool, or a thread in ABinderProcess_joinThreadPool); until it does,
// no call comes. Callbacks of different requests or registrations may run at the same time on
// different binder threads, so an object passed more than once guards its own state.
//
// Exceptions: onCallback must not throw. Nothing between it and binder catches, and binder
// cannot carry an exception back to the service.
//
// Lifetime: the library lets go of the object when it is done with the request or registration
// (after a one-shot answer, at troxHalclient::troxResListeningUnRegister, or at unload) and when
// binder drops its own hold; the last release, and with it the destructor, may come on a binder
// thread.

#include "PymClient.h"
#include "vexal_export.h"

#include <list>
#include <string>
#include <vector>

// Id form: one resource per record of the callback, in the service's order; a record without a
// value arrives with an empty value.
class VEXAL_EXPORT IClientCallback {
  public:
    // Declared first: callers built against the device library expect it in the first slot.
    // `resources` is the callback's own copy; it is never empty.
    virtual void onCallback(std::list<PymClient::Resource> resources) = 0;
    // Defined in the library, so that its vtable and type information live there once.
    virtual ~IClientCallback();
};

// Path form: values first, then paths, both with one entry per record.
class VEXAL_EXPORT IClientCallbackByPath {
  public:
    // `values[i]` belongs to `paths[i]`; a record without a value or a path gives an empty
    // string in its place. Both are the callback's own copies, never empty. Same slot rule as
    // IClientCallback::onCallback.
    virtual void onCallback(std::vector<std::string> values, std::vector<std::string> paths) = 0;
    // Defined in the library, as IClientCallback's.
    virtual ~IClientCallbackByPath();
};
