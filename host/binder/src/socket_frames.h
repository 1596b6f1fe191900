#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// Frames on the stream: uint32 body length, uint32 type, then the body, all little-endian.
//   HELLO    (server to client, once): uint64 ref of the service, string descriptor, and
//            optionally uint64 channel key (absent or 0: the server takes no channels)
//   TRANSACT uint64 transaction id (0 for one-way), uint64 target ref, uint32 code,
//            uint32 flags, object table, uint32 size, parcel bytes
//   REPLY    uint64 transaction id, int32 status, object table, uint32 size, parcel bytes
//   RELEASE  uint64 ref, uint32 count: the peer dropped that many references to our export
// Object table: uint32 n, then n times: uint64 id as written in the parcel bytes, uint32 kind,
// uint64 ref, string descriptor. A ref names an export of the side that owns the object: kind
// SENDER means the sender's own object (the receiver makes or reuses a proxy), kind RECEIVER
// means an object the receiver exported earlier (it resolves to the receiver's own object).
// A string is uint32 length and that many bytes.
// JOIN, JOINED, ACK and the form of REPLY on a channel: see socket_channel.h.

namespace binder_impl {

constexpr uint32_t kMaxFrame = 16u << 20;
// Leaves room in a frame for the header fields and the object table.
constexpr size_t kMaxParcelBytes = kMaxFrame - (1u << 20);
constexpr size_t kMaxObjectsPerParcel = 4096;
constexpr size_t kMaxDescriptor = 4096;
constexpr auto kHelloTimeout = std::chrono::seconds(5);

enum FrameType : uint32_t {
    kHello = 1,
    kTransact = 2,
    kReply = 3,
    kRelease = 4,
    kJoin = 5,
    kJoined = 6,
    kAck = 7
};
enum ObjectKind : uint32_t { kSenderObject = 1, kReceiverObject = 2 };

class FrameWriter {
  public:
    explicit FrameWriter(uint32_t type) : bytes_(8) { memcpy(bytes_.data() + 4, &type, 4); }
    void u32(uint32_t v) { raw(&v, sizeof(v)); }
    void i32(int32_t v) { raw(&v, sizeof(v)); }
    void u64(uint64_t v) { raw(&v, sizeof(v)); }
    void str(const std::string& s);
    void raw(const void* data, size_t size);
    size_t bodySize() const { return bytes_.size() - 8; }
    void reserve(size_t bodySize) { bytes_.reserve(8 + bodySize); }
    void truncate(size_t bodySize) { bytes_.resize(8 + bodySize); }
    // The whole frame, its length filled in.
    std::vector<uint8_t>& finish();

  private:
    std::vector<uint8_t> bytes_;
};

// Reads a frame's body; every read is false once the body is too short for it.
class FrameReader {
  public:
    FrameReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool u32(uint32_t* v) { return raw(v, sizeof(*v)); }
    bool i32(int32_t* v) { return raw(v, sizeof(*v)); }
    bool u64(uint64_t* v) { return raw(v, sizeof(*v)); }
    bool str(std::string* s, size_t maxSize);
    bool bytes(std::vector<uint8_t>* out);
    size_t remaining() const { return size_ - offset_; }
    bool atEnd() const { return offset_ == size_; }

  private:
    bool raw(void* out, size_t size);

    const uint8_t* data_;
    size_t size_;
    size_t offset_ = 0;
};

bool writeFull(int fd, const uint8_t* data, size_t size);

enum class ReadResult { kOk, kClosed, kTooLarge, kTimedOut };

// The body is not read (or allocated) when its length is beyond maxLength. With frameTimeout,
// the frame may take that long from its first byte: a peer cannot hold a half-sent frame.
ReadResult readFrame(int fd, uint32_t* type, uint32_t* length, std::vector<uint8_t>* body,
                     const std::chrono::steady_clock::time_point* deadline = nullptr,
                     uint32_t maxLength = kMaxFrame,
                     std::chrono::milliseconds frameTimeout = std::chrono::milliseconds(0));

// After a large frame, a reader does not keep its buffer.
void trimBuffer(std::vector<uint8_t>* body);

// A HELLO within kHelloTimeout; *key is 0 when it names none.
bool readHello(int fd, uint64_t* ref, std::string* descriptor, uint64_t* key);

}  // namespace binder_impl
