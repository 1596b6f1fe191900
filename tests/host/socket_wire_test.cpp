// The socket transport's wire: bad frames, the HELLO, channels joining a connection, and the
// service's binder thread limit.
#include "socket_test_support.h"

namespace {

using namespace socket_test;
TEST_F(SocketTest, BadFramesCloseOnlyTheirConnection) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    const std::string path = socketFile();

    const std::vector<std::vector<uint8_t>> garbage = {
            rawFrame(kTransact, {}, 0xffffffffu),             // beyond the size cap
            rawFrame(0xdead, std::vector<uint8_t>(8)),        // unknown frame type
            rawFrame(kTransact, std::vector<uint8_t>(20)),    // transaction cut short
            rawFrame(kRelease, std::vector<uint8_t>(12, 7)),  // release of nothing we hold
    };
    for (const auto& bytes : garbage) {
        int fd = connectUnix(path);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(static_cast<ssize_t>(bytes.size()),
                  send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL));
        EXPECT_TRUE(closedByPeer(fd));
        close(fd);
    }
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

struct Hello {
    uint64_t ref = 0;
    std::string descriptor;
    uint64_t key = 0;
};

// Reads the HELLO the service greets every socket with.
std::optional<Hello> readHello(int fd) {
    uint32_t type = 0;
    std::vector<uint8_t> body;
    if (!readRawFrame(fd, &type, &body) || type != kHello || body.size() < 12) return std::nullopt;
    Hello hello;
    uint32_t length = 0;
    memcpy(&hello.ref, body.data(), 8);
    memcpy(&length, body.data() + 8, 4);
    if (body.size() != 12 + length + 8) return std::nullopt;
    hello.descriptor.assign(reinterpret_cast<const char*>(body.data() + 12), length);
    memcpy(&hello.key, body.data() + 12 + length, 8);
    return hello;
}

std::vector<uint8_t> joinFrame(uint64_t key) {
    std::vector<uint8_t> body(8);
    memcpy(body.data(), &key, 8);
    return rawFrame(kJoin, body);
}

bool sendBytes(int fd, const std::vector<uint8_t>& bytes) {
    return sendExact(fd, bytes.data(), bytes.size());
}

TEST_F(SocketTest, ChannelsJoinOnlyAConnectionOfTheSameProcess) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    const std::string path = socketFile();

    const int owner = connectUnix(path);
    ASSERT_GE(owner, 0);
    const std::optional<Hello> hello = readHello(owner);
    ASSERT_TRUE(hello.has_value());
    EXPECT_EQ("test.vexal.IEcho", hello->descriptor);
    ASSERT_NE(0u, hello->key);

    // Another process that learned the key still cannot join.
    pid_t stranger = 0;
    ASSERT_EQ(0,
              vexal::testing::spawnProgram(
                      &stranger, {SOCKET_ECHO_SERVICE, "--join", path, std::to_string(hello->key)},
                      nullptr, environ));
    int status = -1;
    ASSERT_EQ(stranger, waitpid(stranger, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status)) << "1: a foreign JOIN was accepted, 2: it could not ask";

    // A key nobody was given.
    const int guesser = connectUnix(path);
    ASSERT_GE(guesser, 0);
    ASSERT_TRUE(readHello(guesser).has_value());
    ASSERT_TRUE(sendBytes(guesser, joinFrame(hello->key ^ 1)));
    EXPECT_TRUE(closedByPeer(guesser));
    close(guesser);

    // The same process joins; the channel answers a call with the frames sent before it.
    const int channel = connectUnix(path);
    ASSERT_GE(channel, 0);
    ASSERT_TRUE(readHello(channel).has_value());
    ASSERT_TRUE(sendBytes(channel, joinFrame(hello->key)));
    uint32_t type = 0;
    std::vector<uint8_t> body;
    ASSERT_TRUE(readRawFrame(channel, &type, &body));
    EXPECT_EQ(kJoined, type);
    EXPECT_TRUE(body.empty());

    // transaction 7 to the service with an empty parcel: no interface token
    std::vector<uint8_t> transact(8 + 8 + 4 + 4 + 4 + 4);
    const uint64_t transaction = 7;
    const uint32_t code = 0x00abcdef;
    memcpy(transact.data(), &transaction, 8);
    memcpy(transact.data() + 8, &hello->ref, 8);
    memcpy(transact.data() + 16, &code, 4);
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    ASSERT_TRUE(readRawFrame(channel, &type, &body));
    EXPECT_EQ(kReply, type);
    ASSERT_EQ(8u + 8u + 4u + 4u + 4u, body.size());
    uint64_t repliedTo = 0;
    uint64_t framesBefore = 0;
    int32_t replyStatus = 0;
    memcpy(&repliedTo, body.data(), 8);
    memcpy(&framesBefore, body.data() + 8, 8);
    memcpy(&replyStatus, body.data() + 16, 4);
    EXPECT_EQ(transaction, repliedTo);
    EXPECT_EQ(1u, framesBefore) << "only the HELLO went out on the owner's socket";
    EXPECT_EQ(STATUS_BAD_TYPE, replyStatus);

    // One-way calls have no place on a channel: the connection goes, the service stays.
    const uint32_t oneway = FLAG_ONEWAY;
    memcpy(transact.data() + 20, &oneway, 4);
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    EXPECT_TRUE(closedByPeer(channel));
    EXPECT_TRUE(closedByPeer(owner));
    close(channel);
    close(owner);
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

