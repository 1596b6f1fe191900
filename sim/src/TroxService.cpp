#include "trox_sim/TroxService.h"

#include <android/binder_ibinder.h>
#include <android/log.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <thread>

#include "Diagnostics.h"
#include "Queries.h"
#include "RequestText.h"

namespace sim {
namespace {

void upsert(std::vector<Setting>& settings, const Setting& s) {
    for (Setting& existing : settings) {
        if (existing.id == s.id) {
            existing.value = s.value;
            return;
        }
    }
    settings.push_back(s);
}

}  // namespace

#define SLOG(prio, ...) __android_log_print(prio, tag_.c_str(), __VA_ARGS__)

TroxService::TroxService(Config config, std::shared_ptr<Clock> clock, std::string logTag,
                         std::shared_ptr<Timeline> timeline)
    : config_(std::move(config)),
      clock_(clock ? std::move(clock) : std::make_shared<SteadyClock>()),
      tag_(std::move(logTag)),
      model_(config_.resources),
      properties_(config_.properties, config_.maxRequests, tag_),
      history_(clock_, config_.historySize, config_.historyEnabled),
      timeline_(config_, clock_, tag_, std::move(timeline)),
      traceExport_(timeline_.timeline(), tag_) {
    SLOG(ANDROID_LOG_INFO, "service ready: %zu resources, %zu actions, %zu scenarios, %zu rules",
         config_.resources.size(), config_.actions.size(), config_.scenarios.size(),
         config_.rules.size());
}

TroxService::~TroxService() {
    clock_->cancelAlarm();
}

// ---- fault injection and read-outs ----

void TroxService::failNextCalls(int count, int32_t error) {
    failError_ = error;
    failNext_ = std::max(count, 0);
}

void TroxService::setCallDelayMs(int64_t ms) {
    delayMs_ = std::max<int64_t>(ms, 0);
}

void TroxService::setDieHandler(std::function<void()> handler) {
    std::lock_guard<std::mutex> lock(dieMutex_);
    dieHandler_ = std::move(handler);
}

void TroxService::die() {
    std::function<void()> handler;
    {
        std::lock_guard<std::mutex> lock(dieMutex_);
        handler = dieHandler_;
    }
    SLOG(ANDROID_LOG_WARN, "dying on request");
    if (handler) handler();
}

int64_t TroxService::valueOf(int32_t resourceId) {
    std::lock_guard<std::mutex> lock(mutex_);
    return model_.value(resourceId);
}

size_t TroxService::activeRequests() {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_.size();
}

size_t TroxService::listenerCount() {
    std::lock_guard<std::mutex> lock(mutex_);
    return listeners_.size();
}

size_t TroxService::historySize() {
    std::lock_guard<std::mutex> lock(mutex_);
    return history_.size();
}

bool TroxService::historyEnabled() {
    std::lock_guard<std::mutex> lock(mutex_);
    return history_.enabled();
}

std::string TroxService::property(const std::string& key) {
    std::lock_guard<std::mutex> lock(mutex_);
    return properties_.value(key);
}

ndk::ScopedAStatus TroxService::enter(const char* op) {
    SLOG(ANDROID_LOG_DEBUG, "%s from pid %d", op, static_cast<int>(AIBinder_getCallingPid()));
    const int64_t delay = delayMs_.load();
    if (delay > 0) std::this_thread::sleep_for(std::chrono::milliseconds(delay));
    int pending = failNext_.load();
    while (pending > 0 && !failNext_.compare_exchange_weak(pending, pending - 1)) {
    }
    if (pending > 0) {
        SLOG(ANDROID_LOG_WARN, "%s failed on purpose (%d more to fail)", op, pending - 1);
        return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(failError_.load(),
                                                                       "injected failure");
    }
    return ndk::ScopedAStatus::ok();
}

// ---- helpers under the state lock ----

bool TroxService::resolve(const TroxRequestData& entry, Setting* setting, bool* byPath,
                          std::string* why) const {
    const ResourceDef* def = nullptr;
    std::string name;
    if (entry.res_Path && !entry.res_Path->empty()) {
        def = model_.findByPath(*entry.res_Path);
        name = *entry.res_Path;
        if (def != nullptr) *byPath = true;
    } else {
        def = model_.find(low32(entry.res_Id));
        name = hexId(low32(entry.res_Id));
    }
    if (def == nullptr) {
        *why = "unknown resource " + name;
        return false;
    }
    int64_t value = 0;
    if (!entry.res_Value || !parseValue(*entry.res_Value, &value)) {
        *why = "value '" + entry.res_Value.value_or("") + "' of " + name + " is not a number";
        return false;
    }
    setting->id = def->id;
    setting->value = value;
    return true;
}

void TroxService::notifyChanges(const std::vector<Change>& changes, Deliveries& out) {
    if (changes.empty()) return;
    timeline_.values(changes);
    for (const Change& c : changes) {
        const ResourceDef* def = model_.find(c.id);
        SLOG(ANDROID_LOG_INFO, "resource %s (%s) %" PRId64 " -> %" PRId64, hexId(c.id).c_str(),
             def ? def->name.c_str() : "", c.oldValue, c.newValue);
    }
    for (const auto& [handle, l] : listeners_) {
        if (l.thermal) continue;
        std::vector<TroxRequestData> records;
        for (const Change& c : changes) {
            if (!l.ids.empty() && l.ids.count(c.id) == 0) continue;
            records.push_back(recordFor(model_, c.id, l.byPath));
        }
        if (!records.empty()) out.push_back({l.callback, std::move(records), handle});
    }
}

void TroxService::rearmLocked() {
    // No cancel here: an alarm that finds nothing due is harmless, and cancelling under the
    // state lock could wait on an alarm that is itself waiting for that lock.
    const std::optional<int64_t> next = requests_.nextDeadline();
    if (next) clock_->setAlarm(*next, [this] { onAlarm(); });
}

void TroxService::expireLocked(Deliveries& out) {
    const int64_t now = clock_->nowMs();
    for (const Request& r : requests_.takeExpired(now)) {
        SLOG(ANDROID_LOG_INFO, "request %d expired after %" PRId64 " ms", r.handle,
             now - r.startMs);
        timeline_.ended(r.handle, "expired");
        notifyChanges(model_.release({Holder::Type::kRequest, r.handle}), out);
        record("expire", r.pid, "handle=" + std::to_string(r.handle) + " ended by its duration");
    }
    dropOrphansLocked(out);
}

void TroxService::dropOrphansLocked(Deliveries& out) {
    // Nobody is left to release a request held "until release" once its sender has exited.
    std::map<int32_t, bool> gone;
    std::vector<int32_t> orphans;
    for (const Request* r : requests_.all()) {
        if (r->deadlineMs || r->callerPid <= 0) continue;
        auto it = gone.find(r->callerPid);
        if (it == gone.end()) {
            it = gone.emplace(r->callerPid, kill(r->callerPid, 0) != 0 && errno == ESRCH).first;
        }
        if (it->second) orphans.push_back(r->handle);
    }
    for (int32_t handle : orphans) {
        std::optional<Request> r = requests_.remove(handle);
        SLOG(ANDROID_LOG_WARN, "request %d dropped: its client (pid %d) has exited", handle,
             r->callerPid);
        timeline_.ended(handle, "client exited");
        notifyChanges(model_.release({Holder::Type::kRequest, handle}), out);
        record("drop", r->pid, "handle=" + std::to_string(handle) + " client exited");
    }
}

bool TroxService::roomLocked(const char* what, int32_t pid) {
    if (requests_.size() + listeners_.size() < config_.maxRequests) return true;
    SLOG(ANDROID_LOG_ERROR, "%s from pid %d refused: %zu requests and listeners live, the limit",
         what, static_cast<int>(pid), config_.maxRequests);
    return false;
}

bool TroxService::textFits(const char* what, const std::optional<std::string>& text,
                           int32_t pid) const {
    if (!text || text->size() <= config_.maxText) return true;
    SLOG(ANDROID_LOG_ERROR, "request from pid %d refused: %s of %zu characters, the limit is %zu",
         static_cast<int>(pid), what, text->size(), config_.maxText);
    return false;
}

void TroxService::onAlarm() {
    std::unique_lock<std::mutex> lock(mutex_);
    Deliveries out;
    expireLocked(out);
    rearmLocked();
    send(lock, std::move(out));
}

void TroxService::send(std::unique_lock<std::mutex>& state, Deliveries deliveries) {
    if (deliveries.empty()) {
        state.unlock();
        return;
    }
    std::unique_lock<std::mutex> order(sendMutex_);
    state.unlock();
    std::vector<std::pair<int32_t, std::shared_ptr<ITroxCallback>>> gone;
    for (Delivery& d : deliveries) {
        if (!d.callback) continue;
        ndk::ScopedAStatus status = d.callback->onCallback(d.records);
        if (!status.isOk()) {
            SLOG(ANDROID_LOG_WARN, "callback of %s %d failed: %s",
                 d.listenerHandle ? "listener" : "request", d.listenerHandle,
                 status.getDescription().c_str());
            if (d.listenerHandle != 0 && status.getStatus() == STATUS_DEAD_OBJECT) {
                gone.emplace_back(d.listenerHandle, d.callback);
            }
        }
    }
    order.unlock();
    if (gone.empty()) return;
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& [handle, callback] : gone) {
        auto it = listeners_.find(handle);
        if (it != listeners_.end() && it->second.callback == callback) {
            SLOG(ANDROID_LOG_INFO, "listener %d dropped: its client is gone", handle);
            listeners_.erase(it);
            requests_.unreserve(handle);
        }
    }
}

