#pragma once

namespace vexal::pym {

// Formats a marker into a cleared 1024-byte buffer (cut at 1022 characters) and, when the
// always-on trace tag is enabled, opens and at once closes a section with it: a zero-length
// marker that shows where a request was made.
void traceMarker(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Whether a marker would be written. Callers test it before building a marker's text: building
// it when tracing is off cost more than a tenth of an in-process call.
bool traceEnabled();

}  // namespace vexal::pym
