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
// notifications finish first.
void resetServiceManager();

}  // namespace binder_host
