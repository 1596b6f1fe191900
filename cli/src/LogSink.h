#pragma once

// Where the Android log lines of the library and of the embedded service go: nowhere by
// default (they would bury the tool's own output), to standard error with --verbose, and into a
// buffer while a subcommand wants to show what the service logged.

#include <string>
#include <vector>

namespace pymctl {

void installLogSink(bool verbose);

// Collects the lines logged under tag until the object goes away.
class LogTap {
  public:
    explicit LogTap(std::string tag);
    ~LogTap();
    LogTap(const LogTap&) = delete;
    LogTap& operator=(const LogTap&) = delete;
    std::vector<std::string> lines() const;
};

}  // namespace pymctl
