// Subcommands of the Event API door (pym.h).
#include "Actions.h"
#include "Args.h"
#include "Registry.h"
#include "pym.h"

#include "PymWrapper.h"

#include <stdexcept>

namespace pymctl {
namespace {

const std::vector<OptionDef> kAcquireOptions = {
        {"--action"}, {"--pkg"}, {"--identity"}, {"--duration"}};

nlohmann::json resourcesJson(const Session& session, const std::vector<PymClient::Resource>& rs) {
    nlohmann::json arr = nlohmann::json::array();
    for (const auto& r : rs) {
        nlohmann::json e = {{"id", r.id}, {"hex", hexId(r.id)}};
        const std::string name = session.resourceName(r.id);
        if (!name.empty()) e["name"] = name;
        if (r.value) e["value"] = *r.value;
        arr.push_back(e);
    }
    return arr;
}

struct AcquireRequest {
    int32_t cmdid = 0;
    std::string action;  // empty unless by name
    std::string pkg = "pymctl";
    std::string identity = "pymctl";
    int32_t duration = 0;
    std::vector<PymClient::Resource> resources;
};

AcquireRequest readAcquire(const ParsedArgs& a, bool allowAction, const std::string& usage) {
    AcquireRequest r;
    if (auto v = a.get("--pkg")) r.pkg = *v;
    if (auto v = a.get("--identity")) r.identity = *v;
    if (auto v = a.get("--duration")) r.duration = parseInt32(*v, "duration", 0);
    if (auto v = a.get("--action")) {
        if (!allowAction) throw UsageError("unknown option --action");
        if (!a.positionals.empty()) {
            throw UsageError("--action takes no command id or resources (the wrapper sends none)");
        }
        auto id = findAction(*v);
        if (!id) throw UsageError("unknown action name '" + *v + "' (see 'pymctl actions')");
        r.action = bareActionName(*v);
        r.cmdid = *id;
        return r;
    }
    expectPositionals(a, 1, SIZE_MAX, usage);
    r.cmdid = parseInt32(a.positionals[0], "command id");
    r.resources = parseResourceSettings({a.positionals.begin() + 1, a.positionals.end()});
    return r;
}

void reportHandle(Context& ctx, const AcquireRequest& r, int32_t handle, const char* how) {
    ctx.out.set("handle", handle);
    ctx.out.set("cmdid", r.cmdid);
    if (!r.action.empty()) ctx.out.set("action", r.action);
    ctx.out.set("pkg", r.pkg);
    ctx.out.set("identity", r.identity);
    ctx.out.set("duration", r.duration);
    ctx.out.set("resources", resourcesJson(ctx.session, r.resources));
    std::string what = r.action.empty() ? "command " + std::to_string(r.cmdid)
                                        : r.action + " (event " + std::to_string(r.cmdid) + ")";
    ctx.out.say(
            std::string(how) + " " + what + ": handle " + std::to_string(handle) + ", duration " +
            (r.duration == 0 ? std::string("until released") : std::to_string(r.duration) + " ms"));
}

const char kAcquireDetails[] =
        "  CMDID          event id; -2 plain resource acquisition, -3 platform acquisition\n"
        "  ID=VALUE       extra resources (ids decimal or 0x hexadecimal)\n"
        "  --action NAME  acquire by catalogue name through the Action wrapper (no CMDID)\n"
        "  --pkg P        package name (default pymctl)\n"
        "  --identity I   identity text (default pymctl)\n"
        "  --duration MS  how long the request holds; 0 (default) until released\n";

int runAcquire(const std::vector<std::string>& args, Context& ctx) {
    const std::string usage = "acquire CMDID [ID=VALUE...] | acquire --action NAME [options]";
    AcquireRequest r = readAcquire(parseArgs(args, kAcquireOptions), true, usage);
    int32_t handle = -1;
    if (!r.action.empty()) {
        handle = PymEventAcquireWrapper(kActionMarker + r.action, r.pkg, r.identity, r.duration);
    } else {
        handle = PymEventAcquire(r.cmdid, r.pkg, r.identity, r.duration, r.resources);
    }
    if (handle == -1) {
        throw CommandFailed("the service refused the request or could not be reached");
    }
    reportHandle(ctx, r, handle, "acquired");
    return 0;
}

int runOneWay(const std::vector<std::string>& args, Context& ctx) {
    const std::string usage = "oneway CMDID [ID=VALUE...] [options]";
    std::vector<OptionDef> known(kAcquireOptions.begin() + 1, kAcquireOptions.end());
    AcquireRequest r = readAcquire(parseArgs(args, known), false, usage);
    const int32_t handle =
            PymEventAcquireOneWay(r.cmdid, r.pkg, r.identity, r.duration, r.resources);
    if (handle == -1) throw CommandFailed("the request could not be sent");
    reportHandle(ctx, r, handle, "sent one-way");
    return 0;
}

int runRelease(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {{"--wrapper", false}});
    expectPositionals(a, 1, 1, "release HANDLE [--wrapper]");
    const int32_t handle = parseInt32(a.positionals[0], "handle");
    if (a.has("--wrapper")) {
        PymReleaseWapper(handle);
    } else {
        PymRelease(handle);
    }
    ctx.out.set("handle", handle);
    ctx.out.say("release of handle " + std::to_string(handle) +
                " sent (the Event API reports no outcome)");
    return 0;
}

int requireResult(Context& ctx, const std::string& what, int32_t result) {
    ctx.out.set("result", result);
    if (result == -1) throw CommandFailed(what + " failed: the service refused or is unreachable");
    ctx.out.say(what + ": result " + std::to_string(result));
    return 0;
}

int runInit(const std::vector<std::string>& args, Context& ctx) {
    expectPositionals(parseArgs(args, {}), 0, 0, "init");
    const int32_t r = pymInit();
    ctx.out.set("result", r);
    if (r == -1) throw CommandFailed("pymInit: no connection to the service");
    if (r == -2) throw CommandFailed("pymInit: the service call failed");
    ctx.out.say("init: ok");
    return 0;
}

int runNotify(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 2, SIZE_MAX, "notify ID_LOW ID_HIGH [VALUE...]");
    const int32_t low = parseInt32(a.positionals[0], "id low word");
    const int32_t high = parseInt32(a.positionals[1], "id high word");
    std::vector<int32_t> values;
    for (size_t i = 2; i < a.positionals.size(); ++i) {
        values.push_back(parseInt32(a.positionals[i], "value"));
    }
    ctx.out.set("values", values);
    return requireResult(ctx, "notify", PymNotify(low, high, values));
}

