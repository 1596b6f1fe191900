#pragma once

#include <memory>
#include <string>

#include "trox_sim/Clock.h"
#include "trox_sim/Config.h"
#include "trox_sim/TroxService.h"

namespace sim {

// The reference service published in the current process under kTroxInstance, for tools and
// callers' tests. Ending the handle takes the service down as a dying service process would.
class EmbeddedService {
  public:
    ~EmbeddedService();
    EmbeddedService(const EmbeddedService&) = delete;
    EmbeddedService& operator=(const EmbeddedService&) = delete;

    const std::shared_ptr<TroxService>& service() const { return service_; }
    const std::string& instance() const { return instance_; }
    // The service dies: clients' death recipients fire, the name is gone until restart().
    void kill();
    // Publishes a fresh service with the same configuration and clock, as a restarted daemon.
    void restart();
    bool running() const { return running_; }
    // Shared by every service restart() publishes, so one trace shows them all.
    const std::shared_ptr<Timeline>& timeline() const { return timeline_; }

  private:
    friend std::unique_ptr<EmbeddedService> startEmbeddedService(Config, std::shared_ptr<Clock>,
                                                                 std::string);
    EmbeddedService(Config config, std::shared_ptr<Clock> clock, std::string instance);
    void publish();

    Config config_;
    std::shared_ptr<Clock> clock_;
    std::string instance_;
    std::shared_ptr<Timeline> timeline_;
    std::shared_ptr<TroxService> service_;
    bool running_ = false;
};

// Declares and publishes the service; throws std::runtime_error when it cannot be published.
// No clock: a real one.
std::unique_ptr<EmbeddedService> startEmbeddedService(Config config = defaultConfig(),
                                                      std::shared_ptr<Clock> clock = nullptr,
                                                      std::string instance = kTroxInstance);

}  // namespace sim
