#pragma once

#include <string>

namespace binder_impl {

// The directory sockets live in; empty when socket mode is off or the directory was refused.
// BINDER_HOST_DIR is read on the first call unless binder_host::setHostDirectory came first.
std::string socketDirectory();
// Where the manifest is read: the chosen directory, else BINDER_HOST_DIR as it is now.
std::string manifestDirectory();
// The socket file for instance inside dir; empty if the path would not fit a socket address.
std::string socketPath(const std::string& dir, const std::string& instance);

void logError(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace binder_impl
