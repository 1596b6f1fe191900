#pragma once

#include <memory>
#include <string>

#include "transport.h"

namespace binder_impl {

// Incoming calls and death notices run on the process's binder threads (process.h), and wait
// while it has none; one-way calls to one object run in order. A binder that came from a third
// process cannot be passed on: the call fails with STATUS_BAD_VALUE.

// Services of this process become reachable from others through a listening socket per instance;
// all of these are no-ops or null when socket mode is off (see host_dir.h). False when the socket
// could not be made, or another process still answers on it (that one keeps it).
bool publishService(const std::string& instance, const std::shared_ptr<RemoteObject>& service);
// Stops listening and closes that instance's connections: its clients see a death.
void unpublishService(const std::string& instance);
// The service's object over a (shared, per socket) connection; null if nobody answers.
std::shared_ptr<RemoteObject> connectService(const std::string& instance);
// A socket file exists for instance (its service may still be starting, or gone).
bool socketPresent(const std::string& instance);
bool socketModeEnabled();
// Stops every listener and closes every connection.
void resetSocketTransport();

}  // namespace binder_impl
