#pragma once

#include <aidl/vendor/vexal/hardware/trox/BnTroxCallback.h>

// The transaction-log hook installed by every callback client: one line per transaction, with
// no tag.
void printLog(const aidl::vendor::vexal::hardware::trox::BnTroxCallback::TransactionLog& log);
