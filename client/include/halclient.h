#pragma once

// The resource-control client class: static members that ask the service to apply, read and
// watch resources, run scenarios and diagnostics. Integer results are -1 when there was no
// answer, no connection or the input was rejected.
//
// Binder threads: callbacks and the service's death notice reach the caller's process only on
// the threads it gave to binder (ABinderProcess_startThreadPool, or a thread in
// ABinderProcess_joinThreadPool). The library starts none, so a process that passes a callback,
// or relies on reconnecting after the service died, must run a binder thread pool. Without one
// callbacks never run, and the first call after a death fails with -1 before the next one
// reconnects.

#include "IClientCallback.h"
#include "PymClient.h"
#include "TroxCallbackClient.h"
#include "vexal_export.h"

#include <aidl/vendor/vexal/hardware/trox/TroxRequestParcel.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

// True when every element pairs a non-zero id with a non-empty value, or a zero id with none.
VEXAL_EXPORT bool checkResourceList(std::list<PymClient::Resource>& resources);

class VEXAL_EXPORT troxHalclient {
  public:
    using ResourceList = std::list<PymClient::Resource>;
    using TroxRequestParcel = aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

    // Resource control. The result is the request's handle; the short forms fill in -1 for
    // what they leave out. A flag of 1 or more sets the request's flag.
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int param,
                                 int flag, int pid);
    static int troxResCtlRequest(int duration, ResourceList& resources, int pid);
    static int troxResCtlRequest(int duration, ResourceList& resources, int flag, int pid);
    static int troxResCtlRequest(int duration, ResourceList& resources, int param, int flag,
                                 int pid);
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int pid);
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int flag,
                                 int pid);
    // The service's answer reaches `callback` once, later, on a binder thread: needs the
    // process's binder thread pool.
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int param,
                                 int flag, int pid,
                                 const std::shared_ptr<IClientCallback>& callback);
    static int troxResCtlRelease(int handle);

    // Scenario control. The short form is (-1, duration, id, -1, -1, pid).
    static int troxSACtlRequest(int duration, int id, int pid);
    static int troxSACtlRequest(int handle, int duration, int id, int param, int flag, int pid);
    // As above; `callback` runs on a binder thread: needs the process's binder thread pool.
    static int troxSACtlRequest(int handle, int duration, int id, int param, int flag, int pid,
                                const std::shared_ptr<IClientCallback>& callback);
    static int troxSACtlRelease(int handle);

    // Appends the values read to `result`; returns its size afterwards, or -1.
    static int troxResStateRequest(ResourceList& request, int pid, ResourceList& result);

    // Listening: the callback is called on every change until the handle is unregistered, on
    // a binder thread: needs the process's binder thread pool. A second registration of the
    // same id list is refused.
    static int troxResListeningRegister(ResourceList& resources, int value,
                                        const std::shared_ptr<IClientCallback>& callback);
    static int troxResListeningUnRegister(int handle);
    // 0 when the service took the levels, else -1.
    static int troxThermalNotify(ResourceList& resources, int value);
    // `callback` gets thermal levels on a binder thread: needs the process's binder thread pool.
    static int troxThermalListeningRegister(const std::vector<int>& ids,
                                            const std::shared_ptr<IClientCallback>& callback);
    // Leaves the library's side of the registration until troxResListeningUnRegister.
    static int troxThermalListeningUnregister(int handle);

    // Path-addressed requests: paths[i] goes with values[i].
    static int trox_resctl_request_by_path(int handle, long duration,
                                           const std::vector<std::string>& paths,
                                           const std::vector<std::string>& values, int param,
                                           int flag, int pid);
    // `callback` gets the answer on a binder thread: needs the process's binder thread pool.
    static int trox_resctl_request_with_callback_by_path(
            int handle, long duration, const std::vector<std::string>& paths,
            const std::vector<std::string>& values, int param, int flag, int pid,
            const std::shared_ptr<IClientCallbackByPath>& callback);
    // Appends the values read to `result`; returns its size afterwards, or -1.
    static int trox_res_state_request_by_path(const std::vector<std::string>& paths,
                                              const std::vector<std::string>& values, int value,
                                              std::vector<std::string>& result);
    // Sets result[path] for each answer; returns the size of `result`, or -1.
    static int trox_res_state_request_map_by_path(const std::map<std::string, std::string>& request,
                                                  int value,
                                                  std::map<std::string, std::string>& result);
    // Listening by path; `callback` runs on a binder thread for every change: needs the
    // process's binder thread pool.
    static int trox_res_listening_register_by_path(
            const std::vector<std::string>& paths, int value,
            const std::shared_ptr<IClientCallbackByPath>& callback);
    static int trox_res_listening_register_map_by_path(
            const std::map<std::string, std::string>& request, int value,
            const std::shared_ptr<IClientCallbackByPath>& callback);

    // Diagnostics: the service dumps a table to its own log, or switches its request history.
    // 0 when the service agreed, else -1.
    static int troxDumpToDoQueue();
    static int troxDumpRunMap();
    static int troxDumpActiveResMap();
    static int troxDumpResRequest();
    static int troxDumpResInfo();
    static int troxDumpSAInfo();
    static int troxDumpPidFdList();
    static int troxDumpPidfdMonitorMap();
    static int troxDumpResRecordList();
    static int troxHistoryRequestRecordOn();
    static int troxHistoryRequestRecordOff();

    static void trox_init();
    // A new 256-byte array that the caller frees with delete[]; all zero without a connection.
    // A value of 256 characters or more aborts the process.
    static char* troxPropertyGet(const std::string& key);
    static int troxPropertySet(const std::string& key, const std::string& value);
    // Replaces the parcel's tags with the single tag "zdbdebug".
    static void trox_add_zdbdebug_for_request_parcel(TroxRequestParcel& parcel);
};
