#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "transport.h"

namespace binder_impl {

class Connection;

// Accepts connections for one published instance.
class Listener {
  public:
    Listener(std::string instance, std::string path, std::shared_ptr<RemoteObject> service);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // False when the socket could not be made, or another process still answers on it.
    bool start();
    // Stops accepting and removes the socket file if it is still ours; with closeConnections,
    // the connections it accepted close too.
    void stop(bool closeConnections);

  private:
    struct Slot;

    pid_t liveOwner() const;
    __attribute__((format(printf, 2, 3))) void logRefusal(const char* format, ...);
    bool pauseOrStop(std::chrono::milliseconds delay);
    void run();
    void serveAccepted(int fd);

    const std::string instance_;
    const std::string path_;
    const std::shared_ptr<RemoteObject> service_;
    int fd_ = -1;
    int wake_ = -1;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::vector<std::weak_ptr<Connection>> accepted_;
    // Sockets of this listener whose reader still runs (channels included).
    const std::shared_ptr<std::atomic<size_t>> open_ = std::make_shared<std::atomic<size_t>>(0);
    // Accept thread only.
    size_t refusedSinceLog_ = 0;
    std::chrono::steady_clock::time_point lastRefusalLog_;
};

}  // namespace binder_impl