// ---- request handling ----

int32_t TroxService::acquire(const TroxRequestParcel& request, bool oneWay, Deliveries& out) {
    const int32_t caller = static_cast<int32_t>(AIBinder_getCallingPid());
    if (!textFits("package name", request.pkg, caller) ||
        !textFits("identity", request.identity, caller)) {
        return -1;
    }
    std::vector<Setting> settings;
    int32_t source = -1;
    size_t first = 0;
    if (request.requestType == kEvent || request.requestType == kScenario) {
        if (request.requestData.empty()) {
            SLOG(ANDROID_LOG_ERROR, "%s request without an id", typeName(request.requestType));
            return -1;
        }
        source = low32(request.requestData[0].res_Id);
        first = 1;
        if (request.requestType == kEvent) {
            auto it = config_.actions.find(source);
            if (it != config_.actions.end()) {
                settings = it->second.settings;
            } else {
                SLOG(ANDROID_LOG_WARN, "action %d has no resources configured", source);
            }
        } else {
            auto it = config_.scenarios.find(source);
            if (it == config_.scenarios.end()) {
                SLOG(ANDROID_LOG_ERROR, "unknown scenario %d", source);
                return -1;
            }
            settings = it->second.settings;
        }
    }
    bool byPath = false;
    for (size_t i = first; i < request.requestData.size(); ++i) {
        const TroxRequestData& e = request.requestData[i];
        const bool noPath = !e.res_Path || e.res_Path->empty();
        // An entry without id, path or value stands for "no resource".
        if (low32(e.res_Id) == 0 && noPath && (!e.res_Value || e.res_Value->empty())) continue;
        Setting s;
        std::string why;
        if (!resolve(e, &s, &byPath, &why)) {
            SLOG(ANDROID_LOG_ERROR, "%s request rejected: %s", typeName(request.requestType),
                 why.c_str());
            return -1;
        }
        upsert(settings, s);
    }

    const int64_t now = clock_->nowMs();
    std::optional<int64_t> deadline;
    if (request.duration > 0) deadline = now + request.duration;

    int32_t handle = -1;
    if (!oneWay && request.handle > 0) {
        Request* existing = requests_.find(request.handle);
        if (existing == nullptr) {
            SLOG(ANDROID_LOG_ERROR, "no request with handle %d to change", request.handle);
            return -1;
        }
        existing->settings = settings;
        existing->startMs = now;
        existing->deadlineMs = deadline;
        handle = existing->handle;
        SLOG(ANDROID_LOG_INFO, "changed %s", describe(*existing).c_str());
        timeline_.changed(*existing);
    } else {
        if (!roomLocked(typeName(request.requestType), caller)) return -1;
        // A one-way caller chose its handle itself so that it can release the request later.
        if (oneWay && request.handle > 0 && !requests_.inUse(request.handle)) {
            handle = request.handle;
        } else {
            if (oneWay) {
                SLOG(ANDROID_LOG_WARN, "one-way handle %d unusable, request kept under a new one",
                     request.handle);
            }
            handle = requests_.newHandle();
        }
        Request r;
        r.handle = handle;
        r.requestType = request.requestType;
        r.pid = request.pid != 0 ? request.pid : caller;
        r.callerPid = caller;
        r.pkg = request.pkg.value_or("");
        r.identity = request.identity.value_or("");
        r.source = source;
        r.byPath = byPath;
        r.settings = settings;
        r.startMs = now;
        r.deadlineMs = deadline;
        SLOG(ANDROID_LOG_INFO, "granted %s", describe(r).c_str());
        timeline_.granted(r);
        requests_.add(std::move(r));
    }
    notifyChanges(model_.apply({Holder::Type::kRequest, handle}, settings), out);
    rearmLocked();
    return handle;
}

