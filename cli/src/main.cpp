// pymctl: parses the global options, starts the chosen service and runs the subcommands.
// Several subcommands may share one service, separated by a lone "+".
#include "Args.h"
#include "LogSink.h"
#include "Output.h"
#include "Registry.h"
#include "Session.h"
#include "Watchdog.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

using namespace pymctl;

namespace {

constexpr std::chrono::milliseconds kServiceLimit(10000);

struct Invocation {
    const Command* command = nullptr;
    std::vector<std::string> args;
};

struct Globals {
    SessionOptions session;
    bool json = false;
    bool verbose = false;
    bool help = false;
    std::vector<Invocation> invocations;
};

bool isHelp(const std::string& w) {
    return w == "--help" || w == "-h";
}

Globals parseCommandLine(const std::vector<std::string>& words) {
    Globals g;
    size_t i = 0;
    bool serviceGiven = false;
    auto value = [&](const std::string& option) {
        if (i + 1 >= words.size()) throw UsageError("option " + option + " needs a value");
        return words[++i];
    };
    for (; i < words.size() && !words[i].empty() && words[i][0] == '-'; ++i) {
        const std::string& w = words[i];
        if (isHelp(w)) {
            g.help = true;
        } else if (w == "--json") {
            g.json = true;
        } else if (w == "--verbose" || w == "-v") {
            g.verbose = true;
        } else if (w == "--service") {
            const std::string v = value(w);
            if (v != "embedded") throw UsageError("--service takes 'embedded' (or use --dir DIR)");
            if (serviceGiven && !g.session.embedded)
                throw UsageError("--service and --dir exclude each other");
            serviceGiven = true;
        } else if (w == "--dir") {
            if (serviceGiven && g.session.embedded)
                throw UsageError("--service and --dir exclude each other");
            g.session.embedded = false;
            g.session.dir = value(w);
            if (g.session.dir.empty()) throw UsageError("--dir needs a directory");
            serviceGiven = true;
        } else if (w == "--config") {
            g.session.configPath = value(w);
        } else {
            throw UsageError("unknown option " + w + " (see pymctl --help)");
        }
    }
    if (!g.session.embedded && !g.session.configPath.empty()) {
        throw UsageError("--config applies to the embedded service only");
    }
    if (g.help) return g;
    if (i == words.size()) throw UsageError("missing subcommand (see pymctl --help)");
    Invocation current;
    for (; i <= words.size(); ++i) {
        if (i == words.size() || words[i] == "+") {
            if (current.args.empty()) throw UsageError("missing subcommand after '+'");
            const std::string name = current.args.front();
            current.command = findCommand(name);
            if (current.command == nullptr) {
                throw UsageError("unknown subcommand '" + name + "' (see pymctl --help)");
            }
            current.args.erase(current.args.begin());
            for (const auto& a : current.args) {
                if (a == "--") break;
                if (a == "--json" || a == "--verbose" || a == "--dir" || a == "--service" ||
                    a == "--config") {
                    throw UsageError("global option " + a + " goes before the subcommand");
                }
            }
            g.invocations.push_back(std::move(current));
            current = Invocation{};
        } else {
            current.args.push_back(words[i]);
        }
    }
    return g;
}

bool wantsHelp(const Invocation& inv) {
    for (const auto& a : inv.args) {
        if (a == "--") return false;
        if (isHelp(a)) return true;
    }
    return false;
}

void printJson(const std::vector<nlohmann::json>& docs) {
    const nlohmann::json all = docs.size() == 1 ? docs.front() : nlohmann::json(docs);
    std::puts(all.dump(2).c_str());
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    Globals g;
    try {
        g = parseCommandLine(words);
    } catch (const UsageError& e) {
        std::fprintf(stderr, "pymctl: %s\n", e.what());
        return 2;
    }
    if (g.help) {
        std::fputs(toolHelp().c_str(), stdout);
        return 0;
    }
    for (const auto& inv : g.invocations) {
        if (wantsHelp(inv)) {
            std::fputs(commandHelp(*inv.command).c_str(), stdout);
            return 0;
        }
    }
    installLogSink(g.verbose);

    Session session(g.session);
    std::vector<nlohmann::json> docs;
    int status = 0;
    std::string current = "pymctl";
    try {
        bool needService = false;
        for (const auto& inv : g.invocations)
            needService = needService || inv.command->needsService;
        Watchdog watchdog(kServiceLimit, g.session.embedded ? std::string("pymctl")
                                                            : "pymctl: is troxd running in " +
                                                                      g.session.dir + "?");
        if (needService) session.start();
        for (const auto& inv : g.invocations) {
            current = "pymctl " + inv.command->name;
            Output out(g.json);
            Context ctx{out, session, watchdog};
            try {
                status = inv.command->run(inv.args, ctx);
                docs.push_back(out.finish(status == 0));
            } catch (const CommandFailed& e) {
                docs.push_back(out.finish(false, e.what()));
                throw;
            }
            if (status != 0) break;
        }
    } catch (const UsageError& e) {
        std::fprintf(stderr, "%s: %s\n", current.c_str(), e.what());
        return 2;
    } catch (const CommandFailed& e) {
        if (g.json) printJson(docs);
        std::fprintf(stderr, "%s: %s\n", current.c_str(), e.what());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: unexpected error: %s\n", current.c_str(), e.what());
        return 1;
    }
    if (g.json) printJson(docs);
    return status;
}
