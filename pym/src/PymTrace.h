#pragma once

namespace vexal::pym {

// Formats a marker into a cleared 1024-byte buffer (cut at 1022 characters) and, when the
// always-on trace tag is enabled, opens and at once closes a section with it: a zero-length
// marker that shows where a request was made.
void traceMarker(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace vexal::pym
