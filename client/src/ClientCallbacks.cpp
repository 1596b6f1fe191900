#include "IClientCallback.h"

// The key functions of the exported callback interfaces.
IClientCallback::~IClientCallback() = default;
IClientCallbackByPath::~IClientCallbackByPath() = default;
