#include "Daemon.h"

#include "trox_sim/FileReplace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <mutex>
#include <sstream>

namespace troxd {

std::string usage() {
    return "usage: troxd [--dir DIR] [--config FILE] [--config-limit BYTES] [--trace FILE]\n"
           "             [--verbose]\n"
           "  --dir DIR              binder host directory (default: $BINDER_HOST_DIR, else " +
           defaultDir() +
           ")\n"
           "  --config FILE          JSON configuration (default: the built-in reference device)\n"
           "  --config-limit BYTES   larger configuration files are refused (default 1048576)\n"
           "  --trace FILE           write the service's timeline there (Trace Event Format) on\n"
           "                         SIGUSR1 and when it stops\n"
           "  --verbose              log debug lines too\n"
           "Runs the reference trox service until SIGTERM or SIGINT.\n";
}

std::string parseArgs(int argc, char** argv, Options* options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](std::string* out) -> std::string {
            if (i + 1 >= argc || argv[i + 1][0] == '\0') return arg + " needs a value";
            *out = argv[++i];
            return {};
        };
        std::string err;
        if (arg == "--dir") {
            err = value(&options->dir);
        } else if (arg.rfind("--dir=", 0) == 0) {
            options->dir = arg.substr(6);
            if (options->dir.empty()) err = "--dir needs a value";
        } else if (arg == "--config") {
            err = value(&options->configPath);
        } else if (arg.rfind("--config=", 0) == 0) {
            options->configPath = arg.substr(9);
            if (options->configPath.empty()) err = "--config needs a value";
        } else if (arg == "--config-limit" || arg.rfind("--config-limit=", 0) == 0) {
            std::string text;
            if (arg == "--config-limit") {
                err = value(&text);
            } else {
                text = arg.substr(15);
            }
            if (err.empty()) {
                char* end = nullptr;
                errno = 0;
                const unsigned long long n = std::strtoull(text.c_str(), &end, 10);
                if (text.empty() || !isdigit(static_cast<unsigned char>(text[0])) || *end != '\0' ||
                    errno != 0 || n < 1024 || n > (1ull << 28)) {
                    err = "--config-limit takes a number of bytes from 1024 to 268435456";
                } else {
                    options->maxConfigBytes = static_cast<size_t>(n);
                }
            }
        } else if (arg == "--trace") {
            err = value(&options->tracePath);
        } else if (arg.rfind("--trace=", 0) == 0) {
            options->tracePath = arg.substr(8);
            if (options->tracePath.empty()) err = "--trace needs a value";
        } else if (arg == "--verbose" || arg == "-v") {
            options->verbose = true;
        } else if (arg == "--help" || arg == "-h") {
            options->help = true;
        } else {
            err = "unknown argument '" + arg + "'";
        }
        if (!err.empty()) return err;
    }
    return {};
}

std::string defaultDir() {
    return "/tmp/vexal-binder-" + std::to_string(static_cast<unsigned>(getuid()));
}

std::string prepareDir(const std::string& dir) {
    // lstat, as the binder kit does: it refuses a symbolic link, so must we.
    std::string name = dir;
    while (name.size() > 1 && name.back() == '/') name.pop_back();
    struct stat st {};
    if (lstat(name.c_str(), &st) != 0) {
        if (errno != ENOENT) return "cannot use " + dir + ": " + std::strerror(errno);
        if (mkdir(name.c_str(), 0700) != 0 && errno != EEXIST) {
            return "cannot create " + dir + ": " + std::strerror(errno);
        }
        if (lstat(name.c_str(), &st) != 0) {
            return "cannot use " + dir + ": " + std::strerror(errno);
        }
    }
    if (S_ISLNK(st.st_mode)) {
        return "refusing " + dir + ": it is a symbolic link (give the directory it points to)";
    }
    if (!S_ISDIR(st.st_mode)) return dir + " is not a directory";
    if (st.st_uid != geteuid()) return "refusing " + dir + ": it belongs to another user";
    if ((st.st_mode & 077) != 0) {
        char mode[8];
        snprintf(mode, sizeof(mode), "%03o", static_cast<unsigned>(st.st_mode & 0777));
        return "refusing " + dir + ": mode " + mode +
               " gives access to group or others (chmod 700)";
    }
    return {};
}

