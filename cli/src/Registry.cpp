#include "Registry.h"

#include <algorithm>

namespace pymctl {

const std::vector<Command>& allCommands() {
    static const std::vector<Command> commands = [] {
        std::vector<Command> all;
        for (auto family :
             {eventCommands, wrapperCommands, clientCommands, listenCommands, timelineCommands}) {
            for (auto& c : family()) all.push_back(std::move(c));
        }
        all.push_back(demoCommand());
        return all;
    }();
    return commands;
}

const Command* findCommand(const std::string& name) {
    for (const auto& c : allCommands()) {
        if (c.name == name) return &c;
    }
    return nullptr;
}

std::string toolHelp() {
    std::string s =
            "usage: pymctl [--service embedded | --dir DIR] [--config FILE] [--json] [--verbose]\n"
            "              SUBCOMMAND [ARGS]\n"
            "\n"
            "Talks to the resource-control service through the client library's three doors:\n"
            "the Event API, the Action wrapper and the client class.\n"
            "\n"
            "  --service embedded  start the reference service in this process (default)\n"
            "  --dir DIR           use a running troxd through the host directory DIR\n"
            "  --config FILE       configuration of the embedded service (default: shipped one)\n"
            "  --json              one JSON document on standard output, for scripts\n"
            "  --verbose           show the library's and the service's log on standard error\n"
            "\n"
            "Subcommands:\n";
    // The summary column starts two blanks after the longest name, so no name is ever cut.
    size_t widest = 0;
    for (const auto& c : allCommands()) widest = std::max(widest, c.name.size());
    for (const auto& c : allCommands()) {
        s += "  " + c.name + std::string(widest - c.name.size() + 2, ' ') + c.summary + "\n";
    }
    s += "\n'pymctl SUBCOMMAND --help' describes one subcommand. Resource ids are decimal or 0x\n"
         "hexadecimal; exit status 0 on success, 1 when the service refused or failed, 2 for bad\n"
         "input.\n";
    return s;
}

std::string commandHelp(const Command& command) {
    std::string s = "usage: pymctl " + command.usage + "\n\n" + command.summary + "\n";
    if (!command.details.empty()) s += "\n" + command.details;
    if (s.back() != '\n') s += "\n";
    return s;
}

}  // namespace pymctl
