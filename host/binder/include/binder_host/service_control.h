#pragma once

// Host-only controls for tests: nothing on a device has these.

#include <android/binder_status.h>

#include <string>

namespace binder_host {

// In-process manifest entries seen by AServiceManager_isDeclared.
void declareService(const std::string& instance);
void undeclareService(const std::string& instance);

// Makes the service registered under instance die: its name is removed, its proxies answer
// STATUS_DEAD_OBJECT and each linked death recipient fires once on the kit's notification
// thread. Waits for the recipients unless called while serving a transaction.
// False if nothing is registered under that name.
bool killService(const std::string& instance);

// The next count calls to AIBinder_linkToDeath fail with status.
void failNextLinkToDeath(binder_status_t status, int count = 1);

// The next count transactions on any proxy fail with status before reaching the service, as a
// broken transport would make them fail; one-way calls included.
void failNextTransactions(binder_status_t status, int count = 1);

// Drops every service, declaration and injected fault, and lets queued one-way calls and death
// notifications finish first. Also stops listening and closes every socket connection.
void resetServiceManager();

// Returns once the one-way calls and death notifications queued so far have run.
void drainNotifications();

// Socket mode: services added here are also served to other processes through a Unix socket in
// dir, and services not added here are looked for there. Replaces BINDER_HOST_DIR (read at first
// use otherwise) and the manifest location; "" turns socket mode off. The directory is created
// with mode 0700; one owned by another user or open to group or others is refused with a logged
// error. Returns whether dir is usable; when refused, only in-process services are found.
bool setHostDirectory(const std::string& dir);
// The directory in use; empty when socket mode is off or the directory was refused.
std::string hostDirectory();

}  // namespace binder_host