std::string lockDir(const std::string& dir, int* fd) {
    const std::string path = dir + "/troxd.pid";
    const int lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock < 0) return "cannot open " + path + ": " + std::strerror(errno);
    if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        if (error != EWOULDBLOCK) {
            close(lock);
            return "cannot lock " + path + ": " + std::strerror(error);
        }
        // The holder writes its pid right after it locks; give it a moment to.
        std::string pid;
        for (int i = 0; i < 50 && pid.empty(); ++i) {
            char buf[32] = {};
            const ssize_t n = pread(lock, buf, sizeof(buf) - 1, 0);
            if (n > 0 && buf[n - 1] == '\n') pid.assign(buf, static_cast<size_t>(n - 1));
            if (pid.empty()) usleep(10000);
        }
        close(lock);
        return "another troxd (pid " + (pid.empty() ? std::string("unknown") : pid) +
               ") already serves " + dir;
    }
    const std::string text = std::to_string(getpid()) + "\n";
    if (ftruncate(lock, 0) != 0 ||
        pwrite(lock, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        const std::string why = std::strerror(errno);
        close(lock);
        return "cannot write " + path + ": " + why;
    }
    *fd = lock;
    return {};
}

std::string checkSocketPath(const std::string& dir, const std::string& instance) {
    // Same naming as the binder kit: characters other than [A-Za-z0-9._-] become %xx.
    size_t name = 0;
    for (unsigned char c : instance) name += isalnum(c) || c == '.' || c == '-' || c == '_' ? 1 : 3;
    const size_t length = dir.size() + 1 + name + sizeof(".sock") - 1;
    if (length >= sizeof(sockaddr_un::sun_path)) {
        return "cannot use " + dir + ": the socket path would be " + std::to_string(length) +
               " characters, the limit is " + std::to_string(sizeof(sockaddr_un::sun_path) - 1);
    }
    return {};
}

std::string ensureManifest(const std::string& dir, const std::string& instance) {
    const std::string path = dir + "/manifest";
    std::string existing;
    {
        std::ifstream in(path);
        if (in) {
            std::ostringstream s;
            s << in.rdbuf();
            existing = s.str();
        }
    }
    std::istringstream lines(existing);
    for (std::string line; std::getline(lines, line);) {
        const size_t b = line.find_first_not_of(" \t\r");
        const size_t e = line.find_last_not_of(" \t\r");
        if (b != std::string::npos && line.substr(b, e - b + 1) == instance) return {};
    }
    if (!existing.empty() && existing.back() != '\n') existing += '\n';
    existing += instance + "\n";
    return sim::replaceFile(path, existing, 0600);
}

std::string formatLogLine(long long wallMs, int pid, int tid, int priority, const char* tag,
                          const char* message) {
    static const char kLetters[] = "??VDIWEFS";
    const char letter = priority >= 0 && priority <= 8 ? kLetters[priority] : '?';
    const std::time_t secs = static_cast<std::time_t>(wallMs / 1000);
    std::tm tm{};
    localtime_r(&secs, &tm);
    char head[64];
    snprintf(head, sizeof(head), "%02d-%02d %02d:%02d:%02d.%03d %5d %5d %c ", tm.tm_mon + 1,
             tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(wallMs % 1000), pid,
             tid, letter);
    return std::string(head) + (tag ? tag : "") + ": " + (message ? message : "") + "\n";
}

void stderrLogger(const __android_logger_data* data, const char* message) {
    static std::mutex mutex;
    using namespace std::chrono;
    const long long now =
            duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    const std::string line =
            formatLogLine(now, static_cast<int>(getpid()), static_cast<int>(syscall(SYS_gettid)),
                          data->priority, data->tag, message);
    std::lock_guard<std::mutex> lock(mutex);
    // One write per line keeps lines whole when several threads log.
    ssize_t ignored = write(STDERR_FILENO, line.data(), line.size());
    (void)ignored;
}

}  // namespace troxd
