// Subcommands that watch the service: resource listening and the thermal pair.
#include "Args.h"
#include "ChangeCollector.h"
#include "Registry.h"
#include "halclient.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <trox_sim/TroxService.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace pymctl {
namespace {

constexpr int64_t kMaxTimeoutMs = 600000;

std::chrono::milliseconds readTimeout(const ParsedArgs& a) {
    auto v = a.get("--timeout");
    if (!v) throw UsageError("missing --timeout MS");
    return std::chrono::milliseconds(parseInteger(*v, "timeout", 0, kMaxTimeoutMs));
}

// Prints each batch as it arrives and keeps it for the JSON document.
std::shared_ptr<ChangeCollector> printingCollector(Context& ctx) {
    auto collector = std::make_shared<ChangeCollector>();
    Output* out = &ctx.out;
    const Session* session = &ctx.session;
    collector->setObserver([out, session](const ChangeCollector::Batch& batch) {
        nlohmann::json records = nlohmann::json::array();
        for (const auto& r : batch) {
            records.push_back(
                    {{"id", r.id}, {"hex", hexId(r.id)}, {"value", r.value.value_or("")}});
            out->say("change: " + session->label(r.id) + " = " + r.value.value_or(""));
        }
        out->append("changes", records);
    });
    return collector;
}

// Tells when the service's process goes: the library reconnects quietly, but a listener's
// registration is lost with it.
class ServiceWatch {
  public:
    ServiceWatch() : recipient_(AIBinder_DeathRecipient_new(&ServiceWatch::onDied)) {}
    ~ServiceWatch() {
        if (binder_.get() != nullptr) AIBinder_unlinkToDeath(binder_.get(), recipient_, &state());
        AIBinder_DeathRecipient_delete(recipient_);
    }
    ServiceWatch(const ServiceWatch&) = delete;
    ServiceWatch& operator=(const ServiceWatch&) = delete;

    // Watches the service now running; false when none answers.
    bool arm() {
        if (binder_.get() != nullptr) AIBinder_unlinkToDeath(binder_.get(), recipient_, &state());
        binder_ = ndk::SpAIBinder(AServiceManager_checkService(sim::kTroxInstance));
        {
            std::lock_guard<std::mutex> lock(state().mutex);
            state().died = false;
        }
        if (binder_.get() == nullptr) return false;
        if (AIBinder_linkToDeath(binder_.get(), recipient_, &state()) != STATUS_OK) {
            binder_ = ndk::SpAIBinder();
            return false;
        }
        return true;
    }
    // True when the watched service died before `end`.
    bool diedBefore(std::chrono::steady_clock::time_point end) {
        std::unique_lock<std::mutex> lock(state().mutex);
        return state().cv.wait_until(lock, end, [] { return state().died; });
    }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable cv;
        bool died = false;
    };
    // Lives as long as the process: a notice may still be on its way when a watch ends.
    static State& state() {
        static State* s = new State();
        return *s;
    }
    static void onDied(void* cookie) {
        auto* s = static_cast<State*>(cookie);
        std::lock_guard<std::mutex> lock(s->mutex);
        s->died = true;
        s->cv.notify_all();
    }

    AIBinder_DeathRecipient* recipient_;
    ndk::SpAIBinder binder_;
};

void count(Context& ctx, const std::shared_ptr<ChangeCollector>& collector) {
    const size_t n = collector->batches().size();
    ctx.out.set("batches", n);
    if (n == 0) ctx.out.set("changes", nlohmann::json::array());
    ctx.out.say(std::to_string(n) + " change batch(es) seen");
}

void waitAndCount(Context& ctx, std::chrono::milliseconds timeout,
                  const std::shared_ptr<ChangeCollector>& collector) {
    ctx.watchdog.extend(timeout);
    std::this_thread::sleep_for(timeout);
    const size_t n = collector->batches().size();
    ctx.out.set("batches", n);
    if (n == 0) ctx.out.set("changes", nlohmann::json::array());
    ctx.out.say(std::to_string(n) + " change batch(es) seen");
}

