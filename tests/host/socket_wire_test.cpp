// The socket transport's wire: bad frames, the HELLO, channels joining a connection, and the
// service's binder thread limit.
#include <future>
#include <thread>

#include "socket_test_support.h"

namespace {

using namespace socket_test;
using binder_impl::kHello, binder_impl::kJoin, binder_impl::kJoined, binder_impl::kRelease,
        binder_impl::kReply, binder_impl::kTransact;

struct Hello {
    uint64_t ref = 0;
    std::string descriptor;
    uint64_t key = 0;
};

bool sendBytes(int fd, const std::vector<uint8_t>& bytes) {
    return sendExact(fd, bytes.data(), bytes.size());
}

// A connection to path that read the HELLO the service greets every socket with, or -1.
int greeted(const std::string& path, Hello* hello = nullptr) {
    const int fd = connectUnix(path);
    uint32_t type = 0;
    std::vector<uint8_t> body;
    uint32_t length = 0;
    if (fd >= 0 && readRawFrame(fd, &type, &body) && type == kHello && body.size() >= 12) {
        memcpy(&length, body.data() + 8, 4);
        if (body.size() == 12 + length + 8) {
            if (hello != nullptr) {
                memcpy(&hello->ref, body.data(), 8);
                hello->descriptor.assign(reinterpret_cast<const char*>(body.data() + 12), length);
                memcpy(&hello->key, body.data() + 12 + length, 8);
            }
            return fd;
        }
    }
    if (fd >= 0) close(fd);
    return -1;
}

// A greeted connection that asked to join the connection key names, or -1.
int sendJoin(const std::string& path, uint64_t key) {
    const int fd = greeted(path);
    std::vector<uint8_t> body(8);
    memcpy(body.data(), &key, 8);
    if (fd >= 0 && sendBytes(fd, rawFrame(kJoin, body))) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

// A channel the service admitted into the connection key names, or -1.
int joined(const std::string& path, uint64_t key) {
    const int fd = sendJoin(path, key);
    uint32_t type = 0;
    std::vector<uint8_t> body;
    if (fd >= 0 && readRawFrame(fd, &type, &body) && type == kJoined && body.empty()) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

TEST_F(SocketTest, BadFramesCloseOnlyTheirConnection) {
    ndk::SpAIBinder echo = startEcho();
    ASSERT_NE(nullptr, echo.get());
    for (const auto& bytes : {
                 rawFrame(kTransact, {}, 0xffffffffu),             // beyond the size cap
                 rawFrame(0xdead, std::vector<uint8_t>(8)),        // unknown frame type
                 rawFrame(kTransact, std::vector<uint8_t>(20)),    // transaction cut short
                 rawFrame(kRelease, std::vector<uint8_t>(12, 7)),  // release of nothing we hold
         }) {
        const int fd = connectUnix(socketFile());
        ASSERT_GE(fd, 0);
        ASSERT_TRUE(sendBytes(fd, bytes));
        EXPECT_TRUE(closedByPeer(fd)) << hex(bytes);
        close(fd);
    }
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "unharmed", &reply));
    EXPECT_EQ("unharmed", reply);
}

TEST_F(SocketTest, ChannelsJoinOnlyAConnectionOfTheSameProcess) {
    ndk::SpAIBinder echo = startEcho();
    ASSERT_NE(nullptr, echo.get());
    Hello hello;
    const int owner = greeted(socketFile(), &hello);
    ASSERT_GE(owner, 0);
    EXPECT_EQ("test.vexal.IEcho", hello.descriptor);
    ASSERT_NE(0u, hello.key);

    // Another process that learned the key still cannot join.
    ChildProcess stranger({SOCKET_ECHO_SERVICE, "--join", socketFile(), std::to_string(hello.key)});
    EXPECT_EQ(0, stranger.waitForExit()) << "1: a foreign JOIN was accepted, 2: it could not ask";
    // Nor can a key nobody was given.
    const int guesser = sendJoin(socketFile(), hello.key ^ 1);
    ASSERT_GE(guesser, 0);
    EXPECT_TRUE(closedByPeer(guesser));
    close(guesser);

    // The same process joins; the channel answers a call with the frames sent before it.
    const int channel = joined(socketFile(), hello.key);
    ASSERT_GE(channel, 0);
    // transaction 7 to the service with an empty parcel: no interface token
    std::vector<uint8_t> transact(8 + 8 + 4 + 4 + 4 + 4);
    const uint64_t transaction = 7;
    const uint32_t code = 0x00abcdef;
    memcpy(transact.data(), &transaction, 8);
    memcpy(transact.data() + 8, &hello.ref, 8);
    memcpy(transact.data() + 16, &code, 4);
    ASSERT_TRUE(sendBytes(channel, rawFrame(kTransact, transact)));
    uint32_t type = 0;
    std::vector<uint8_t> body;
    ASSERT_TRUE(readRawFrame(channel, &type, &body));
    EXPECT_EQ(kReply, type);
    // The transaction, 1 frame before (only the HELLO went out on the owner's socket),
    // STATUS_BAD_TYPE, no objects and an empty parcel.
    EXPECT_EQ("07000000 00000000 01000000 00000000 01000080 00000000 00000000", hex(body));

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
    ndk::SpAIBinder echo = startEcho(kName, {"--pool-on-sigusr1"});
    ASSERT_NE(nullptr, echo.get());
    auto answer = std::async(std::launch::async, [&echo] {
        std::optional<std::string> reply;
        const binder_status_t status = callEcho(echo.get(), "held", &reply);
        return status == STATUS_OK ? reply.value_or("<null>") : "status " + std::to_string(status);
    });
    const bool reached = children_.back()->waitForOutput("queued");
    const bool answeredEarly = answer.wait_for(0s) != std::future_status::timeout;
    // Before any assertion: the caller's thread must not be left waiting.
    ASSERT_EQ(0, kill(children_.back()->pid(), SIGUSR1));
    EXPECT_TRUE(reached) << "the call never reached the service";
    EXPECT_FALSE(answeredEarly) << "answered by a thread the service never gave binder";
    EXPECT_EQ("held", answer.get());
}

// Every channel costs the service a thread: no more join than its binder threads may number
// (the pool's first thread, the joined main thread and 15 started on demand by default), and a
// channel that closes makes room again.
TEST_F(SocketTest, ChannelsStayWithinTheServicesThreadLimit) {
    ndk::SpAIBinder echo = startEcho();
    ASSERT_NE(nullptr, echo.get());
    Hello hello;
    const int owner = greeted(socketFile(), &hello);
    ASSERT_GE(owner, 0);
    // Nothing has called the service yet, so no channel of the proxy holds a thread.
    std::vector<int> channels;
    for (int fd = 0; channels.size() < 40 && (fd = joined(socketFile(), hello.key)) >= 0;) {
        channels.push_back(fd);
    }
    EXPECT_EQ(17u, channels.size());
    // A refused channel leaves the caller on the shared stream, not without an answer.
    std::optional<std::string> reply;
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "while full", &reply));
    EXPECT_EQ("while full", reply);

    close(channels.back());
    channels.back() = -1;
    const auto deadline = Clock::now() + 5s;
    while (channels.back() < 0 && Clock::now() < deadline) {
        channels.back() = joined(socketFile(), hello.key);
        if (channels.back() < 0) std::this_thread::sleep_for(10ms);  // not yet: try again soon
    }
    EXPECT_GE(channels.back(), 0) << "a closed channel did not give its thread back";
    for (int fd : channels) close(fd);
    close(owner);
    ASSERT_EQ(STATUS_OK, callEcho(echo.get(), "after", &reply));
    EXPECT_EQ("after", reply);
}

}  // namespace