int32_t TroxService::diagnostics(const TroxRequestParcel& request) {
    std::map<int32_t, int32_t> listenerPids;
    for (const auto& [handle, l] : listeners_) listenerPids[handle] = l.pid;
    const int64_t now = clock_->nowMs();
    const DiagnosticInputs in{config_, model_, requests_, ruleStatus_, listenerPids, now};
    return runDiagnostic(request, in, history_, tag_.c_str());
}

int32_t TroxService::control(const TroxRequestParcel& request, bool oneWay, Deliveries& out) {
    expireLocked(out);
    int32_t result = -1;
    std::vector<TroxRequestData> reply;
    switch (request.requestType) {
        case kResourceControl:
        case kPlatformResource:
        case kEvent:
        case kScenario: {
            result = acquire(request, oneWay, out);
            if (result > 0) {
                const Request* r = requests_.find(result);
                if (r != nullptr) {
                    for (const Setting& s : r->settings)
                        reply.push_back(recordFor(model_, s.id, r->byPath));
                }
            }
            break;
        }
        case kDiagnostics:
            result = diagnostics(request);
            break;
        case kThermalNotify:
            result = thermalNotify(request, out);
            break;
        case kNotification: {
            const int64_t id = request.requestData.empty() ? 0 : request.requestData[0].res_Id;
            SLOG(ANDROID_LOG_INFO, "notification 0x%" PRIx64 " with %zu entries",
                 static_cast<uint64_t>(id), request.requestData.size());
            timeline_.notified(request, AIBinder_getCallingPid());
            result = 0;
            break;
        }
        default:
            SLOG(ANDROID_LOG_WARN, "request kind %d is not a control request", request.requestType);
            break;
    }
    std::string line = std::string(typeName(request.requestType)) + "(" +
                       std::to_string(request.requestType) + ")";
    if (request.pkg) line += " pkg=" + orNone(request.pkg);
    if (request.identity) line += " identity=" + orNone(request.identity);
    if (request.duration != 0) line += " duration=" + std::to_string(request.duration);
    line += " entries=" + std::to_string(request.requestData.size());
    if (!request.requestData.empty())
        line += " first=" + hexId(low32(request.requestData[0].res_Id));
    line += std::string(oneWay ? " one-way" : "") + " -> " + std::to_string(result);
    record("request", request.pid != 0 ? request.pid : AIBinder_getCallingPid(), line);
    if (request.callback) out.push_back({request.callback, std::move(reply), 0});
    return result;
}

