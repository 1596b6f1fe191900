// Subcommands of the Action wrapper door (PymWrapper.h).
#include "Actions.h"
#include "Args.h"
#include "PymWrapper.h"
#include "Registry.h"

namespace pymctl {
namespace {

int runWrapperNotify(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {{"--info"}});
    expectPositionals(a, 4, 4, "wrapper-notify SRC TYPE ARG1 DATA [--info TEXT]");
    const int32_t src = parseInt32(a.positionals[0], "source");
    const int32_t type = parseInt32(a.positionals[1], "type");
    const int32_t arg1 = parseInt32(a.positionals[2], "arg1");
    const std::string& data = a.positionals[3];
    const std::string info = a.get("--info").value_or("pymctl");
    const int32_t r = PymNotifyWapper(info, src, type, arg1, 0, 0, data);
    ctx.out.set("src", src);
    ctx.out.set("type", type);
    ctx.out.set("arg1", arg1);
    ctx.out.set("data", data);
    ctx.out.set("result", r);
    ctx.out.say("notification " + std::to_string(src) + " type " + std::to_string(type) +
                " sent through the wrapper (result " + std::to_string(r) +
                "; the wrapper always answers 0)");
    return 0;
}

int runActions(const std::vector<std::string>& args, Context& ctx) {
    ParsedArgs a = parseArgs(args, {});
    expectPositionals(a, 0, 1, "actions [FILTER]");
    const std::string filter = a.positionals.empty() ? "" : a.positionals[0];
    nlohmann::json arr = nlohmann::json::array();
    for (size_t i = 0; i < gActionList.size(); ++i) {
        const std::string& name = gActionList[i];
        if (!filter.empty() && name.find(filter) == std::string::npos) continue;
        // Repeated rows can never be reached by name; say so rather than list them silently.
        const bool reachable = findAction(name) == static_cast<int32_t>(i);
        arr.push_back({{"id", i}, {"name", name}, {"reachable", reachable}});
        ctx.out.say(std::to_string(i) + "\t" + name +
                    (reachable ? "" : "\t(repeat of an earlier row, not reachable by name)"));
    }
    ctx.out.set("count", arr.size());
    ctx.out.set("actions", arr);
    if (!filter.empty() && arr.empty())
        throw UsageError("no action name contains '" + filter + "'");
    return 0;
}

}  // namespace

std::vector<Command> wrapperCommands() {
    return {
            {"wrapper-notify", "wrapper-notify SRC TYPE ARG1 DATA [--info TEXT]",
             "send a numbered notification through the Action wrapper",
             "  The wrapper turns it into rule control (for example SRC 8 TYPE 1 raises the\n"
             "  scheduler boost rule, SRC 8 TYPE 0 ends it). ARG2 and ARG3 are sent as 0.\n",
             runWrapperNotify},
            {"actions", "actions [FILTER]",
             "list the action catalogue with ids (names containing FILTER)", "", runActions, false},
    };
}

}  // namespace pymctl
