#define LOG_TAG "[PYM_CLIENT]"
#include "PymHalConnection.h"
#include "pym.h"

#include <log/log.h>

using vexal::link::ITrox;
using vexal::pym::CallResult;

int32_t pymInit() {
    // Error priority on purpose: the line must show on builds that drop info lines.
    ALOGE("pymInit enter");
    if (!vexal::pym::connectPymHal()) return -1;
    switch (vexal::pym::callPymHal("trox_init", [](ITrox& hal) { return hal.trox_init(); })) {
        case CallResult::kOk:
            return 0;
        case CallResult::kNoService:
            ALOGE("g_pym_hal is null");
            return -1;
        default:
            return -2;
    }
}
