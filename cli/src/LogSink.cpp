#include "LogSink.h"

#include <android/log.h>

#include <cstdio>
#include <mutex>

namespace pymctl {
namespace {

std::mutex gMutex;
bool gVerbose = false;
bool gTapping = false;
std::string gTapTag;
std::vector<std::string> gTapped;

char priorityLetter(int priority) {
    static const char kLetters[] = "??VDIWEF";
    return priority >= 0 && priority < 8 ? kLetters[priority] : '?';
}

void sink(const __android_logger_data* data, const char* message) {
    const char* tag = data->tag ? data->tag : "";
    std::lock_guard<std::mutex> lock(gMutex);
    if (gTapping && gTapTag == tag) gTapped.emplace_back(message ? message : "");
    if (gVerbose) {
        std::fprintf(stderr, "%c %s: %s\n", priorityLetter(data->priority), tag,
                     message ? message : "");
    }
}

}  // namespace

void installLogSink(bool verbose) {
    {
        std::lock_guard<std::mutex> lock(gMutex);
        gVerbose = verbose;
    }
    __android_log_set_logger(sink);
    __android_log_set_minimum_priority(verbose ? ANDROID_LOG_DEBUG : ANDROID_LOG_INFO);
}

LogTap::LogTap(std::string tag) {
    std::lock_guard<std::mutex> lock(gMutex);
    gTapping = true;
    gTapTag = std::move(tag);
    gTapped.clear();
}

LogTap::~LogTap() {
    std::lock_guard<std::mutex> lock(gMutex);
    gTapping = false;
    gTapped.clear();
}

std::vector<std::string> LogTap::lines() const {
    std::lock_guard<std::mutex> lock(gMutex);
    return gTapped;
}

}  // namespace pymctl
