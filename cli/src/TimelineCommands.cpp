// Subcommands of the service's timeline: fetch it from a running service, and look at a trace.
#include "Args.h"
#include "Registry.h"
#include "TimelineSvg.h"

#include <android/binder_manager.h>
#include <trox_sim/TraceExport.h>
#include <trox_sim/TroxService.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

namespace pymctl {
namespace {

void writeFile(const std::string& path, const std::string& text) {
    const std::string tmp = path + ".tmp";
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        out << text;
        if (!out.flush()) throw CommandFailed("cannot write " + tmp);
    }
    if (std::rename(tmp.c_str(), path.c_str()) != 0) {
        std::remove(tmp.c_str());
        throw CommandFailed("cannot write " + path);
    }
}

std::string property(sim::ITrox& trox, const std::string& key) {
    std::string value;
    ndk::ScopedAStatus st = trox.troxPropertyGet(key, &value);
    if (!st.isOk())
        throw CommandFailed("troxPropertyGet(" + key + ") failed: " + st.getDescription());
    return value;
}

// One export, chunk by chunk; empty when another reader replaced it on the way.
std::string fetchExport(sim::ITrox& trox) {
    const std::string head = property(trox, sim::kTraceProperty);
    std::istringstream words(head);
    unsigned long long id = 0;
    size_t bytes = 0;
    size_t chunks = 0;
    if (!(words >> id >> bytes >> chunks)) {
        throw CommandFailed("the service does not export its timeline (it answered '" + head +
                            "')");
    }
    std::string text;
    text.reserve(bytes);
    const std::string prefix = std::string(sim::kTraceProperty) + "." + std::to_string(id) + ".";
    for (size_t n = 0; n < chunks; ++n) {
        const std::string chunk = property(trox, prefix + std::to_string(n));
        if (chunk.empty()) return {};
        text += chunk;
    }
    if (text.size() != bytes) {
        throw CommandFailed("the trace came in " + std::to_string(text.size()) + " bytes, not " +
                            std::to_string(bytes));
    }
    return text;
}

int runTrace(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 1, 1, "trace FILE");
    const std::string& path = a.positionals[0];
    std::shared_ptr<sim::ITrox> trox = sim::ITrox::fromBinder(
            ndk::SpAIBinder(AServiceManager_checkService(sim::kTroxInstance)));
    if (!trox) throw CommandFailed("the service is not running");
    // A large trace takes some hundred calls.
    ctx.watchdog.extend(std::chrono::seconds(60));
    std::string text;
    for (int attempt = 0; attempt < 3 && text.empty(); ++attempt) text = fetchExport(*trox);
    if (text.empty()) throw CommandFailed("other readers kept replacing the trace; try again");
    writeFile(path, text);
    ctx.out.set("file", path);
    ctx.out.set("bytes", text.size());
    ctx.out.say("trace of " + std::to_string(text.size()) + " bytes written to " + path);
    return 0;
}

int runTimeline(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {{"--svg"}});
    expectPositionals(a, 1, 1, "timeline FILE [--svg OUT]");
    std::ifstream in(a.positionals[0], std::ios::binary);
    if (!in) throw UsageError("cannot read " + a.positionals[0]);
    nlohmann::json trace = nlohmann::json::parse(in, nullptr, false);
    if (trace.is_discarded() || !trace.is_object() || !trace.contains("traceEvents") ||
        !trace["traceEvents"].is_array()) {
        throw UsageError(a.positionals[0] + " is not a trace (a JSON object with traceEvents)");
    }
    size_t slices = 0;
    size_t instants = 0;
    std::set<int64_t> pids;
    std::set<std::string> counters;
    for (const auto& e : trace["traceEvents"]) {
        const std::string ph = e.value("ph", "");
        if (ph == "X") {
            ++slices;
            pids.insert(e.value("pid", int64_t{0}));
        }
        if (ph == "C") counters.insert(e.value("name", ""));
        if (ph == "i" || ph == "I") ++instants;
    }
    const auto dropped =
            trace.value("otherData", nlohmann::json::object()).value("dropped_events", 0);
    ctx.out.set("slices", slices);
    ctx.out.set("callers", pids.size());
    ctx.out.set("counters", counters.size());
    ctx.out.set("instants", instants);
    ctx.out.set("dropped", dropped);
    ctx.out.say(std::to_string(slices) + " requests from " + std::to_string(pids.size()) +
                " callers, " + std::to_string(counters.size()) + " resource counters, " +
                std::to_string(instants) + " instants, " + std::to_string(dropped) +
                " events dropped");
    if (auto svg = a.get("--svg")) {
        writeFile(*svg, renderTimelineSvg(trace));
        ctx.out.set("svg", *svg);
        ctx.out.say("picture written to " + *svg);
    }
    return 0;
}

}  // namespace

std::vector<Command> timelineCommands() {
    return {
            {"trace", "trace FILE", "fetch the service's timeline into FILE (Trace Event Format)",
             "  Open FILE in the Perfetto UI or chrome://tracing. The service answers through\n"
             "  troxPropertyGet: \"vendor.trox.trace\" takes a snapshot, then\n"
             "  \"vendor.trox.trace.EXPORT.N\" reads it chunk by chunk.\n",
             runTrace},
            {"timeline", "timeline FILE [--svg OUT]", "summarise a trace, or draw it as SVG",
             "  --svg OUT   a picture as a trace viewer lays it out: tracks per process, requests\n"
             "              as bars, resources as step lines, instants as markers\n",
             runTimeline, false},
    };
}

}  // namespace pymctl
