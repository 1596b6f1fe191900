#pragma once

// The library is built with hidden visibility; only what carries this macro is exported.
#define VEXAL_EXPORT __attribute__((visibility("default")))
