#pragma once

// Runs the built pymctl as a child process and keeps what it printed and how it ended.

#include <string>
#include <vector>

namespace pymctl_test {

struct Outcome {
    std::string out;
    std::string err;
    int exitCode = -1;  // -1 when it ended by a signal or was killed
};

// args exclude the program name; the child is killed after timeoutMs.
Outcome runPymctl(const std::vector<std::string>& args, int timeoutMs = 20000);

}  // namespace pymctl_test
