#pragma once

#include <android/log.h>

#include <cstddef>
#include <string>

namespace troxd {

struct Options {
    std::string dir;         // empty: $BINDER_HOST_DIR, else defaultDir()
    std::string configPath;  // empty: the built-in default configuration
    size_t maxConfigBytes = 1 << 20;
    std::string tracePath;  // empty: no trace file
    bool verbose = false;
    bool help = false;
};

std::string usage();
// Empty on success, else what is wrong with the arguments.
std::string parseArgs(int argc, char** argv, Options* options);
std::string defaultDir();
// Creates dir (mode 0700) or checks that the existing one is a directory of ours, closed to
// group and others: the binder kit refuses any other, and would leave the service unreachable.
std::string prepareDir(const std::string& dir);
// Takes dir/troxd.pid (flock) for this process, written with its pid, and keeps it open in
// *fd: one daemon per directory. Else why not, naming the running one.
std::string lockDir(const std::string& dir, int* fd);
// Empty when instance's socket in dir fits a socket address, else why not.
std::string checkSocketPath(const std::string& dir, const std::string& instance);
// Adds instance to dir/manifest unless it is named there; replaces the file atomically.
std::string ensureManifest(const std::string& dir, const std::string& instance);
// One line in logcat's thread-time layout, with its newline.
std::string formatLogLine(long long wallMs, int pid, int tid, int priority, const char* tag,
                          const char* message);
void stderrLogger(const __android_logger_data* data, const char* message);

}  // namespace troxd
