#pragma once

#include <android/binder_parcel.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace binder_impl {
class RemoteObject;
}

struct AParcel {
    std::vector<uint8_t> data;
    // Reads happen through const parcels, as in the NDK.
    mutable size_t position = 0;
    // Keeps every object written here reachable while the parcel is in flight.
    std::vector<std::shared_ptr<binder_impl::RemoteObject>> objects;
    // Objects that came from another process, under the ids its sender wrote into the bytes.
    std::vector<std::pair<uint64_t, std::shared_ptr<binder_impl::RemoteObject>>> peerObjects;
    // Ids in a peer's bytes mean nothing here: only peerObjects may resolve them.
    bool fromPeer = false;
};

namespace binder_impl {

// A fresh parcel positioned at 0 holding the same bytes and objects.
std::unique_ptr<AParcel> copyParcel(const AParcel& source);

// UTF-8 in/out string helpers shared with the transaction code (interface tokens).
binder_status_t writeUtf8AsString16(AParcel* parcel, const char* utf8, size_t length);
// Reads a non-null string; null reads as STATUS_UNEXPECTED_NULL.
binder_status_t readString16AsUtf8(const AParcel* parcel, std::string* out);
// Reads the interface token; true if it names descriptor. The position moves only on a match.
bool readInterfaceToken(const AParcel* parcel, const std::string& descriptor);

}  // namespace binder_impl
