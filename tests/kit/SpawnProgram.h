#pragma once

#include <spawn.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vexal::testing {

// Cross-built tests run under the emulator named in VEXAL_TEST_EMULATOR, and so must every
// program they start: argv with that command in front (found on PATH).
inline std::vector<std::string> withEmulator(std::vector<std::string> argv) {
    if (const char* emulator = std::getenv("VEXAL_TEST_EMULATOR"); emulator != nullptr) {
        std::istringstream words(emulator);
        std::vector<std::string> prefix;
        for (std::string word; words >> word;) prefix.push_back(word);
        argv.insert(argv.begin(), prefix.begin(), prefix.end());
    }
    return argv;
}

// posix_spawnp for programs the build made, under the emulator when there is one.
inline int spawnProgram(pid_t* pid, std::vector<std::string> argv,
                        const posix_spawn_file_actions_t* actions, char* const* envp) {
    argv = withEmulator(std::move(argv));
    std::vector<char*> args;
    for (auto& arg : argv) args.push_back(arg.data());
    args.push_back(nullptr);
    return posix_spawnp(pid, args[0], actions, nullptr, args.data(), envp);
}

}  // namespace vexal::testing
