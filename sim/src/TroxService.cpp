#include "trox_sim/TroxService.h"

#include <android/binder_ibinder.h>
#include <android/log.h>
#include <signal.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <ctime>
#include <thread>

namespace sim {
namespace {

int32_t low32(int64_t id) {
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(id)));
}

bool parseValue(const std::string& text, int64_t* out) {
    size_t b = 0;
    size_t e = text.size();
    while (b < e && std::isspace(static_cast<unsigned char>(text[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(text[e - 1]))) --e;
    if (b == e) return false;
    const std::string t = text.substr(b, e - b);
    try {
        size_t used = 0;
        const long long v = std::stoll(t, &used, 10);
        if (used != t.size()) return false;
        *out = v;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::string hexId(int32_t id) {
    char buf[16];
    snprintf(buf, sizeof(buf), "0x%08" PRIx32, static_cast<uint32_t>(id));
    return buf;
}

std::string orNone(const std::optional<std::string>& s) {
    return s && !s->empty() ? *s : std::string("none");
}

const char* typeName(int32_t type) {
    switch (type) {
        case kStateQuery:
            return "state";
        case kResourceControl:
            return "resctl";
        case kScenario:
            return "scenario";
        case kDiagnostics:
            return "diagnostics";
        case kThermalNotify:
            return "thermal-notify";
        case kEvent:
            return "event";
        case kNotification:
            return "notify";
        case kHistory:
            return "history";
        case kPlatformResource:
            return "platform-resctl";
        case kPowerModeStatus:
            return "pm-status";
        case kPowerConsistency:
            return "power-consistency";
        case kDataset:
            return "dataset";
        case kFeatureStatus:
            return "feature";
        default:
            return "unknown";
    }
}

std::string settingsText(const std::vector<Setting>& settings) {
    std::string out = "[";
    for (size_t i = 0; i < settings.size(); ++i) {
        if (i != 0) out += ", ";
        out += hexId(settings[i].id) + "=" + std::to_string(settings[i].value);
    }
    return out + "]";
}

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
      properties_(config_.properties),
      historyOn_(config_.historyEnabled),
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
    return historyOn_;
}

std::string TroxService::property(const std::string& key) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = properties_.find(key);
    return it == properties_.end() ? std::string() : it->second;
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

TroxRequestData TroxService::recordFor(int32_t id, bool byPath) const {
    TroxRequestData d;
    const ResourceDef* def = model_.find(id);
    if (byPath && def != nullptr && !def->path.empty()) {
        d.res_Path = def->path;
    } else {
        d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(id));
    }
    d.res_Value = std::to_string(model_.value(id));
    return d;
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
            records.push_back(recordFor(c.id, l.byPath));
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

void TroxService::record(const std::string& op, int32_t pid, const std::string& line) {
    if (!historyOn_) return;
    const int64_t wall = clock_->wallMs();
    const std::time_t secs = static_cast<std::time_t>(wall / 1000);
    std::tm tm{};
    localtime_r(&secs, &tm);
    char stamp[48];
    snprintf(stamp, sizeof(stamp), "%02d-%02d %02d:%02d:%02d.%03d", tm.tm_mon + 1, tm.tm_mday,
             tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(wall % 1000));
    TroxRequestData d;
    d.res_Id = ++historySeq_;
    d.res_Value = op;
    d.res_Extra = std::string(stamp) + " pid=" + std::to_string(pid) + " " + op + " " + line;
    history_.push_back(std::move(d));
    while (history_.size() > config_.historySize) history_.pop_front();
}

std::string TroxService::describe(const Request& r) const {
    std::string s = "handle=" + std::to_string(r.handle) + " kind=" + typeName(r.requestType);
    if (r.requestType == kEvent) s += " action=" + std::to_string(r.source);
    if (r.requestType == kScenario) s += " scenario=" + std::to_string(r.source);
    s += " pid=" + std::to_string(r.pid) + " pkg=" + (r.pkg.empty() ? "none" : r.pkg) +
         " identity=" + (r.identity.empty() ? "none" : r.identity);
    s += r.deadlineMs ? " duration=" + std::to_string(*r.deadlineMs - r.startMs) + "ms"
                      : std::string(" duration=until-release");
    return s + " settings=" + settingsText(r.settings);
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
    if (request.requestData.empty()) {
        SLOG(ANDROID_LOG_ERROR, "diagnostic request without a selector");
        return 0;
    }
    const int32_t selector = low32(request.requestData[0].res_Id);
    const int64_t now = clock_->nowMs();
    auto line = [this](const std::string& s) { SLOG(ANDROID_LOG_INFO, "%s", s.c_str()); };
    switch (selector) {
        case kDumpToDoQueue: {
            line("dump to-do queue: requests waiting for their end");
            for (const Request* r : requests_.all()) {
                if (!r->deadlineMs) continue;
                line("  handle " + std::to_string(r->handle) + " ends in " +
                     std::to_string(*r->deadlineMs - now) + " ms");
            }
            break;
        }
        case kDumpRunMap:
            line("dump run map: " + std::to_string(requests_.size()) + " live requests");
            for (const Request* r : requests_.all()) line("  " + describe(*r));
            break;
        case kDumpActiveResMap:
            line("dump active resources: resources away from their default");
            for (const ResourceDef& s : model_.defs()) {
                if (model_.value(s.id) == s.defaultValue) continue;
                line("  " + hexId(s.id) + " " + s.name + " = " +
                     std::to_string(model_.value(s.id)) + " (default " +
                     std::to_string(s.defaultValue) + ", " +
                     std::to_string(model_.holderCount(s.id)) + " holders)");
            }
            break;
        case kDumpResRequest:
            line("dump resource requests: what each holder asks for");
            for (const Request* r : requests_.all()) {
                line("  request " + std::to_string(r->handle) + " " + settingsText(r->settings));
            }
            for (const auto& [rule, status] : ruleStatus_) {
                std::vector<Setting> held;
                for (const auto& [id, v] : model_.heldBy({Holder::Type::kRule, rule})) {
                    held.push_back({id, v});
                }
                line("  rule " + std::to_string(rule) + " status " + std::to_string(status) + " " +
                     settingsText(held));
            }
            break;
        case kDumpResInfo:
            line("dump resource info: " + std::to_string(model_.defs().size()) + " resources");
            for (const ResourceDef& s : model_.defs()) {
                line("  " + hexId(s.id) + " " + s.name + " " +
                     (s.kind == Kind::kBoost ? "boost" : "limit") + " default " +
                     std::to_string(s.defaultValue) + " range [" + std::to_string(s.min) + ", " +
                     std::to_string(s.max) + "] now " + std::to_string(model_.value(s.id)) +
                     (s.path.empty() ? "" : " path " + s.path));
            }
            break;
        case kDumpSAInfo:
            line("dump scenarios: " + std::to_string(config_.scenarios.size()) + " configured");
            for (const auto& [id, sc] : config_.scenarios) {
                line("  scenario " + std::to_string(id) + " " + sc.name + " " +
                     settingsText(sc.settings));
            }
            break;
        case kDumpPidFdList:
        case kDumpPidfdMonitorMap: {
            std::map<int32_t, std::vector<int32_t>> byPid;
            for (const Request* r : requests_.all()) byPid[r->pid].push_back(r->handle);
            for (const auto& [handle, l] : listeners_) byPid[l.pid].push_back(handle);
            line(std::string(selector == kDumpPidFdList ? "dump pid list"
                                                        : "dump pid monitor map") +
                 ": " + std::to_string(byPid.size()) + " client processes");
            for (const auto& [pid, handles] : byPid) {
                std::string hs;
                for (int32_t h : handles) hs += " " + std::to_string(h);
                line("  pid " + std::to_string(pid) + " handles" + hs);
            }
            break;
        }
        case kDumpResRecordList:
            line("dump request records: " + std::to_string(history_.size()) + " kept, recording " +
                 (historyOn_ ? "on" : "off"));
            for (const TroxRequestData& d : history_) line("  " + d.res_Extra.value_or(""));
            break;
        case kHistoryOn:
            historyOn_ = true;
            line("request history recording on");
            break;
        case kHistoryOff:
            historyOn_ = false;
            line("request history recording off");
            break;
        default:
            SLOG(ANDROID_LOG_WARN, "unknown diagnostic selector %d", selector);
            return 0;
    }
    return 1;
}

int32_t TroxService::thermalNotify(const TroxRequestParcel& request, Deliveries& out) {
    if (request.requestData.empty()) {
        SLOG(ANDROID_LOG_WARN, "thermal notification without levels");
        return 0;
    }
    for (const TroxRequestData& e : request.requestData) {
        if (!textFits("thermal level", e.res_Value, AIBinder_getCallingPid())) return 0;
        if (thermalLevels_.count(low32(e.res_Id)) == 0 &&
            thermalLevels_.size() >= config_.maxRequests) {
            SLOG(ANDROID_LOG_ERROR, "thermal levels refused: %zu ids known, the limit",
                 thermalLevels_.size());
            return 0;
        }
    }
    for (const TroxRequestData& e : request.requestData) {
        thermalLevels_[low32(e.res_Id)] = e.res_Value.value_or("");
        SLOG(ANDROID_LOG_INFO, "thermal %d level %s", low32(e.res_Id), orNone(e.res_Value).c_str());
    }
    timeline_.thermal(request.requestData, AIBinder_getCallingPid());
    for (const auto& [handle, l] : listeners_) {
        if (!l.thermal) continue;
        std::vector<TroxRequestData> records;
        for (const TroxRequestData& e : request.requestData) {
            if (!l.ids.empty() && l.ids.count(low32(e.res_Id)) == 0) continue;
            TroxRequestData d;
            d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(low32(e.res_Id)));
            d.res_Value = e.res_Value.value_or("");
            records.push_back(std::move(d));
        }
        if (!records.empty()) out.push_back({l.callback, std::move(records), handle});
    }
    return 1;
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
                        reply.push_back(recordFor(s.id, r->byPath));
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
    std::vector<TroxRequestData>& reply = *_aidl_return;
    reply.clear();
    auto numbered = [](int32_t id, const std::string& value) {
        TroxRequestData d;
        d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(id));
        d.res_Value = value;
        return d;
    };
    const auto& data = request.requestData;
    switch (request.requestType) {
        case kStateQuery:
            if (data.empty()) {
                for (const ResourceDef& s : model_.defs()) reply.push_back(recordFor(s.id, false));
            }
            for (const TroxRequestData& e : data) {
                if (e.res_Path && !e.res_Path->empty()) {
                    const ResourceDef* def = model_.findByPath(*e.res_Path);
                    if (def == nullptr) {
                        SLOG(ANDROID_LOG_WARN, "state of unknown path %s", e.res_Path->c_str());
                        continue;
                    }
                    reply.push_back(recordFor(def->id, true));
                    continue;
                }
                const int32_t id = low32(e.res_Id);
                if (id == kPowerConsistencyId) {
                    reply.push_back(numbered(id, config_.powerConsistency));
                } else if (model_.find(id) != nullptr) {
                    reply.push_back(recordFor(id, false));
                } else {
                    SLOG(ANDROID_LOG_WARN, "state of unknown resource %s", hexId(id).c_str());
                }
            }
            break;
        case kHistory:
            reply.assign(history_.begin(), history_.end());
            break;
        case kPowerModeStatus: {
            const int32_t mode = data.empty() ? 0 : low32(data[0].res_Id);
            auto it = config_.powerModes.find(mode);
            if (it != config_.powerModes.end()) {
                reply.push_back(numbered(mode, it->second));
            } else {
                SLOG(ANDROID_LOG_WARN, "unknown power mode %d", mode);
            }
            break;
        }
        case kPowerConsistency:
            reply.push_back(numbered(kPowerConsistencyId, config_.powerConsistency));
            break;
        case kDataset:
            for (const auto& [id, value] : config_.dataset) reply.push_back(numbered(id, value));
            break;
        case kFeatureStatus: {
            const int32_t feature = data.empty() ? 0 : low32(data[0].res_Id);
            auto it = config_.features.find(feature);
            if (it != config_.features.end()) {
                reply.push_back(numbered(feature, it->second));
            } else {
                SLOG(ANDROID_LOG_WARN, "unknown feature %d", feature);
            }
            break;
        }
        default:
            SLOG(ANDROID_LOG_WARN, "request kind %d is not a query", request.requestType);
            break;
    }
    SLOG(ANDROID_LOG_DEBUG, "%s query answered with %zu entries", typeName(request.requestType),
         reply.size());
    rearmLocked();
    send(lock, std::move(out));
    return st;
}

ndk::ScopedAStatus TroxService::troxResListeningRegister(
        const TroxRequestParcel& request, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResListeningRegister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    *_aidl_return = -1;
    if (!callback) {
        SLOG(ANDROID_LOG_ERROR, "listening registration without a callback");
        return st;
    }
    if (!roomLocked("listening registration", AIBinder_getCallingPid())) return st;
    Listener l;
    for (const TroxRequestData& e : request.requestData) {
        const ResourceDef* def = nullptr;
        if (e.res_Path && !e.res_Path->empty()) {
            def = model_.findByPath(*e.res_Path);
            l.byPath = true;
        } else {
            def = model_.find(low32(e.res_Id));
        }
        if (def == nullptr) {
            SLOG(ANDROID_LOG_ERROR, "listening registration for unknown resource %s",
                 e.res_Path && !e.res_Path->empty() ? e.res_Path->c_str()
                                                    : hexId(low32(e.res_Id)).c_str());
            return st;
        }
        l.ids.insert(def->id);
    }
    l.handle = requests_.newHandle();
    requests_.reserve(l.handle);
    l.callback = callback;
    l.pid = request.pid != 0 ? request.pid : AIBinder_getCallingPid();
    *_aidl_return = l.handle;
    SLOG(ANDROID_LOG_INFO, "listener %d registered for %s (%s form)", l.handle,
         l.ids.empty() ? "every resource" : (std::to_string(l.ids.size()) + " resources").c_str(),
         l.byPath ? "path" : "id");
    record("listen", l.pid,
           "handle=" + std::to_string(l.handle) + " resources=" + std::to_string(l.ids.size()));
    listeners_[l.handle] = std::move(l);
    return st;
}

ndk::ScopedAStatus TroxService::troxResListeningUnRegister(int32_t handle, int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxResListeningUnRegister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    if (listeners_.erase(handle) != 0) {
        requests_.unreserve(handle);
        SLOG(ANDROID_LOG_INFO, "listener %d unregistered", handle);
        *_aidl_return = 0;
    } else {
        SLOG(ANDROID_LOG_WARN, "unregister of unknown listener %d", handle);
        *_aidl_return = -1;
    }
    record("unlisten", AIBinder_getCallingPid(),
           "handle=" + std::to_string(handle) + " -> " + std::to_string(*_aidl_return));
    return st;
}

ndk::ScopedAStatus TroxService::troxThermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<ITroxCallback>& callback,
        int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxThermalListeningRegister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    *_aidl_return = -1;
    if (!callback) {
        SLOG(ANDROID_LOG_ERROR, "thermal registration without a callback");
        return st;
    }
    if (!roomLocked("thermal registration", AIBinder_getCallingPid())) return st;
    Listener l;
    l.thermal = true;
    l.ids.insert(ids.begin(), ids.end());
    l.callback = callback;
    l.pid = AIBinder_getCallingPid();
    l.handle = requests_.newHandle();
    requests_.reserve(l.handle);
    *_aidl_return = l.handle;
    SLOG(ANDROID_LOG_INFO, "thermal listener %d registered for %zu ids", l.handle, ids.size());
    record("thermal-listen", l.pid, "handle=" + std::to_string(l.handle));
    listeners_[l.handle] = std::move(l);
    return st;
}

