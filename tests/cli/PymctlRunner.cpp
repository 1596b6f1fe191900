#include "PymctlRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

#include "../kit/SpawnProgram.h"

namespace pymctl_test {

Outcome runPymctl(const std::vector<std::string>& args, int timeoutMs) {
    int outPipe[2];
    int errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    std::vector<std::string> argv{PYMCTL_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    pid_t pid = -1;
    const int spawned = vexal::testing::spawnProgram(&pid, argv, &actions, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    close(errPipe[1]);
    if (spawned != 0) throw std::runtime_error("cannot start pymctl");

    Outcome run;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* sinks[2] = {&run.out, &run.err};
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || poll(fds, 2, static_cast<int>(left.count())) < 0) {
            kill(pid, SIGKILL);
            run.err += "\n(killed after the time limit)";
            break;
        }
        for (int i = 0; i < 2; ++i) {
            char buf[4096];
            const ssize_t n = fds[i].revents != 0 ? read(fds[i].fd, buf, sizeof(buf)) : 1;
            if (n > 0 && fds[i].revents != 0) sinks[i]->append(buf, static_cast<size_t>(n));
            if (n <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;  // poll skips it from now on
            }
        }
    }
    for (auto& f : fds) {
        if (f.fd >= 0) close(f.fd);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) run.exitCode = WEXITSTATUS(status);
    return run;
}

}  // namespace pymctl_test
