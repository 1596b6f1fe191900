#pragma once

// The subcommands: what each is called, how it is used, and the function that runs it.

#include "Output.h"
#include "Session.h"
#include "Watchdog.h"

#include <functional>
#include <string>
#include <vector>

namespace pymctl {

struct Context {
    Output& out;
    Session& session;
    Watchdog& watchdog;
};

struct Command {
    std::string name;
    std::string usage;    // one line, without the tool's name
    std::string summary;  // one line
    std::string details;  // options and notes, may be empty
    // Returns the exit status; throws UsageError or CommandFailed.
    std::function<int(const std::vector<std::string>& args, Context& ctx)> run;
    bool needsService = true;
};

std::vector<Command> eventCommands();
std::vector<Command> wrapperCommands();
std::vector<Command> clientCommands();
std::vector<Command> listenCommands();
std::vector<Command> timelineCommands();
Command demoCommand();

const std::vector<Command>& allCommands();
const Command* findCommand(const std::string& name);
std::string toolHelp();
std::string commandHelp(const Command& command);

}  // namespace pymctl