ndk::ScopedAStatus TroxService::troxThermalListeningUnregister(int32_t handle,
                                                               int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxThermalListeningUnregister");
    if (!st.isOk()) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = listeners_.find(handle);
    if (it != listeners_.end() && it->second.thermal) {
        listeners_.erase(it);
        requests_.unreserve(handle);
        SLOG(ANDROID_LOG_INFO, "thermal listener %d unregistered", handle);
        *_aidl_return = 0;
    } else {
        SLOG(ANDROID_LOG_WARN, "unregister of unknown thermal listener %d", handle);
        *_aidl_return = -1;
    }
    return st;
}

ndk::ScopedAStatus TroxService::troxPropertyGet(const std::string& key, std::string* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxPropertyGet");
    if (!st.isOk()) return st;
    if (traceExport_.answer(key, _aidl_return)) return st;
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = properties_.find(key);
    *_aidl_return = it == properties_.end() ? std::string() : it->second;
    SLOG(ANDROID_LOG_INFO, "property %s is '%s'%s", key.c_str(), _aidl_return->c_str(),
         it == properties_.end() ? " (not set)" : "");
    return st;
}

ndk::ScopedAStatus TroxService::troxPropertySet(const std::string& key, const std::string& value,
                                                int32_t* _aidl_return) {
    ndk::ScopedAStatus st = enter("troxPropertySet");
    if (!st.isOk()) return st;
    *_aidl_return = -1;
    // Clients copy values into 256-byte buffers, so longer ones are refused here.
    if (key.empty() || value.size() > 255) {
        SLOG(ANDROID_LOG_ERROR, "property set refused: %s",
             key.empty() ? "empty key" : "value too long");
        return st;
    }
    if (!textFits("property key", key, AIBinder_getCallingPid())) return st;
    int64_t n = 0;
    if (key == kFaultFailNextProperty || key == kFaultDelayProperty || key == kFaultDieProperty) {
        if (!parseValue(value, &n) || n < 0) {
            SLOG(ANDROID_LOG_ERROR, "property %s needs a number, not '%s'", key.c_str(),
                 value.c_str());
            return st;
        }
        *_aidl_return = 0;
        if (key == kFaultFailNextProperty)
            failNextCalls(static_cast<int>(std::min<int64_t>(n, 1 << 30)));
        if (key == kFaultDelayProperty) setCallDelayMs(n);
        if (key == kFaultDieProperty && n != 0) {
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
    if (properties_.count(key) == 0 && properties_.size() >= config_.maxRequests) {
        SLOG(ANDROID_LOG_ERROR, "property %s refused: %zu properties set, the limit",
             key.c_str(), properties_.size());
        return st;
    }
    properties_[key] = value;
    SLOG(ANDROID_LOG_INFO, "property %s set to '%s'", key.c_str(), value.c_str());
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