int runSysInfo(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 2, 2, "sysinfo INFO VALUE");
    return requireResult(ctx, "sysinfo",
                         setRelatedSysInfo(parseInt32(a.positionals[0], "info"),
                                           parseInt32(a.positionals[1], "value")));
}

int runRule(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 2, SIZE_MAX, "rule RULE STATUS [ID=VALUE...]");
    const int32_t rule = parseInt32(a.positionals[0], "rule id");
    const int32_t status = parseInt32(a.positionals[1], "status");
    auto resources = parseResourcePairs({a.positionals.begin() + 2, a.positionals.end()});
    ctx.out.set("rule", rule);
    ctx.out.set("status", status);
    return requireResult(ctx, "rule " + std::to_string(rule) + " status " + std::to_string(status),
                         pymRuleCtl(rule, status, resources));
}

int runState(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 1, SIZE_MAX, "state ID...");
    std::vector<PymClient::Resource> resources;
    for (const auto& w : a.positionals) resources.push_back({parseResourceId(w), std::nullopt});
    const int32_t filled = PymMutiResStateRequest(resources);
    if (filled == -1) {
        throw CommandFailed(
                "no values: the service knows none of these resources or is "
                "unreachable");
    }
    ctx.out.set("resources", resourcesJson(ctx.session, resources));
    std::string missing;
    for (const auto& r : resources) {
        if (r.value) {
            ctx.out.say(ctx.session.label(r.id) + " = " + *r.value);
        } else {
            ctx.out.say(ctx.session.label(r.id) + " (no value)");
            missing += (missing.empty() ? "" : ", ") + hexId(r.id);
        }
    }
    if (!missing.empty()) throw CommandFailed("no value for " + missing);
    return 0;
}

int runPowerConsistency(const std::vector<std::string>& args, Context& ctx) {
    expectPositionals(parseArgs(args, {}), 0, 0, "power-consistency");
    int32_t v = -1;
    try {
        v = PymGetPowerConsis();
    } catch (const std::exception& e) {
        throw CommandFailed(std::string("the service's answer is not a number (") + e.what() + ")");
    }
    return requireResult(ctx, "power consistency", v);
}

