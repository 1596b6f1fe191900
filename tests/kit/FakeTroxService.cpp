#include "FakeTroxService.h"

#include <android/binder_manager.h>
#include <binder_host/service_control.h>

#include <stdexcept>

namespace vexal::testing {

FakeTroxService::FakeTroxService(Start start) : mFake(ndk::SharedRefBase::make<FakeTrox>()) {
    binder_host::resetServiceManager();
    if (start != Start::kNotDeclared) binder_host::declareService(kTroxInstance);
    if (start == Start::kRunning) this->start();
}

FakeTroxService::~FakeTroxService() {
    // Ends like a service process would, so that clients holding a connection let go of it.
    kill();
    binder_host::resetServiceManager();
}

void FakeTroxService::start() {
    binder_host::declareService(kTroxInstance);
    if (AServiceManager_addService(mFake->asBinder().get(), kTroxInstance) != EX_NONE) {
        throw std::runtime_error("cannot publish the fake trox service");
    }
}

void FakeTroxService::kill() {
    binder_host::killService(kTroxInstance);
}

void FakeTroxService::restart() {
    kill();
    mFake = ndk::SharedRefBase::make<FakeTrox>();
    start();
}

}  // namespace vexal::testing