int runListen(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {{"--timeout"}, {"--pid"}, {"--follow", false}});
    expectPositionals(a, 1, SIZE_MAX, "listen ID... --timeout MS [--pid PID] [--follow]");
    troxHalclient::ResourceList list;
    for (const auto& w : a.positionals) list.push_back({parseResourceId(w), std::string()});
    const auto timeout = readTimeout(a);
    const int pid = parseInt32(a.get("--pid").value_or("0"), "pid", 0);
    const bool follow = a.has("--follow");
    auto collector = printingCollector(ctx);
    ServiceWatch watch;
    watch.arm();
    int handle = troxHalclient::troxResListeningRegister(list, pid, collector);
    ctx.out.set("handle", handle);
    if (handle == -1) throw CommandFailed("the service refused the registration");
    ctx.out.say("listening on " + std::to_string(list.size()) + " resource(s), handle " +
                std::to_string(handle) + ", for " + std::to_string(timeout.count()) + " ms");
    ctx.watchdog.extend(timeout);
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (watch.diedBefore(end)) {
        if (!follow) {
            count(ctx, collector);
            throw CommandFailed(
                    "the service died; later changes are not seen (--follow waits "
                    "for it and listens again)");
        }
        ctx.out.say("the service died; waiting for it to come back");
        ctx.out.append("restarts", nlohmann::json::object());
        const int old = handle;
        handle = -1;
        while (handle == -1 && std::chrono::steady_clock::now() < end) {
            // The old handle means nothing to the new service, but the library still holds the
            // registration and would refuse the same ids again.
            if (watch.arm()) {
                troxHalclient::troxResListeningUnRegister(old);
                handle = troxHalclient::troxResListeningRegister(list, pid, collector);
            }
            if (handle == -1) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        if (handle == -1) {
            count(ctx, collector);
            throw CommandFailed("the service died and was not back before the timeout");
        }
        ctx.out.set("handle", handle);
        ctx.out.say("the service is back; listening again, handle " + std::to_string(handle));
    }
    count(ctx, collector);
    troxHalclient::troxResListeningUnRegister(handle);
    return 0;
}

int runThermal(const std::vector<std::string>& args, Context& ctx) {
    const std::string usage =
            "thermal notify ID=LEVEL... [--value V] | thermal listen ID... --timeout MS";
    ParsedArgs a = parseArgs(args, {{"--timeout"}, {"--value"}});
    expectPositionals(a, 1, SIZE_MAX, usage);
    const std::string verb = a.positionals[0];
    const std::vector<std::string> rest(a.positionals.begin() + 1, a.positionals.end());
    if (verb == "notify") {
        if (rest.empty()) throw UsageError("missing arguments; usage: " + usage);
        if (a.has("--timeout")) throw UsageError("option --timeout belongs to thermal listen");
        const auto pairs = parseResourcePairs(rest);
        troxHalclient::ResourceList list(pairs.begin(), pairs.end());
        const int value = parseInt32(a.get("--value").value_or("0"), "value");
        const int r = troxHalclient::troxThermalNotify(list, value);
        ctx.out.set("result", r);
        if (r != 0) throw CommandFailed("the service did not take the thermal levels");
        ctx.out.say("thermal levels sent (" + std::to_string(list.size()) + ")");
        return 0;
    }
    if (verb == "listen") {
        if (rest.empty()) throw UsageError("missing arguments; usage: " + usage);
        if (a.has("--value")) throw UsageError("option --value belongs to thermal notify");
        std::vector<int> ids;
        for (const auto& w : rest) ids.push_back(parseInt32(w, "thermal id"));
        const auto timeout = readTimeout(a);
        auto collector = printingCollector(ctx);
        const int handle = troxHalclient::troxThermalListeningRegister(ids, collector);
        ctx.out.set("handle", handle);
        if (handle == -1) throw CommandFailed("the service refused the thermal registration");
        ctx.out.say("listening for thermal levels of " + std::to_string(ids.size()) +
                    " id(s), handle " + std::to_string(handle) + ", for " +
                    std::to_string(timeout.count()) + " ms");
        waitAndCount(ctx, timeout, collector);
        troxHalclient::troxThermalListeningUnregister(handle);
        // The thermal unregister leaves the library's side; this drops it.
        troxHalclient::troxResListeningUnRegister(handle);
        return 0;
    }
    throw UsageError("unknown thermal action '" + verb + "'; usage: " + usage);
}

}  // namespace

std::vector<Command> listenCommands() {
    return {
            {"listen", "listen ID... --timeout MS [--pid PID] [--follow]",
             "print every change of these resources for a while",
             "  --timeout MS  how long to listen (0.." + std::to_string(kMaxTimeoutMs) +
                     ")\n"
                     "  --follow      when the service dies, wait for it and listen again (else "
                     "exit 1)\n",
             runListen},
            {"thermal",
             "thermal notify ID=LEVEL... [--value V] | thermal listen ID... --timeout MS",
             "send thermal levels, or print the thermal levels others send", "", runThermal},
    };
}

}  // namespace pymctl
