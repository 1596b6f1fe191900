#include "LogCapture.h"

#include <android/log.h>

#include <mutex>

namespace vexal::testing {
namespace {

std::mutex gMutex;
std::vector<LogLine> gLines;

void captureLine(const __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(gMutex);
    gLines.push_back({data->priority, data->tag ? data->tag : "", message ? message : ""});
}

}  // namespace

void PrintTo(const LogLine& line, std::ostream* os) {
    *os << "{" << line.priority << ", \"" << line.tag << "\", \"" << line.text << "\"}";
}

LogCapture::LogCapture() {
    clear();
    __android_log_set_logger(captureLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

LogCapture::~LogCapture() {
    __android_log_set_logger(__android_log_stderr_logger);
    __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(gMutex);
    return gLines;
}

std::vector<LogLine> LogCapture::linesWithTag(const std::string& tag) const {
    std::lock_guard<std::mutex> lock(gMutex);
    std::vector<LogLine> out;
    for (const auto& line : gLines) {
        if (line.tag == tag) out.push_back(line);
    }
    return out;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(gMutex);
    gLines.clear();
}

}  // namespace vexal::testing
