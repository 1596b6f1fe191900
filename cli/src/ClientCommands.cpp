// Subcommands of the client class door (halclient.h): resource and scenario control,
// diagnostics and properties.
#include "Args.h"
#include "LogSink.h"
#include "Registry.h"
#include "halclient.h"

#include <unistd.h>

#include <memory>

namespace pymctl {
namespace {

int32_t ownPid() {
    return static_cast<int32_t>(getpid());
}

int runResCtl(const std::vector<std::string>& args, Context& ctx) {
    const std::string usage =
            "resctl [--handle H] [--duration MS] [--param P] [--flag F] [--pid PID] ID=VALUE... "
            "| resctl release HANDLE";
    ParsedArgs a =
            parseArgs(args, {{"--handle"}, {"--duration"}, {"--param"}, {"--flag"}, {"--pid"}});
    if (!a.positionals.empty() && a.positionals[0] == "release") {
        expectPositionals(a, 2, 2, usage);
        const int32_t handle = parseInt32(a.positionals[1], "handle");
        const int r = troxHalclient::troxResCtlRelease(handle);
        ctx.out.set("handle", handle);
        ctx.out.set("result", r);
        if (r == -1)
            throw CommandFailed("release of handle " + std::to_string(handle) + " refused");
        ctx.out.say("released handle " + std::to_string(handle));
        return 0;
    }
    expectPositionals(a, 1, SIZE_MAX, usage);
    const auto pairs = parseResourceSettings(a.positionals);
    troxHalclient::ResourceList list(pairs.begin(), pairs.end());
    const int handle = parseInt32(a.get("--handle").value_or("-1"), "handle");
    const int duration = parseInt32(a.get("--duration").value_or("0"), "duration", 0);
    const int param = parseInt32(a.get("--param").value_or("-1"), "param");
    const int flag = parseInt32(a.get("--flag").value_or("-1"), "flag");
    const int pid = parseInt32(a.get("--pid").value_or(std::to_string(ownPid())), "pid", 0);
    const int r = troxHalclient::troxResCtlRequest(handle, duration, list, param, flag, pid);
    ctx.out.set("handle", r);
    ctx.out.set("duration", duration);
    if (r == -1) throw CommandFailed("the service refused the request or could not be reached");
    ctx.out.say("resource control granted: handle " + std::to_string(r));
    return 0;
}

int runScenario(const std::vector<std::string>& args, Context& ctx) {
    const std::string usage =
            "scenario start ID [--duration MS] [--pid PID] | scenario release "
            "HANDLE";
    ParsedArgs a = parseArgs(args, {{"--duration"}, {"--pid"}});
    expectPositionals(a, 2, 2, usage);
    const std::string& verb = a.positionals[0];
    if (verb == "start") {
        const int id = parseInt32(a.positionals[1], "scenario id");
        const int duration = parseInt32(a.get("--duration").value_or("0"), "duration", 0);
        const int pid = parseInt32(a.get("--pid").value_or(std::to_string(ownPid())), "pid", 0);
        const int handle = troxHalclient::troxSACtlRequest(duration, id, pid);
        ctx.out.set("scenario", id);
        ctx.out.set("handle", handle);
        if (handle == -1) throw CommandFailed("scenario " + std::to_string(id) + " refused");
        ctx.out.say("scenario " + std::to_string(id) + " started: handle " +
                    std::to_string(handle));
        return 0;
    }
    if (verb == "release") {
        const int handle = parseInt32(a.positionals[1], "handle");
        const int r = troxHalclient::troxSACtlRelease(handle);
        ctx.out.set("handle", handle);
        ctx.out.set("result", r);
        if (r == -1)
            throw CommandFailed("release of scenario handle " + a.positionals[1] + " refused");
        ctx.out.say("scenario handle " + std::to_string(handle) + " released");
        return 0;
    }
    throw UsageError("unknown scenario action '" + verb + "'; usage: " + usage);
}

struct Selector {
    const char* name;
    int (*call)();
};

const Selector kSelectors[] = {
        {"todo-queue", troxHalclient::troxDumpToDoQueue},
        {"run-map", troxHalclient::troxDumpRunMap},
        {"active-res", troxHalclient::troxDumpActiveResMap},
        {"res-request", troxHalclient::troxDumpResRequest},
        {"res-info", troxHalclient::troxDumpResInfo},
        {"scenarios", troxHalclient::troxDumpSAInfo},
        {"pidfd-list", troxHalclient::troxDumpPidFdList},
        {"pidfd-monitor", troxHalclient::troxDumpPidfdMonitorMap},
        {"records", troxHalclient::troxDumpResRecordList},
        {"history-on", troxHalclient::troxHistoryRequestRecordOn},
        {"history-off", troxHalclient::troxHistoryRequestRecordOff},
};

std::string selectorNames() {
    std::string s;
    for (const auto& sel : kSelectors) s += (s.empty() ? "" : ", ") + std::string(sel.name);
    return s;
}

int runDump(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 1, 1, "dump SELECTOR");
    const Selector* sel = nullptr;
    for (const auto& s : kSelectors) {
        if (a.positionals[0] == s.name) sel = &s;
    }
    if (sel == nullptr) {
        throw UsageError("unknown dump selector '" + a.positionals[0] + "' (one of " +
                         selectorNames() + ")");
    }
    // The service writes the dump to its own log; in this process that log can be shown.
    LogTap tap(Session::serviceLogTag());
    const int r = sel->call();
    ctx.out.set("selector", sel->name);
    ctx.out.set("result", r);
    if (r != 0) throw CommandFailed(std::string("the service refused dump ") + sel->name);
    if (ctx.session.embedded()) {
        const auto lines = tap.lines();
        ctx.out.set("log", lines);
        for (const auto& l : lines) ctx.out.say(l);
    } else {
        ctx.out.say(std::string("dump ") + sel->name + " written to the service's log");
    }
    return 0;
}

int runProp(const std::vector<std::string>& args, Context& ctx) {
    const std::string usage = "prop get KEY | prop set KEY VALUE";
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 2, 3, usage);
    const std::string& verb = a.positionals[0];
    const std::string& key = a.positionals[1];
    if (key.empty()) throw UsageError("property key is empty");
    ctx.out.set("key", key);
    if (verb == "get") {
        expectPositionals(a, 2, 2, usage);
        std::unique_ptr<char[]> value(troxHalclient::troxPropertyGet(key));
        const std::string v = value ? std::string(value.get()) : std::string();
        ctx.out.set("value", v);
        ctx.out.say(key + " = " + v);
        return 0;
    }
    if (verb == "set") {
        expectPositionals(a, 3, 3, usage);
        const std::string& value = a.positionals[2];
        // Reading back a value of 256 characters or more would abort the caller.
        if (value.size() > 255) throw UsageError("property value longer than 255 characters");
        const int r = troxHalclient::troxPropertySet(key, value);
        ctx.out.set("value", value);
        ctx.out.set("result", r);
        if (r != 0) throw CommandFailed("the service refused to set " + key);
        ctx.out.say(key + " set to " + value);
        return 0;
    }
    throw UsageError("unknown prop action '" + verb + "'; usage: " + usage);
}

}  // namespace

std::vector<Command> clientCommands() {
    return {
            {"resctl",
             "resctl [--handle H] [--duration MS] [--param P] [--flag F] [--pid PID] "
             "ID=VALUE... | resctl release HANDLE",
             "client-class resource control and release",
             "  --handle H     change the request with this handle (default -1: a new one)\n"
             "  --duration MS  0 (default) until released\n"
             "  --param P      extra integer (default -1)\n"
             "  --flag F       1 or more sets the request's flag (default -1)\n"
             "  --pid PID      requesting process (default this one)\n",
             runResCtl},
            {"scenario", "scenario start ID [--duration MS] [--pid PID] | scenario release HANDLE",
             "start or release a configured scenario", "", runScenario},
            {"dump", "dump SELECTOR", "ask the service to dump a table to its log",
             "  SELECTOR: " + selectorNames() +
                     "\n  With the embedded service the dump is shown here.\n",
             runDump},
            {"prop", "prop get KEY | prop set KEY VALUE", "read or set a service property", "",
             runProp},
    };
}

}  // namespace pymctl
