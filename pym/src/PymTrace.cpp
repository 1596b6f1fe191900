#define ATRACE_TAG ATRACE_TAG_ALWAYS
#include "PymTrace.h"

#include <cutils/trace.h>

#include <cstdarg>
#include <cstdio>

namespace vexal::pym {

bool traceEnabled() {
    return ATRACE_ENABLED() != 0;
}

void traceMarker(const char* format, ...) {
    if (!traceEnabled()) return;
    char buffer[1024] = {};
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof(buffer) - 1, format, args);
    va_end(args);
    ATRACE_BEGIN(buffer);
    ATRACE_END();
}

}  // namespace vexal::pym
