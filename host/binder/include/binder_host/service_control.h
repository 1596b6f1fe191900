#pragma once

// Host-only controls for tests: nothing on a device has these.
//
// Binder threads. As on a device, calls from another process, one-way calls and death notices
// reach a process only on the threads it gave to binder: ABinderProcess_startThreadPool (grown
// on demand up to ABinderProcess_setThreadPoolMaxThreadCount) and threads in
// ABinderProcess_joinThreadPool. Until it has one, that work waits.
//
// Services in the same process differ from a device. There a client of a service in its own
// process gets the local object and calls it directly on its own thread, one-way calls
// included. Here it gets a proxy so that every call is encoded and decoded, as across
// processes. Two-way calls still run on the caller's thread, but one-way calls and the death
// notices of killService go to the binder threads, as they would from another process: a test
// process needs a thread pool to see them.

#include <android/binder_status.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace binder_host {

// In-process manifest entries seen by AServiceManager_isDeclared.
void declareService(const std::string& instance);
void undeclareService(const std::string& instance);

// Makes the service registered under instance die: its name is removed, its proxies answer
// STATUS_DEAD_OBJECT and each linked death recipient fires once on a binder thread. Waits for
// the recipients unless called while serving a transaction, on a binder thread, or in a process
// without binder threads. False if nothing is registered under that name.
bool killService(const std::string& instance);

// The next count calls to AIBinder_linkToDeath fail with status.
void failNextLinkToDeath(binder_status_t status, int count = 1);

// The next count transactions on any proxy fail with status before reaching the service, as a
// broken transport would make them fail; one-way calls included.
void failNextTransactions(binder_status_t status, int count = 1);

// Drops every service, declaration and injected fault, and lets queued one-way calls and death
// notifications finish first. Also stops listening and closes every socket connection.
void resetServiceManager();

// Returns once no one-way call, incoming call or death notice is queued or running on the
// binder threads. Returns at once on a binder thread or in a process without binder threads.
void drainNotifications();

// Work of this process that waits for a binder thread (see above).
size_t queuedBinderWork();
// Waits until at least count items wait for a binder thread; false after the timeout.
bool waitForQueuedBinderWork(size_t count, std::chrono::milliseconds timeout);

// Limits of a serving process on its socket clients, read once from its environment (a positive
// integer each; a bad value is logged and the default kept). Each bites with a logged line:
//   BINDER_HOST_MAX_CONNECTIONS (512): open sockets per published service, channels included;
//     beyond it a new socket is closed before its HELLO.
//   BINDER_HOST_HANDSHAKE_TIMEOUT_MS (5000): a fresh socket that neither reads its HELLO nor
//     sends anything in that time is closed.
//   BINDER_HOST_FRAME_TIMEOUT_MS (10000): once a frame began, the rest must arrive in that time;
//     a body is allocated as its bytes arrive, never from the announced length alone.
//   BINDER_HOST_MAX_QUEUED_CALLS (1024), BINDER_HOST_MAX_QUEUED_BYTES (64 MiB): calls of one
//     connection waiting for or on binder threads; beyond either it is dropped (a death to it).
//   BINDER_HOST_REPLY_TIMEOUT_MS (5000): a client that takes nothing we write for that long is
//     dropped.
// Out of descriptors or memory, a listener refuses or waits and accepts again once they are free.
//
// Socket mode: services added here are also served to other processes through a Unix socket in
// dir, and services not added here are looked for there. Replaces BINDER_HOST_DIR (read at first
// use otherwise) and the manifest location; "" turns socket mode off. The directory is created
// with mode 0700; one owned by another user or open to group or others is refused with a logged
// error. Returns whether dir is usable; when refused, only in-process services are found.
bool setHostDirectory(const std::string& dir);
// The directory in use; empty when socket mode is off or the directory was refused.
std::string hostDirectory();

}  // namespace binder_host
