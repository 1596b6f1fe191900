#pragma once

// The resource-control client class: static members that ask the service to apply, read and
// watch resources, run scenarios and diagnostics.
//
// Results: integer results are what the service wrote, passed on unchanged whatever their sign,
// or -1 when the service was not reached, the call failed or the input was rejected (nothing is
// sent then). Members that count or convert say so.
//
// Blocking: every member that talks to the service first makes sure of the connection. When the
// service is declared but not yet registered, that waits for it with no time limit
// (AServiceManager_waitForService), holding the connection's lock exclusively, so every other
// member on every thread waits as well. An undeclared service fails the call at once. The
// member then makes one two-way call and waits for the service's answer; a failed call drops
// the connection, and the next member reconnects.
//
// Threads: any member may be called from any thread. Service calls run in parallel under a
// shared hold of the connection's lock. The id and path listening registrations also hold the
// registration list's lock across their service call, so they wait for one another, and
// troxResListeningUnRegister waits for them after its own call. troxThermalListeningRegister
// adds to that list without its lock: it must not run at the same time as another registration
// or troxResListeningUnRegister.
//
// Exceptions: any member may throw std::bad_alloc; nothing else is thrown. troxPropertyGet ends
// the process on an oversized value (see there).
//
// Binder threads: callbacks and the service's death notice reach the caller's process only on
// the threads it gave to binder (ABinderProcess_startThreadPool, or a thread in
// ABinderProcess_joinThreadPool). The library starts none, so a process that passes a callback,
// or relies on reconnecting after the service died, must run a binder thread pool. Without one
// callbacks wait for a binder thread that never comes, and the first call after a death fails
// with -1 before the next one reconnects.

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

// True when every element pairs a non-zero id with a non-empty value, or a zero id with none
// (an empty value counts as none); an empty list is well formed. Reads the list only, takes no
// lock, throws nothing.
VEXAL_EXPORT bool checkResourceList(std::list<PymClient::Resource>& resources);

class VEXAL_EXPORT troxHalclient {
  public:
    // The caller's resource settings; lists passed by non-const reference are only read unless
    // a member says it appends.
    using ResourceList = std::list<PymClient::Resource>;
    // The request record sent to the service.
    using TroxRequestParcel = aidl::vendor::vexal::hardware::trox::TroxRequestParcel;