// A service that gave binder no thread answers nothing: the call waits, as the driver holds it,
// until the service starts its pool.
TEST_F(SocketTest, CallsWaitUntilTheServiceGivesBinderAThread) {
    const pid_t service = spawnService(kName, {"--pool-on-sigusr1"});
    ASSERT_GT(service, 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    auto answer = std::async(std::launch::async, [&echo] {
        std::optional<std::string> reply;
        const binder_status_t status = callEcho(echo.get(), "held", &reply);
        return status == STATUS_OK ? reply.value_or("<null>") : "status " + std::to_string(status);
    });
    const std::string queued = dir_ + "/queued";
    const auto deadline = Clock::now() + 10s;
    while (!std::filesystem::exists(queued) && Clock::now() < deadline) {
        std::this_thread::sleep_for(2ms);
    }
    const bool reached = std::filesystem::exists(queued);
    const bool answeredEarly = answer.wait_for(0s) != std::future_status::timeout;
    // Before any assertion: the caller's thread must not be left waiting.
    ASSERT_EQ(0, kill(service, SIGUSR1));
    EXPECT_TRUE(reached) << "the call never reached the service";
    EXPECT_FALSE(answeredEarly) << "answered by a thread the service never gave binder";
    EXPECT_EQ("held", answer.get());
}

// Every channel costs the service a thread: no more join than its binder threads may number
// (the pool's first thread, the joined main thread and 15 started on demand by default), and a
// channel that closes makes room again.
TEST_F(SocketTest, ChannelsStayWithinTheServicesThreadLimit) {
    ASSERT_GT(spawnService(kName), 0);
    ndk::SpAIBinder echo = waitForEcho(kName);
    ASSERT_NE(nullptr, echo.get());
    const std::string path = socketFile();
    const int owner = connectUnix(path);
    ASSERT_GE(owner, 0);
    const std::optional<Hello> hello = readHello(owner);
    ASSERT_TRUE(hello.has_value());

    // Nothing has called the service yet, so no channel of the proxy holds a thread.
    auto join = [&]() -> int {
        const int fd = connectUnix(path);
        uint32_t type = 0;
        std::vector<uint8_t> body;
        if (fd < 0 || !readHello(fd).has_value() || !sendBytes(fd, joinFrame(hello->key)) ||
            !readRawFrame(fd, &type, &body) || type != kJoined) {
            if (fd >= 0) close(fd);
            return -1;
        }
        return fd;
    };
    std::vector<int> joined;
    for (int i = 0; i < 40; ++i) {
        const int fd = join();
        if (fd < 0) break;
        joined.push_back(fd);
    }
    EXPECT_EQ(17u, joined.size());
    EXPECT_EQ(-1, join()) << "a channel beyond the limit was admitted";
    // A refused channel leaves the caller on the shared stream, not without an answer.
    std::optional<std::string> refused;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "while full", &refused));
    EXPECT_EQ("while full", refused);

    close(joined.back());
    joined.pop_back();
    int again = -1;
    const auto deadline = Clock::now() + 5s;
    while (again < 0 && Clock::now() < deadline) {
        again = join();
        if (again < 0) std::this_thread::sleep_for(10ms);
    }
    EXPECT_GE(again, 0) << "a closed channel did not give its thread back";
    if (again >= 0) close(again);
    for (int fd : joined) close(fd);
    close(owner);

    // Calls still work, on a channel or not.
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "after", &reply));
    EXPECT_EQ("after", reply);
}

}  // namespace
