#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace vexal::testing {

struct LogLine {
    int priority;
    std::string tag;  // empty for a null tag
    std::string text;

    bool operator==(const LogLine& other) const {
        return priority == other.priority && tag == other.tag && text == other.text;
    }
};

void PrintTo(const LogLine& line, std::ostream* os);

// Captures every Android log line of the process while it lives (all priorities). One at a
// time: liblog has a single logger slot.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    std::vector<LogLine> linesWithTag(const std::string& tag) const;
    void clear();
};

}  // namespace vexal::testing
