// The wrapper's text parsers with arbitrary text: callers pass strings from configuration and
// from other processes.
#include "FuzzSupport.h"
#include "PymWrapper.h"
#include "StringUtils.h"

#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vexal::fuzz::quietLogs();
    return 0;
}

// Byte 0 picks up to three separator characters for split and trim from bytes 1-3 (bits 0-1 give
// how many); the whole input is also used as text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string separators;
    if (size >= 4) {
        for (size_t i = 0; i < (data[0] & 3u); ++i) {
            if (data[1 + i] != 0) separators += static_cast<char>(data[1 + i]);
        }
    }

    for (const std::string& token : stringUtils::split(text, separators)) {
        FUZZ_CHECK(!token.empty());
        for (char c : token) FUZZ_CHECK(separators.find(c) == std::string::npos);
    }
    for (const std::string& token : stringUtils::split(text, ",")) FUZZ_CHECK(!token.empty());

    const std::string trimmed = stringUtils::trim(text, separators.c_str());
    FUZZ_CHECK(trimmed.size() <= text.size());
    FUZZ_CHECK(text.find(trimmed) != std::string::npos);
    const std::string blank = stringUtils::trim(text, stringUtils::WHITESPACE);
    FUZZ_CHECK(blank.size() <= text.size());
    (void)stringUtils::trimLeft(text, stringUtils::WHITESPACE);
    (void)stringUtils::trimRight(text, stringUtils::WHITESPACE);
    (void)stringUtils::parseInt(text);
    (void)stringUtils::contains(text, separators);

    (void)getTargetLoadList(text);
    (void)getColocationList(text);
    (void)getGameAdpList(text);
    return 0;
}
