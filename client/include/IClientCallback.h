#pragma once

// Callback interfaces that callers implement to receive answers and resource changes that the
// service sends later. The library holds them by shared pointer and never creates or deletes them.
// onCallback runs on one of the caller process's binder threads, with no library lock held; the
// process must run a binder thread pool (ABinderProcess_startThreadPool) or no call ever comes.

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
    virtual void onCallback(std::list<PymClient::Resource> resources) = 0;
    // Defined in the library, so that its vtable and type information live there once.
    virtual ~IClientCallback();
};

// Path form: values first, then paths, both with one entry per record.
class VEXAL_EXPORT IClientCallbackByPath {
  public:
    virtual void onCallback(std::vector<std::string> values, std::vector<std::string> paths) = 0;
    virtual ~IClientCallbackByPath();
};
