// pymctl demo: a caller's whole day on the embedded reference service, narrated, with every
// step checked so that the exit status says whether the library behaved.
#include "Actions.h"
#include "Args.h"
#include "ChangeCollector.h"
#include "PymWrapper.h"
#include "Registry.h"
#include "halclient.h"
#include "pym.h"

#include <trox_sim/TraceJson.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

namespace pymctl {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWait(2000);

class Narrator {
  public:
    explicit Narrator(Output& out) : out_(out) {}

    void step(const std::string& title) {
        if (steps_++ > 0) out_.say("");
        out_.say("[" + std::to_string(steps_) + "] " + title);
        out_.append("steps", {{"step", steps_}, {"title", title}});
    }
    void saw(const std::string& line) { out_.say("    " + line); }
    bool check(bool ok, const std::string& what) {
        out_.say(std::string(ok ? "    ok: " : "    FAILED: ") + what);
        out_.append("checks", {{"step", steps_}, {"what", what}, {"ok", ok}});
        if (!ok) ++failures_;
        return ok;
    }
    int failures() const { return failures_; }

  private:
    Output& out_;
    int steps_ = 0;
    int failures_ = 0;
};

struct Watched {
    int32_t id;
    std::string name;
    int64_t defaultValue;
    int64_t boosted;
};

std::vector<PymClient::Resource> query(const std::vector<Watched>& watched) {
    std::vector<PymClient::Resource> rs;
    for (const auto& w : watched) rs.push_back({w.id, std::nullopt});
    PymMutiResStateRequest(rs);
    return rs;
}

// Reads the values and checks each against what want() says it should be now.
bool readAndCheck(Narrator& n, const std::vector<Watched>& watched, int64_t (*want)(const Watched&),
                  const std::string& what) {
    const auto rs = query(watched);
    bool all = true;
    for (size_t i = 0; i < watched.size(); ++i) {
        const std::string got = rs[i].value.value_or("(none)");
        const std::string expected = std::to_string(want(watched[i]));
        n.saw(watched[i].name + " = " + got + (got == expected ? "" : " (want " + expected + ")"));
        all = all && got == expected;
    }
    return n.check(all, what);
}

int64_t defaultOf(const Watched& w) {
    return w.defaultValue;
}
int64_t boostedOf(const Watched& w) {
    return w.boosted;
}

// Polls until the resource holds value: one-way requests land a moment after the call.
bool waitForValue(int32_t id, const std::string& value) {
    const auto deadline = std::chrono::steady_clock::now() + kWait;
    while (std::chrono::steady_clock::now() < deadline) {
        std::vector<PymClient::Resource> rs = {{id, std::nullopt}};
        if (PymMutiResStateRequest(rs) == 1 && rs[0].value == value) return true;
        std::this_thread::sleep_for(milliseconds(10));
    }
    return false;
}

std::vector<Watched> watchedFor(const sim::Config& config, int32_t action) {
    std::vector<Watched> out;
    auto it = config.actions.find(action);
    if (it == config.actions.end()) return out;
    for (const auto& s : it->second.settings) {
        for (const auto& res : config.resources) {
            if (res.id != s.id) continue;
            int64_t v = std::clamp(s.value, res.min, res.max);
            v = res.kind == sim::Kind::kBoost ? std::max(v, res.defaultValue)
                                              : std::min(v, res.defaultValue);
            out.push_back({res.id, res.name, res.defaultValue, v});
        }
    }
    return out;
}

std::string settingOf(const sim::Config& config, int32_t rule, int32_t status, int32_t id) {
    auto r = config.rules.find(rule);
    if (r == config.rules.end()) return {};
    auto st = r->second.statuses.find(status);
    if (st == r->second.statuses.end()) return {};
    for (const auto& s : st->second) {
        if (s.id == id) return std::to_string(s.value);
    }
    return {};
}

int64_t defaultValueOf(const sim::Config& config, int32_t id) {
    for (const auto& res : config.resources) {
        if (res.id == id) return res.defaultValue;
    }
    return 0;
}

void writeDemoTrace(Context& ctx, sim::EmbeddedService& service, const std::string& path) {
    size_t events = 0;
    const std::string err = sim::writeTraceFile(*service.timeline(), path, &events);
    if (!err.empty()) throw CommandFailed(err);
    ctx.out.set("trace", path);
    ctx.out.say("timeline of " + std::to_string(events) + " events written to " + path);
}

int runDemo(const std::vector<std::string>& args, Context& ctx) {
    const ParsedArgs parsed = parseArgs(args, {{"--trace"}});
    expectPositionals(parsed, 0, 0, "demo [--trace FILE]");
    sim::EmbeddedService* service = ctx.session.service();
    if (service == nullptr) throw UsageError("demo runs on the embedded service only");
    const sim::Config& config = service->service()->config();
    Narrator n(ctx.out);
    const auto started = std::chrono::steady_clock::now();

    const std::string launchName = "ACTION_LAUNCH";
    const std::string swipeName = "ACTION_SWIPE_V";
    const int32_t launch = findAction(launchName).value_or(-1);
    const int32_t swipe = findAction(swipeName).value_or(-1);
    const std::vector<Watched> watched = watchedFor(config, launch);
    const std::vector<Watched> swiped = watchedFor(config, swipe);

    n.step("the reference service runs in this process");
    n.saw(std::to_string(config.resources.size()) + " resources, " +
          std::to_string(config.actions.size()) + " configured actions, " +
          std::to_string(config.rules.size()) + " rules");
    n.check(!watched.empty() && !swiped.empty(),
            launchName + " and " + swipeName + " set resources in this configuration");
    if (watched.empty() || swiped.empty()) {
        throw CommandFailed("this configuration cannot show the demo's day");
    }

    n.step("pymInit: the Event API connects and asks the service to initialise");
    n.check(pymInit() == 0, "pymInit returned 0");

    n.step("read the resources " + launchName + " will boost, before anything holds them");
    readAndCheck(n, watched, defaultOf, "every value is its default");

    n.step("register a listener for them through the client class");
    auto collector = std::make_shared<ChangeCollector>();
    troxHalclient::ResourceList listenList;
    for (const auto& w : watched) listenList.push_back({w.id, std::string()});
    const int listener = troxHalclient::troxResListeningRegister(listenList, 0, collector);
    n.saw("listener handle " + std::to_string(listener));
    n.check(listener > 0, "the service gave the listener a handle");

    n.step("acquire by action name through the wrapper: QUARNE_" + launchName + " for 5 s");
    const int32_t handle = PymEventAcquireWrapper(kActionMarker + launchName, "com.example.gallery",
                                                  "demo-launch", 5000);
    n.saw("handle " + std::to_string(handle) + " (event id " + std::to_string(launch) + ")");
    n.check(handle > 0, "the service granted the request");

    n.step("read the boosted values back");
    readAndCheck(n, watched, boostedOf, "every value is the one the action asks for");

    n.step("the listener saw the change");
    bool seen = true;
    for (const auto& w : watched)
        seen = collector->waitFor(w.id, std::to_string(w.boosted), kWait) && seen;
    n.saw(std::to_string(collector->batches().size()) + " callback batch(es) so far");
    n.check(seen, "a callback carried each boosted value");

    const int32_t boostMode = 0x010103A0;
    const std::string ruleValue = settingOf(config, 8, 1, boostMode);
    const std::string boostDefault = std::to_string(defaultValueOf(config, boostMode));
    n.step("a notification through the wrapper: app switch (8, type 1) turns rule 8 on");
    PymNotifyWapper("demo app switch", 8, 1, 0, 0, 0, "");
    std::vector<PymClient::Resource> bm = {{boostMode, std::nullopt}};
    PymMutiResStateRequest(bm);
    n.saw(ctx.session.label(boostMode) + " = " + bm[0].value.value_or("(none)"));
    n.check(!ruleValue.empty() && bm[0].value == ruleValue, "the rule set the scheduler boost");
    PymNotifyWapper("demo app switch done", 8, 0, 0, 0, 0, "");
    n.check(waitForValue(boostMode, boostDefault), "type 0 switched the rule off again");

    n.step("release through the wrapper, values restored");
    PymReleaseWapper(handle);
    readAndCheck(n, watched, defaultOf, "every value is back at its default");
    n.check(collector->waitFor(watched[0].id, std::to_string(watched[0].defaultValue), kWait),
            "the listener saw the restore");
    n.check(troxHalclient::troxResListeningUnRegister(listener) == 0, "listener unregistered");

    n.step("a one-way request: " + swipeName + ", handle drawn by the library");
    const int32_t oneWay =
            PymEventAcquireOneWay(swipe, "com.example.launcher", "demo-swipe", 0, {});
    n.saw("handle " + std::to_string(oneWay));
    n.check(oneWay >= 0, "the library drew a handle and sent the request");
    const Watched& s0 = swiped.front();
    n.check(waitForValue(s0.id, std::to_string(s0.boosted)),
            s0.name + " reached " + std::to_string(s0.boosted));
    PymRelease(oneWay);
    n.check(waitForValue(s0.id, std::to_string(s0.defaultValue)),
            "released by the drawn handle: back to " + std::to_string(s0.defaultValue));

    n.step("the service dies");
    service->kill();
    std::vector<PymClient::Resource> down = {{watched[0].id, std::nullopt}};
    const int32_t whileDown = PymMutiResStateRequest(down);
    n.saw("state query while it is down: " + std::to_string(whileDown));
    n.check(whileDown == -1, "the call fails cleanly, no hang, no crash");

    n.step("the service is restarted; the library reconnects on the next call");
    service->restart();
    n.check(pymInit() == 0, "Event API: pymInit returned 0 again");
    readAndCheck(n, watched, defaultOf, "Event API: the new service answers state queries");
    std::unique_ptr<char[]> version(troxHalclient::troxPropertyGet("ro.vendor.trox.version"));
    const std::string v = version ? version.get() : "";
    n.saw("client class: ro.vendor.trox.version = " + v);
    n.check(!v.empty(), "client class: reconnected and read a property");

    const auto ms =
            std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - started);
    ctx.out.set("failures", n.failures());
    ctx.out.set("elapsed_ms", ms.count());
    ctx.out.say("");
    if (auto trace = parsed.get("--trace")) writeDemoTrace(ctx, *service, *trace);
    if (n.failures() != 0) {
        throw CommandFailed(std::to_string(n.failures()) + " check(s) failed");
    }
    ctx.out.say("demo: every step behaved as expected (" + std::to_string(ms.count()) + " ms)");
    return 0;
}

}  // namespace

Command demoCommand() {
    return {"demo", "demo [--trace FILE]",
            "a narrated, self-checking run of a caller's day on the embedded service",
            "  Exits 0 only if every step behaved as expected.\n"
            "  --trace FILE   write the service's timeline there (Trace Event Format)\n",
            runDemo};
}

}  // namespace pymctl