// ---- ITrox ----

ndk::ScopedAStatus TroxService::reservedSlot1() {
    return enter("reservedSlot1");
}

ndk::ScopedAStatus TroxService::reservedSlot12() {
    return enter("reservedSlot12");
}

ndk::ScopedAStatus TroxService::trox_init() {
    ndk::ScopedAStatus st = enter("trox_init");
    if (!st.isOk()) return st;
    SLOG(ANDROID_LOG_INFO, "trox_init from pid %d", static_cast<int>(AIBinder_getCallingPid()));
    return st;
}

ndk::ScopedAStatus TroxService::troxResCtlRequest(const TroxRequestParcel& request,
                                                  int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResCtlRequest");
    if (!st.isOk()) return st;
    std::unique_lock<std::mutex> lock(mutex_);
    Deliveries out;
    *_aidl_return = control(request, false, out);
    send(lock, std::move(out));
    return st;
}

ndk::ScopedAStatus TroxService::troxResCtlRequestOneWay(const TroxRequestParcel& request) {
    ndk::ScopedAStatus st = enter("troxResCtlRequestOneWay");
    if (!st.isOk()) return st;
    std::unique_lock<std::mutex> lock(mutex_);
    Deliveries out;
    control(request, true, out);
    send(lock, std::move(out));
    return st;
}

ndk::ScopedAStatus TroxService::troxResCtlRelease(int32_t handle, int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResCtlRelease");
    if (!st.isOk()) return st;
    std::unique_lock<std::mutex> lock(mutex_);
    Deliveries out;
    expireLocked(out);
    std::optional<Request> r = requests_.remove(handle);
    if (!r) {
        SLOG(ANDROID_LOG_WARN, "release of unknown handle %d", handle);
        *_aidl_return = -1;
    } else {
        SLOG(ANDROID_LOG_INFO, "released handle %d", handle);
        timeline_.ended(handle, "released");
        notifyChanges(model_.release({Holder::Type::kRequest, handle}), out);
        *_aidl_return = 0;
    }
    record("release", AIBinder_getCallingPid(),
           "handle=" + std::to_string(handle) + " -> " + std::to_string(*_aidl_return));
    rearmLocked();
    send(lock, std::move(out));
    return st;
}