    // Resource control. Asks the service to apply `resources` for `duration`: `handle` names an
    // existing request to change (-1 for a new one), `param` is passed through, a `flag` of 1 or
    // more sets the request's flag, `pid` is the requesting process. Returns the request's
    // handle as the service wrote it, or -1; a list that fails checkResourceList gives -1 and
    // sends nothing. The short forms below fill in -1 for what they leave out.
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int param,
                                 int flag, int pid);
    // (-1, duration, resources, -1, -1, pid).
    static int troxResCtlRequest(int duration, ResourceList& resources, int pid);
    // (-1, duration, resources, -1, flag, pid).
    static int troxResCtlRequest(int duration, ResourceList& resources, int flag, int pid);
    // (-1, duration, resources, param, flag, pid).
    static int troxResCtlRequest(int duration, ResourceList& resources, int param, int flag,
                                 int pid);
    // (handle, duration, resources, -1, -1, pid).
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int pid);
    // (handle, duration, resources, -1, flag, pid).
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int flag,
                                 int pid);
    // As the first form, and the service's answer reaches `callback` once, later, on a binder
    // thread (possibly before this returns): needs the process's binder thread pool. The
    // library keeps the callback from the send until that answer; if the request fails or is
    // never answered, until unload. A rejected list keeps nothing.
    static int troxResCtlRequest(int handle, int duration, ResourceList& resources, int param,
                                 int flag, int pid,
                                 const std::shared_ptr<IClientCallback>& callback);
    // Ends the request with `handle`. Returns what the service wrote, or -1.
    static int troxResCtlRelease(int handle);

    // Scenario control: starts scenario `id` for `duration`; the other arguments as for
    // troxResCtlRequest. Returns the scenario request's handle as the service wrote it, or -1.
    // The short form: (-1, duration, id, -1, -1, pid).
    static int troxSACtlRequest(int duration, int id, int pid);
    // The full form.
    static int troxSACtlRequest(int handle, int duration, int id, int param, int flag, int pid);
    // As above; `callback` runs once on a binder thread, and is kept, as for troxResCtlRequest's
    // callback form: needs the process's binder thread pool.
    static int troxSACtlRequest(int handle, int duration, int id, int param, int flag, int pid,
                                const std::shared_ptr<IClientCallback>& callback);
    // Ends the scenario request with `handle`. Returns what the service wrote, or -1.
    static int troxSACtlRelease(int handle);

    // Reads the resources whose ids are in `request` (sent unchecked, with their values) for
    // process `pid`, and appends one resource per answer to `result` (an answer without a value
    // gives an empty one). Returns the size of `result` afterwards, or -1, leaving `result` as
    // it was, without a connection, when the call failed or when the service answered with
    // nothing.
    static int troxResStateRequest(ResourceList& request, int pid, ResourceList& result);

    // Listening: registers `callback` for changes of the ids in `resources`; `value` is sent as
    // the request's pid. The callback is called on every change until the handle is
    // unregistered, on a binder thread: needs the process's binder thread pool. Returns the
    // registration's handle as the service wrote it, or -1. A second registration of the same
    // id list (same ids in the same order, whatever the callback; thermal registrations count,
    // and an empty list matches any path registration) is refused with -1 and nothing is sent.
    static int troxResListeningRegister(ResourceList& resources, int value,
                                        const std::shared_ptr<IClientCallback>& callback);
    // Ends the registration with `handle` at the service and, unless the service was not
    // reached, drops every library-side registration with that handle (listening, path or
    // thermal), even when the call failed. Returns what the service wrote, or -1.
    static int troxResListeningUnRegister(int handle);
    // Sends thermal levels: `resources` pairs ids with levels and must pass checkResourceList,
    // `value` is sent as the request's pid. 0 when the service took the levels (answered 1 or
    // more), else -1.
    static int troxThermalNotify(ResourceList& resources, int value);
    // `callback` gets thermal levels of `ids` on a binder thread: needs the process's binder
    // thread pool. Returns the registration's handle as the service wrote it, or -1. No
    // duplicate check, and no lock on the registration list (see Threads above).
    static int troxThermalListeningRegister(const std::vector<int>& ids,
                                            const std::shared_ptr<IClientCallback>& callback);
    // Ends the thermal registration with `handle` at the service. Returns what the service
    // wrote, or -1. Leaves the library's side of the registration until
    // troxResListeningUnRegister.
    static int troxThermalListeningUnregister(int handle);

    // Path-addressed requests: paths[i] goes with values[i]; the other arguments as for
    // troxResCtlRequest (`duration` widened to 64 bits). Each request carries the debug tag
    // "zdbdebug". Returns the request's handle as the service wrote it, or -1; unequal counts
    // of paths and values give -1 and send nothing.
    static int trox_resctl_request_by_path(int handle, long duration,
                                           const std::vector<std::string>& paths,
                                           const std::vector<std::string>& values, int param,
                                           int flag, int pid);
    // As above; `callback` gets the answer once, values first, on a binder thread, and is kept
    // as for troxResCtlRequest's callback form: needs the process's binder thread pool.
    static int trox_resctl_request_with_callback_by_path(
            int handle, long duration, const std::vector<std::string>& paths,
            const std::vector<std::string>& values, int param, int flag, int pid,
            const std::shared_ptr<IClientCallbackByPath>& callback);
    // Reads the values at `paths`; `values` are sent along only when there is one for every
    // path, `value` is sent as the request's pid. Appends the values read to `result` (an answer
    // without a value gives an empty string); returns its size afterwards, or -1, leaving
    // `result` as it was, without a connection, when the call failed or when the service
    // answered with nothing.
    static int trox_res_state_request_by_path(const std::vector<std::string>& paths,
                                              const std::vector<std::string>& values, int value,
                                              std::vector<std::string>& result);
    // As above with the paths and values of `request`, in key order. Sets result[path] for each
    // answer that has both a path and a value; returns the size of `result`, or -1.
    static int trox_res_state_request_map_by_path(const std::map<std::string, std::string>& request,
                                                  int value,
                                                  std::map<std::string, std::string>& result);
    // Listening by path; `callback` runs on a binder thread for every change: needs the
    // process's binder thread pool. `value` is sent as the request's pid. Returns the
    // registration's handle as the service wrote it, or -1. A second registration of the same
    // path list is refused with -1 and nothing is sent (an empty list matches any id or thermal
    // registration). Unregister with troxResListeningUnRegister.
    static int trox_res_listening_register_by_path(
            const std::vector<std::string>& paths, int value,
            const std::shared_ptr<IClientCallbackByPath>& callback);
    // As above with the paths of `request`, in key order, each sent with its value.
    static int trox_res_listening_register_map_by_path(
            const std::map<std::string, std::string>& request, int value,
            const std::shared_ptr<IClientCallbackByPath>& callback);

    // Diagnostics: the service dumps a table to its own log, or switches its request history.
    // Each sends one diagnostic request whose single entry carries the selector named below
    // (9 is not used), and returns 0 when the service agreed (answered 1 or more), else -1.
    // Selector 0: the to-do queue.
    static int troxDumpToDoQueue();
    // Selector 1: the run map.
    static int troxDumpRunMap();
    // Selector 2: the active-resource map.
    static int troxDumpActiveResMap();
    // Selector 3: the resource requests.
    static int troxDumpResRequest();
    // Selector 4: the resource information.
    static int troxDumpResInfo();
    // Selector 5: the scenario information.
    static int troxDumpSAInfo();
    // Selector 6: the pid-fd list.
    static int troxDumpPidFdList();
    // Selector 7: the pidfd monitor map.
    static int troxDumpPidfdMonitorMap();
    // Selector 8: the resource record list.
    static int troxDumpResRecordList();
    // Selector 10: request history recording on.
    static int troxHistoryRequestRecordOn();
    // Selector 11: request history recording off.
    static int troxHistoryRequestRecordOff();

    // Tells the service to initialise. Nothing is reported back; a failure is only logged.
    static void trox_init();
    // A new 256-byte array that the caller frees with delete[], holding property `key`'s value
    // and its NUL; all zero without a connection or when the call failed. A value of 256
    // characters or more aborts the process.
    static char* troxPropertyGet(const std::string& key);
    // Sets property `key` to `value`. Returns what the service wrote, or -1.
    static int troxPropertySet(const std::string& key, const std::string& value);
    // Replaces the parcel's tags with the single tag "zdbdebug". Touches nothing else: no
    // service, no lock.
    static void trox_add_zdbdebug_for_request_parcel(TroxRequestParcel& parcel);
};
