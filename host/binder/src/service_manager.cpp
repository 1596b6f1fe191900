#include <android/binder_manager.h>
#include <binder_host/service_control.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "binder_internal.h"
#include "death.h"
#include "fault_injection.h"
#include "host_dir.h"
#include "process.h"
#include "socket_transport.h"

namespace binder_impl {
namespace {

struct ServiceManager {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, std::shared_ptr<RemoteObject>> services;
    std::set<std::string> declared;
};

ServiceManager& serviceManager() {
    static auto* instance = new ServiceManager();
    return *instance;
}

std::set<std::string> manifestInstances() {
    std::set<std::string> instances;
    const std::string dir = manifestDirectory();
    if (dir.empty()) return instances;
    std::ifstream manifest(dir + "/manifest");
    std::string line;
    while (std::getline(manifest, line)) {
        const size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos || line[first] == '#') continue;
        const size_t last = line.find_last_not_of(" \t\r");
        instances.insert(line.substr(first, last - first + 1));
    }
    return instances;
}

bool isDeclaredLocked(const ServiceManager& sm, const std::string& instance) {
    return sm.declared.count(instance) != 0 || manifestInstances().count(instance) != 0;
}

std::shared_ptr<RemoteObject> findLocal(ServiceManager& sm, const std::string& instance) {
    std::lock_guard<std::mutex> lock(sm.mutex);
    auto it = sm.services.find(instance);
    return it == sm.services.end() ? nullptr : it->second;
}

// In this process first, then through the instance's socket; polls for a socket that is not
// there or not answering yet, waking early when this process adds the name.
AIBinder* waitForAnywhere(const std::string& instance) {
    ServiceManager& sm = serviceManager();
    for (;;) {
        std::shared_ptr<RemoteObject> remote = findLocal(sm, instance);
        if (remote == nullptr) remote = connectService(instance);
        if (remote != nullptr) return proxyFor(remote, kStabilityVintf);
        std::unique_lock<std::mutex> lock(sm.mutex);
        if (!isDeclaredLocked(sm, instance) && !socketPresent(instance)) return nullptr;
        if (sm.services.count(instance) == 0) {
            sm.changed.wait_for(lock, std::chrono::milliseconds(20));
        }
    }
}

AIBinder* waitFor(const char* instance) {
    if (instance == nullptr) return nullptr;
    if (socketModeEnabled()) return waitForAnywhere(instance);
    ServiceManager& sm = serviceManager();
    std::shared_ptr<RemoteObject> remote;
    {
        std::unique_lock<std::mutex> lock(sm.mutex);
        for (;;) {
            auto it = sm.services.find(instance);
            if (it != sm.services.end()) {
                remote = it->second;
                break;
            }
            if (!isDeclaredLocked(sm, instance)) return nullptr;
            sm.changed.wait(lock);
        }
    }
    return proxyFor(remote, kStabilityVintf);
}

}  // namespace
}  // namespace binder_impl

using namespace binder_impl;

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr) return EX_ILLEGAL_ARGUMENT;
    std::shared_ptr<RemoteObject> remote = remoteForWriting(binder);
    if (remote == nullptr) return EX_ILLEGAL_ARGUMENT;
    ServiceManager& sm = serviceManager();
    std::shared_ptr<RemoteObject> replaced;
    {
        std::lock_guard<std::mutex> lock(sm.mutex);
        replaced = std::move(sm.services[instance]);
        sm.services[instance] = remote;
    }
    if (!publishService(instance, remote)) {
        // Unreachable from other processes is no service at all: the name goes back.
        {
            std::lock_guard<std::mutex> lock(sm.mutex);
            auto it = sm.services.find(instance);
            if (it != sm.services.end() && it->second == remote) {
                if (replaced != nullptr) {
                    it->second = std::move(replaced);
                } else {
                    sm.services.erase(it);
                }
            }
        }
        return EX_ILLEGAL_STATE;
    }
    sm.changed.notify_all();
    return EX_NONE;
}

AIBinder* AServiceManager_checkService(const char* instance) {
    if (instance == nullptr) return nullptr;
    ServiceManager& sm = serviceManager();
    std::shared_ptr<RemoteObject> remote;
    {
        std::lock_guard<std::mutex> lock(sm.mutex);
        auto it = sm.services.find(instance);
        if (it != sm.services.end()) remote = it->second;
    }
    if (remote == nullptr) remote = connectService(instance);
    if (remote == nullptr) return nullptr;
    return proxyFor(remote, kStabilityVintf);
}

AIBinder* AServiceManager_getService(const char* instance) {
    return waitFor(instance);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    return waitFor(instance);
}

bool AServiceManager_isDeclared(const char* instance) {
    if (instance == nullptr) return false;
    ServiceManager& sm = serviceManager();
    std::lock_guard<std::mutex> lock(sm.mutex);
    return isDeclaredLocked(sm, instance);
}

void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char*, void*)) {
    if (interface == nullptr || callback == nullptr) return;
    std::set<std::string> all = manifestInstances();
    {
        ServiceManager& sm = serviceManager();
        std::lock_guard<std::mutex> lock(sm.mutex);
        all.insert(sm.declared.begin(), sm.declared.end());
    }
    const std::string prefix = std::string(interface) + "/";
    for (const std::string& name : all) {
        if (name.compare(0, prefix.size(), prefix) == 0) {
            callback(name.c_str() + prefix.size(), context);
        }
    }
}

namespace binder_host {

void declareService(const std::string& instance) {
    ServiceManager& sm = serviceManager();
    {
        std::lock_guard<std::mutex> lock(sm.mutex);
        sm.declared.insert(instance);
    }
    sm.changed.notify_all();
}

void undeclareService(const std::string& instance) {
    ServiceManager& sm = serviceManager();
    {
        std::lock_guard<std::mutex> lock(sm.mutex);
        sm.declared.erase(instance);
    }
    // Waiters on a name that is no longer declared give up.
    sm.changed.notify_all();
}

bool killService(const std::string& instance) {
    ServiceManager& sm = serviceManager();
    std::shared_ptr<RemoteObject> remote;
    {
        std::lock_guard<std::mutex> lock(sm.mutex);
        auto it = sm.services.find(instance);
        if (it == sm.services.end()) return false;
        remote = std::move(it->second);
        sm.services.erase(it);
    }
    unpublishService(instance);
    remote->die();
    return true;
}

void failNextLinkToDeath(binder_status_t status, int count) {
    linkToDeathFault().arm(status, count);
}

void failNextTransactions(binder_status_t status, int count) {
    proxyTransactionFault().arm(status, count);
}

void drainNotifications() {
    drainThreadPool();
}

size_t queuedBinderWork() {
    return queuedThreadPoolWork();
}

bool waitForQueuedBinderWork(size_t count, std::chrono::milliseconds timeout) {
    return waitForQueuedThreadPoolWork(count, timeout);
}

void resetServiceManager() {
    ServiceManager& sm = serviceManager();
    std::map<std::string, std::shared_ptr<RemoteObject>> dropped;
    {
        std::lock_guard<std::mutex> lock(sm.mutex);
        dropped.swap(sm.services);
        sm.declared.clear();
    }
    sm.changed.notify_all();
    resetSocketTransport();
    linkToDeathFault().clear();
    proxyTransactionFault().clear();
    drainThreadPool();
}

}  // namespace binder_host
