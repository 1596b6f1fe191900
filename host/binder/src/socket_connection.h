#pragma once

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "parcel_internal.h"
#include "process.h"
#include "socket_channel.h"
#include "socket_frames.h"
#include "socket_object.h"
#include "transport.h"

namespace binder_impl {

// One socket to a peer process (client or service side) and the objects reached through it,
// with the channels that joined it.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(int fd, std::string label);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool readPeerCredentials();
    // Server side: the service is the first object the client gets.
    bool sendHello(const std::shared_ptr<RemoteObject>& service);
    // Client side, before the reader starts. Channels are used only with a path to open them.
    bool receiveHello(const std::string& path);
    // Server side, before start(): the limits of socketLimits() apply to this peer.
    void markAccepted() { accepted_ = true; }
    // slot lives as long as the reader thread. False if no thread could be made; the caller
    // closes the connection.
    bool start(std::shared_ptr<void> slot = nullptr);

    bool alive() const;
    std::shared_ptr<RemoteObject> root() const;
    // A closed connection is a death for everything reached through it.
    void close(bool notify);

    binder_status_t call(uint64_t ref, transaction_code_t code, const AParcel& request,
                         binder_flags_t flags, AParcel* reply);
    // The last reference to object went away: hand the peer its references back.
    void released(SocketObject* object);

  private:
    // One of our objects as the peer can reach it; count is how many references it holds.
    struct Export {
        Export(std::shared_ptr<RemoteObject> o, std::shared_ptr<AIBinder> l)
            : object(std::move(o)), local(std::move(l)) {}
        const std::shared_ptr<RemoteObject> object;
        const std::shared_ptr<AIBinder> local;
        uint64_t count = 0;
        const std::shared_ptr<SerialQueue> oneway = std::make_shared<SerialQueue>();
    };

    struct Waiter {
        std::condition_variable cv;
        bool done = false;
        binder_status_t status = STATUS_OK;
        AParcel reply;
    };

    struct Incoming {
        uint64_t transaction = 0;
        uint64_t ref = 0;
        uint32_t code = 0;
        uint32_t flags = 0;
        std::shared_ptr<AParcel> request = std::make_shared<AParcel>();
    };

    // A call of this peer waiting for a binder thread or being served.
    class QueuedCall;

    // The connection's life and its object table (socket_connection.cpp).
    static void handOver(AParcel* from, AParcel* reply);
    void waitForCloseLocked(std::unique_lock<std::mutex>& lock);
    std::shared_ptr<Export> findExport(uint64_t ref);
    std::shared_ptr<SocketObject> importLocked(uint64_t ref, std::string descriptor);
    binder_status_t encodeObjects(const AParcel& parcel, FrameWriter* frame);
    bool decodeObjects(FrameReader* reader, AParcel* out);
    bool sendFrame(const std::vector<uint8_t>& frame);
    void logStalledPeer();

    // Calls over the shared stream and the thread that reads it (socket_calls.cpp).
    binder_status_t encodeTransact(uint64_t transaction, uint64_t ref, transaction_code_t code,
                                   binder_flags_t flags, const AParcel& request,
                                   FrameWriter* frame);
    bool readTransact(FrameReader* reader, Incoming* call);
    bool readReply(FrameReader* reader, binder_status_t* status, AParcel* reply);
    bool helloTaken();
    void readLoop();
    bool handleFrame(uint32_t type, FrameReader* reader);
    std::optional<QueuedCall> admitCall(size_t bytes);
    bool handleTransact(FrameReader* reader);
    binder_status_t serve(const Export* target, transaction_code_t code, const AParcel& request,
                          AParcel* reply);
    binder_status_t sendReply(uint64_t transaction, binder_status_t status, const AParcel& reply,
                              int channelFd = -1);
    bool handleReply(FrameReader* reader);
    bool handleRelease(FrameReader* reader);

    // Channels (socket_channel.cpp).
    bool becomeChannel(FrameReader* reader);
    std::shared_ptr<Channel> takeChannel();
    void giveBackChannel(std::shared_ptr<Channel> channel, binder_status_t status);
    binder_status_t callOnChannel(const Channel& channel, uint64_t ref, transaction_code_t code,
                                  const AParcel& request, binder_flags_t flags, AParcel* reply);
    bool admitChannel(const std::shared_ptr<Channel>& channel);
    void dropChannel(const std::shared_ptr<Channel>& channel);
    void serveChannel(const std::shared_ptr<Channel>& channel);
    bool handsBackPeerObjects(const AParcel& reply) const;
    bool serveChannelCall(int fd, FrameReader* reader, AParcel* sent);

    // Handed over to a channel when this socket turns out to be one.
    std::atomic<int> fd_;
    // Server side (see markAccepted); set before the reader starts.
    bool accepted_ = false;
    std::atomic<size_t> queuedCalls_{0};
    std::atomic<size_t> queuedBytes_{0};
    // Dropped for exceeding a limit: what it queued is not served.
    std::atomic<bool> dropped_{false};
    const std::string label_;
    pid_t peerPid_ = 0;
    uid_t peerUid_ = 0;
    mutable std::mutex mutex_;
    bool closed_ = false;
    bool closeFinished_ = false;
    std::thread::id closer_;
    std::condition_variable closeDone_;
    std::map<uint64_t, std::shared_ptr<Export>> exports_;
    std::unordered_map<uint64_t, std::weak_ptr<SocketObject>> imports_;
    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> pending_;
    uint64_t nextTransaction_ = 1;
    // The service a client connected for; kept for the connection's life.
    std::shared_ptr<SocketObject> root_;
    // Names this connection to its channels (0: none). Set once, before the reader starts.
    uint64_t key_ = 0;
    // Client side: where to open channels, and how many to open at most.
    std::string path_;
    size_t channelLimit_ = kMaxChannels;
    // Every open channel (both sides), so that closing reaches callers blocked on one.
    std::set<std::shared_ptr<Channel>> channels_;
    std::vector<std::shared_ptr<Channel>> idleChannels_;
    // Frames sent on and handled from the shared stream (HELLO included), which orders channel
    // replies after them.
    uint64_t framesHandled_ = 0;
    std::condition_variable framesHandledCv_;
    uint64_t framesSent_ = 0;  // guarded by writeMutex_
    std::mutex writeMutex_;
};

}  // namespace binder_impl
