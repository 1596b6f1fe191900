// Byte helpers shared by the trox tests.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstdint>
#include <string>
#include <vector>

namespace trox_test {

using Bytes = std::vector<uint8_t>;

inline void put32(Bytes* b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b->push_back(static_cast<uint8_t>(v >> (8 * i)));
}

inline void put64(Bytes* b, uint64_t v) {
    put32(b, static_cast<uint32_t>(v));
    put32(b, static_cast<uint32_t>(v >> 32));
}

// ASCII only: one UTF-16 unit per char, then the 16-bit terminator and padding.
inline void putString(Bytes* b, const std::string& s) {
    put32(b, static_cast<uint32_t>(s.size()));
    Bytes units;
    for (char c : s) {
        units.push_back(static_cast<uint8_t>(c));
        units.push_back(0);
    }
    units.push_back(0);
    units.push_back(0);
    while (units.size() % 4 != 0) units.push_back(0);
    b->insert(b->end(), units.begin(), units.end());
}

inline void putNull(Bytes* b) {
    put32(b, 0xFFFFFFFFu);
}

inline Bytes marshal(const AParcel* parcel) {
    Bytes out(static_cast<size_t>(AParcel_getDataSize(parcel)));
    if (AParcel_marshal(parcel, out.data(), 0, out.size()) != STATUS_OK) out.clear();
    return out;
}

inline ndk::ScopedAParcel parcelOf(const Bytes& bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size());
    AParcel_setDataPosition(parcel.get(), 0);
    return parcel;
}

}  // namespace trox_test