ndk::ScopedAStatus TroxService::troxResStateRequest(const TroxRequestParcel& request,
                                                    std::vector<TroxRequestData>* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResStateRequest");
    if (!st.isOk()) return st;
    std::unique_lock<std::mutex> lock(mutex_);
    Deliveries out;
    expireLocked(out);
    *_aidl_return = answerQuery(request, QueryInputs{config_, model_, history_}, tag_.c_str());
    rearmLocked();
    send(lock, std::move(out));
    return st;
}

ndk::ScopedAStatus TroxService::troxPropertyGet(const std::string& key, std::string* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxPropertyGet");
    if (!st.isOk()) return st;
    if (traceExport_.answer(key, _aidl_return)) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    *_aidl_return = properties_.get(key);
    return st;
}

ndk::ScopedAStatus TroxService::troxPropertySet(const std::string& key, const std::string& value,
                                                int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxPropertySet");
    if (!st.isOk()) return st;
    *_aidl_return = -1;
    if (!propertySetAllowed(key, value, tag_.c_str())) return st;
    if (!textFits("property key", key, AIBinder_getCallingPid())) return st;
    if (isFaultProperty(key)) {
        const std::optional<int64_t> n = faultPropertyValue(key, value, tag_.c_str());
        if (!n) return st;
        *_aidl_return = 0;
        if (key == kFaultFailNextProperty)
            failNextCalls(static_cast<int>(std::min<int64_t>(*n, 1 << 30)));
        if (key == kFaultDelayProperty) setCallDelayMs(*n);
        if (key == kFaultDieProperty && *n != 0) {
            // Dies after this reply has left, from a thread of its own.
            std::shared_ptr<TroxService> self = ref<TroxService>();
            std::thread([self] {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                self->die();
            }).detach();
        }
        return st;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (!properties_.set(key, value)) return st;
    record("prop-set", AIBinder_getCallingPid(), key + "=" + value);
    *_aidl_return = 0;
    return st;
}

ndk::ScopedAStatus TroxService::setRelatedSysInfo(int32_t info, int32_t value,
                                                  int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("setRelatedSysInfo");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    sysInfo_[info] = value;
    SLOG(ANDROID_LOG_INFO, "system info %d = %d", info, value);
    timeline_.sysInfo(info, value, AIBinder_getCallingPid());
    record("sysinfo", AIBinder_getCallingPid(), std::to_string(info) + "=" + std::to_string(value));
    *_aidl_return = 0;
    return st;
}

ndk::ScopedAStatus TroxService::troxRuleCtl(int32_t ruleId, int32_t status,
                                            const std::vector<TroxRequestData>& data,
                                            int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxRuleCtl");
    if (!st.isOk()) return st;
    std::unique_lock<std::mutex> lock(mutex_);
    Deliveries out;
    expireLocked(out);
    const Holder holder{Holder::Type::kRule, ruleId};
    std::vector<Setting> settings;
    if (status == 0) {
        ruleStatus_.erase(ruleId);
        SLOG(ANDROID_LOG_INFO, "rule %d off", ruleId);
    } else {
        auto rule = config_.rules.find(ruleId);
        if (rule != config_.rules.end()) {
            auto it = rule->second.statuses.find(status);
            if (it != rule->second.statuses.end()) settings = it->second;
        }
        // Rule data carries texts the model cannot hold; those are noted and skipped.
        for (const TroxRequestData& e : data) {
            Setting s;
            bool byPath = false;
            std::string why;
            if (resolve(e, &s, &byPath, &why)) {
                upsert(settings, s);
            } else {
                SLOG(ANDROID_LOG_DEBUG, "rule %d: %s, skipped", ruleId, why.c_str());
            }
        }
        ruleStatus_[ruleId] = status;
        SLOG(ANDROID_LOG_INFO, "rule %d status %d sets %s", ruleId, status,
             settingsText(settings).c_str());
    }
    timeline_.rule(ruleId, status, settings, AIBinder_getCallingPid());
    notifyChanges(model_.apply(holder, settings), out);
    *_aidl_return = 0;
    record("rule", AIBinder_getCallingPid(),
           "rule=" + std::to_string(ruleId) + " status=" + std::to_string(status) +
                   " entries=" + std::to_string(data.size()) + " sets=" + settingsText(settings));
    send(lock, std::move(out));
    return st;
}

}  // namespace sim
