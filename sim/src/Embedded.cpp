#include "trox_sim/Embedded.h"

#include <android/binder_manager.h>
#include <binder_host/service_control.h>

#include <stdexcept>

namespace sim {

EmbeddedService::EmbeddedService(Config config, std::shared_ptr<Clock> clock, std::string instance)
    : config_(std::move(config)),
      clock_(std::move(clock)),
      instance_(std::move(instance)),
      timeline_(std::make_shared<Timeline>(config_.timelineSize)) {}

EmbeddedService::~EmbeddedService() {
    kill();
}

void EmbeddedService::publish() {
    service_ = ndk::SharedRefBase::make<TroxService>(config_, clock_, "troxd", timeline_);
    const std::string instance = instance_;
    service_->setDieHandler([instance] { binder_host::killService(instance); });
    binder_host::declareService(instance_);
    if (AServiceManager_addService(service_->asBinder().get(), instance_.c_str()) != EX_NONE) {
        service_.reset();
        throw std::runtime_error("cannot publish " + instance_);
    }
    running_ = true;
}

void EmbeddedService::kill() {
    if (!running_) return;
    running_ = false;
    binder_host::killService(instance_);
}

void EmbeddedService::restart() {
    kill();
    publish();
}

std::unique_ptr<EmbeddedService> startEmbeddedService(Config config, std::shared_ptr<Clock> clock,
                                                      std::string instance) {
    std::unique_ptr<EmbeddedService> handle(
            new EmbeddedService(std::move(config), std::move(clock), std::move(instance)));
    handle->publish();
    return handle;
}

}  // namespace sim
