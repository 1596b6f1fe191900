// Subcommands that watch the service: resource listening and the thermal pair.
#include "Args.h"
#include "ChangeCollector.h"
#include "Registry.h"
#include "halclient.h"

#include <chrono>
#include <memory>
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
    ParsedArgs a = parseArgs(args, {{"--timeout"}, {"--pid"}});
    expectPositionals(a, 1, SIZE_MAX, "listen ID... --timeout MS [--pid PID]");
    troxHalclient::ResourceList list;
    for (const auto& w : a.positionals) list.push_back({parseResourceId(w), std::string()});
    const auto timeout = readTimeout(a);
    const int pid = parseInt32(a.get("--pid").value_or("0"), "pid", 0);
    auto collector = printingCollector(ctx);
    const int handle = troxHalclient::troxResListeningRegister(list, pid, collector);
    ctx.out.set("handle", handle);
    if (handle == -1) throw CommandFailed("the service refused the registration");
    ctx.out.say("listening on " + std::to_string(list.size()) + " resource(s), handle " +
                std::to_string(handle) + ", for " + std::to_string(timeout.count()) + " ms");
    waitAndCount(ctx, timeout, collector);
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
            {"listen", "listen ID... --timeout MS [--pid PID]",
             "print every change of these resources for a while",
             "  --timeout MS  how long to listen (0.." + std::to_string(kMaxTimeoutMs) + ")\n",
             runListen},
            {"thermal",
             "thermal notify ID=LEVEL... [--value V] | thermal listen ID... --timeout MS",
             "send thermal levels, or print the thermal levels others send", "", runThermal},
    };
}

}  // namespace pymctl