int runHistory(const std::vector<std::string>& args, Context& ctx) {
    expectPositionals(parseArgs(args, {}), 0, 0, "history");
    std::string text;
    if (PymGetHistory(text) != 0) {
        throw CommandFailed("no history: the service has no records or is unreachable");
    }
    ctx.out.set("text", text);
    std::string body = text;
    if (body.rfind("start:", 0) == 0) body = body.substr(6);
    if (body.size() >= 4 && body.compare(body.size() - 4, 4, ";end") == 0) {
        body.resize(body.size() - 4);
    }
    nlohmann::json records = nlohmann::json::array();
    size_t pos = 0;
    while (pos <= body.size()) {
        const size_t semi = body.find(';', pos);
        const std::string rec = body.substr(pos, semi == std::string::npos ? semi : semi - pos);
        records.push_back(rec);
        ctx.out.say(rec);
        if (semi == std::string::npos) break;
        pos = semi + 1;
    }
    ctx.out.set("records", records);
    return 0;
}

int runPmStatus(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 1, 1, "pm-status MODE");
    const int32_t mode = parseInt32(a.positionals[0], "mode");
    ctx.out.set("mode", mode);
    const int32_t status = PymGetPMStatus(mode);
    ctx.out.set("status", status);
    if (status == -1) throw CommandFailed("no status for power mode " + std::to_string(mode));
    ctx.out.say("power mode " + std::to_string(mode) + ": status " + std::to_string(status));
    return 0;
}

int runFeature(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 1, 1, "feature N");
    const int32_t feature = parseInt32(a.positionals[0], "feature");
    ctx.out.set("feature", feature);
    int32_t status = -1;
    try {
        status = PymGetFeatureStatus(feature);
    } catch (const std::exception& e) {
        throw CommandFailed(std::string("the service's answer is not a number (") + e.what() + ")");
    }
    ctx.out.set("status", status);
    if (status == -1) throw CommandFailed("no status for feature " + std::to_string(feature));
    ctx.out.say("feature " + std::to_string(feature) + ": status " + std::to_string(status));
    return 0;
}

int runDataset(const std::vector<std::string>& args, Context& ctx) {
    expectPositionals(parseArgs(args, {}), 0, 0, "dataset");
    std::vector<PymClient::Resource> data;
    int32_t n = -1;
    try {
        n = Pym_fetch_dataset(data);
    } catch (const std::exception& e) {
        throw CommandFailed(std::string("an entry of the data set has no value (") + e.what() +
                            ")");
    }
    if (n == -1) throw CommandFailed("no data set: the service sent none or is unreachable");
    nlohmann::json arr = nlohmann::json::array();
    for (const auto& r : data) {
        arr.push_back({{"id", r.id}, {"value", r.value.value_or("")}});
        ctx.out.say(std::to_string(r.id) + " " + r.value.value_or(""));
    }
    ctx.out.set("dataset", arr);
    return 0;
}

}  // namespace

std::vector<Command> eventCommands() {
    return {
            {"init", "init", "ask the service to initialise (pymInit)", "", runInit},
            {"acquire", "acquire CMDID [ID=VALUE...] [options] | acquire --action NAME [options]",
             "acquire resources for an event, by id or by action name", kAcquireDetails,
             runAcquire},
            {"oneway", "oneway CMDID [ID=VALUE...] [options]",
             "acquire without waiting for the service; the handle is drawn locally",
             "  Options as for acquire, without --action.\n", runOneWay},
            {"release", "release HANDLE [--wrapper]", "end a request by its handle",
             "  --wrapper  go through the Action wrapper's release\n", runRelease},
            {"notify", "notify ID_LOW ID_HIGH [VALUE...]",
             "send a notification: a 64-bit id in two words and integer values", "", runNotify},
            {"sysinfo", "sysinfo INFO VALUE", "hand the service a system-information pair", "",
             runSysInfo},
            {"rule", "rule RULE STATUS [ID=VALUE...]", "set a rule's status (0 switches it off)",
             "", runRule},
            {"state", "state ID...", "read current resource values", "", runState},
            {"power-consistency", "power-consistency", "read the power-consistency figure", "",
             runPowerConsistency},
            {"history", "history", "read the service's request history", "", runHistory},
            {"pm-status", "pm-status MODE", "read the status of a power mode", "", runPmStatus},
            {"feature", "feature N", "read the status of a feature", "", runFeature},
            {"dataset", "dataset", "read the service's data set", "", runDataset},
    };
}

}  // namespace pymctl
