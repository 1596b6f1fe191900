#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <string>

#include "binder_internal.h"
#include "parcel_internal.h"
#include "status_internal.h"
#include "unicode.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "wire format is little-endian");

namespace binder_impl {
namespace {

constexpr size_t kMaxParcelSize = INT32_MAX;

size_t pad4(size_t n) {
    return (n + 3) & ~static_cast<size_t>(3);
}

size_t remaining(const AParcel* p) {
    return p->position <= p->data.size() ? p->data.size() - p->position : 0;
}

// Restores the read position unless the read completed.
class ReadGuard {
  public:
    explicit ReadGuard(const AParcel* p) : parcel_(p), saved_(p->position) {}
    ~ReadGuard() {
        if (!committed_) parcel_->position = saved_;
    }
    binder_status_t commit() {
        committed_ = true;
        return STATUS_OK;
    }

  private:
    const AParcel* parcel_;
    size_t saved_;
    bool committed_ = false;
};

// Room for len bytes at the write position, padded with zeros to a word; *at points at it.
binder_status_t makeRoom(AParcel* p, size_t len, uint8_t** at) {
    const size_t padded = pad4(len);
    if (len > kMaxParcelSize || p->position > kMaxParcelSize - padded) return STATUS_NO_MEMORY;
    const size_t end = p->position + padded;
    if (end > p->data.size()) {
        // Parcels are written a word at a time: start big enough for a typical call at once.
        if (end > p->data.capacity()) p->data.reserve(std::max<size_t>(end * 2, 512));
        p->data.resize(end);
    }
    *at = p->data.data() + p->position;
    memset(*at + len, 0, padded - len);
    p->position = end;
    return STATUS_OK;
}

binder_status_t writeRaw(AParcel* p, const void* bytes, size_t len) {
    uint8_t* at = nullptr;
    if (binder_status_t s = makeRoom(p, len, &at); s != STATUS_OK) return s;
    if (len > 0) memcpy(at, bytes, len);
    return STATUS_OK;
}

bool isAscii(const char* text, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
    }
    return true;
}

binder_status_t readRaw(const AParcel* p, void* out, size_t len) {
    const size_t padded = pad4(len);
    if (remaining(p) < padded) return STATUS_NOT_ENOUGH_DATA;
    memcpy(out, p->data.data() + p->position, len);
    p->position += padded;
    return STATUS_OK;
}

template <typename T>
binder_status_t writeValue(AParcel* p, T value) {
    return p == nullptr ? STATUS_UNEXPECTED_NULL : writeRaw(p, &value, sizeof(T));
}

template <typename T>
binder_status_t readValue(const AParcel* p, T* value) {
    if (p == nullptr || value == nullptr) return STATUS_UNEXPECTED_NULL;
    return readRaw(p, value, sizeof(T));
}

// Calls alloc(length, &buffer) with length including the NUL, or -1 for null.
using StringSink = std::function<bool(int32_t, char**)>;

binder_status_t readStringInto(const AParcel* p, const StringSink& alloc) {
    ReadGuard guard(p);
    int32_t count = 0;
    if (binder_status_t s = readRaw(p, &count, sizeof(count)); s != STATUS_OK) return s;
    if (count == -1) {
        char* buffer = nullptr;
        if (!alloc(-1, &buffer)) return STATUS_UNEXPECTED_NULL;
        return guard.commit();
    }
    if (count < -1) return STATUS_BAD_VALUE;
    // In 64 bits: on a 32-bit target a hostile count would wrap size_t and pass the check.
    const uint64_t wireBytes = (static_cast<uint64_t>(count) + 1) * sizeof(char16_t);
    if (((wireBytes + 3) & ~uint64_t{3}) > remaining(p)) return STATUS_BAD_VALUE;
    const size_t bytes = static_cast<size_t>(wireBytes);
    std::u16string units(static_cast<size_t>(count) + 1, u'\0');
    memcpy(units.data(), p->data.data() + p->position, bytes);
    if (units.back() != u'\0') return STATUS_BAD_VALUE;
    std::string utf8;
    if (!utf16ToUtf8(units.data(), static_cast<size_t>(count), &utf8)) return STATUS_BAD_VALUE;
    if (utf8.size() >= kMaxParcelSize) return STATUS_BAD_VALUE;
    char* buffer = nullptr;
    if (!alloc(static_cast<int32_t>(utf8.size() + 1), &buffer) || buffer == nullptr) {
        return STATUS_NO_MEMORY;
    }
    memcpy(buffer, utf8.c_str(), utf8.size() + 1);
    p->position += pad4(bytes);
    return guard.commit();
}

// Reads an array length; -1 is null. Rejects lengths whose elements cannot fit.
binder_status_t readArrayLength(const AParcel* p, size_t minElementSize, int32_t* length) {
    if (binder_status_t s = readRaw(p, length, sizeof(*length)); s != STATUS_OK) return s;
    if (*length < -1) return STATUS_BAD_VALUE;
    if (*length > 0 && static_cast<size_t>(*length) > remaining(p) / minElementSize) {
        return STATUS_BAD_VALUE;
    }
    return STATUS_OK;
}

// The length word, then each element from `writeElement(index)`.
template <typename WriteElement>
binder_status_t writeElements(AParcel* p, int32_t length, bool haveElements,
                              WriteElement&& writeElement) {
    if (p == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1 || (length > 0 && !haveElements)) return STATUS_BAD_VALUE;
    if (binder_status_t s = writeValue<int32_t>(p, length); s != STATUS_OK) return s;
    for (int32_t i = 0; i < length; ++i) {
        if (binder_status_t s = writeElement(static_cast<size_t>(i)); s != STATUS_OK) return s;
    }
    return STATUS_OK;
}

// What a caller's allocator refusing `length` elements means.
binder_status_t allocationFailure(int32_t length) {
    return length == -1 ? STATUS_UNEXPECTED_NULL : STATUS_NO_MEMORY;
}

// The length word (checked against what is left before anything is allocated), the caller's
// allocation, then each element; on failure the read position is left where it was.
template <typename Allocate, typename ReadElement>
binder_status_t readElements(const AParcel* p, size_t minElementSize, Allocate&& allocate,
                             ReadElement&& readElement) {
    ReadGuard guard(p);
    int32_t length = 0;
    if (binder_status_t s = readArrayLength(p, minElementSize, &length); s != STATUS_OK) return s;
    if (binder_status_t s = allocate(length); s != STATUS_OK) return s;
    for (int32_t i = 0; i < length; ++i) {
        if (binder_status_t s = readElement(static_cast<size_t>(i)); s != STATUS_OK) return s;
    }
    return guard.commit();
}

template <typename T, typename Wire = T>
binder_status_t writeArray(AParcel* p, const T* array, int32_t length) {
    return writeElements(p, length, array != nullptr, [&](size_t i) {
        return writeValue<Wire>(p, static_cast<Wire>(array[i]));
    });
}

template <typename T, typename Wire = T>
binder_status_t readArray(const AParcel* p, void* arrayData,
                          bool (*allocator)(void*, int32_t, T**)) {
    if (p == nullptr || allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    T* buffer = nullptr;
    return readElements(
            p, pad4(sizeof(Wire)),
            [&](int32_t length) -> binder_status_t {
                if (!allocator(arrayData, length, &buffer)) return allocationFailure(length);
                return length > 0 && buffer == nullptr ? STATUS_NO_MEMORY : STATUS_OK;
            },
            [&](size_t i) {
                Wire value{};
                binder_status_t s = readRaw(p, &value, sizeof(Wire));
                if (s == STATUS_OK) buffer[i] = static_cast<T>(value);
                return s;
            });
}

}  // namespace

std::unique_ptr<AParcel> copyParcel(const AParcel& source) {
    auto copy = std::make_unique<AParcel>();
    copy->data = source.data;
    copy->objects = source.objects;
    copy->peerObjects = source.peerObjects;
    copy->fromPeer = source.fromPeer;
    return copy;
}

binder_status_t writeUtf8AsString16(AParcel* parcel, const char* utf8, size_t length) {
    // Interface tokens and most strings: widened straight into the parcel.
    if (length < kMaxParcelSize / 2 && isAscii(utf8, length)) {
        if (binder_status_t s = writeValue<int32_t>(parcel, static_cast<int32_t>(length));
            s != STATUS_OK) {
            return s;
        }
        uint8_t* at = nullptr;
        if (binder_status_t s = makeRoom(parcel, (length + 1) * sizeof(char16_t), &at);
            s != STATUS_OK) {
            return s;
        }
        for (size_t i = 0; i <= length; ++i) {
            const char16_t unit = i < length ? static_cast<char16_t>(utf8[i]) : u'\0';
            memcpy(at + i * sizeof(char16_t), &unit, sizeof(unit));
        }
        return STATUS_OK;
    }
    std::u16string units;
    if (!utf8ToUtf16(utf8, length, &units)) return STATUS_BAD_VALUE;
    if (units.size() >= kMaxParcelSize / 2) return STATUS_BAD_VALUE;
    if (binder_status_t s = writeValue<int32_t>(parcel, static_cast<int32_t>(units.size()));
        s != STATUS_OK) {
        return s;
    }
    return writeRaw(parcel, units.c_str(), (units.size() + 1) * sizeof(char16_t));
}

binder_status_t readString16AsUtf8(const AParcel* parcel, std::string* out) {
    binder_status_t s = readStringInto(parcel, [out](int32_t length, char** buffer) {
        if (length < 0) return false;
        out->assign(static_cast<size_t>(length), '\0');
        *buffer = out->data();
        return true;
    });
    if (s != STATUS_OK) return s;
    out->pop_back();  // the copied NUL
    return STATUS_OK;
}

bool readInterfaceToken(const AParcel* parcel, const std::string& descriptor) {
    if (!isAscii(descriptor.data(), descriptor.size())) {
        std::string token;
        return readString16AsUtf8(parcel, &token) == STATUS_OK && token == descriptor;
    }
    // Every call starts with the token: compared in place, unit by unit, with no conversion.
    ReadGuard guard(parcel);
    int32_t count = 0;
    if (readRaw(parcel, &count, sizeof(count)) != STATUS_OK) return false;
    if (count < 0 || static_cast<size_t>(count) != descriptor.size()) return false;
    const size_t bytes = (descriptor.size() + 1) * sizeof(char16_t);
    if (pad4(bytes) > remaining(parcel)) return false;
    const uint8_t* at = parcel->data.data() + parcel->position;
    for (size_t i = 0; i <= descriptor.size(); ++i) {
        char16_t unit = 0;
        memcpy(&unit, at + i * sizeof(char16_t), sizeof(unit));
        const char16_t wanted =
                i < descriptor.size() ? static_cast<char16_t>(descriptor[i]) : u'\0';
        if (unit != wanted) return false;
    }
    parcel->position += pad4(bytes);
    guard.commit();
    return true;
}

}  // namespace binder_impl

using namespace binder_impl;

AParcel* AParcel_create() {
    return new AParcel();
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_reset(AParcel* parcel) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    parcel->data.clear();
    parcel->objects.clear();
    parcel->peerObjects.clear();
    parcel->fromPeer = false;
    parcel->position = 0;
    return STATUS_OK;
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (position < 0 || static_cast<size_t>(position) > parcel->data.size()) {
        return STATUS_BAD_VALUE;
    }
    parcel->position = static_cast<size_t>(position);
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->position);
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->data.size());
}

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (parcel == nullptr || (buffer == nullptr && len > 0)) return STATUS_UNEXPECTED_NULL;
    if (start > parcel->data.size() || len > parcel->data.size() - start) return STATUS_BAD_VALUE;
    if (len > 0) memcpy(buffer, parcel->data.data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) {
    if (parcel == nullptr || (buffer == nullptr && len > 0)) return STATUS_UNEXPECTED_NULL;
    if (len > kMaxParcelSize) return STATUS_BAD_VALUE;
    parcel->data.assign(buffer, buffer + len);
    parcel->objects.clear();
    parcel->peerObjects.clear();
    parcel->fromPeer = false;
    parcel->position = 0;
    return STATUS_OK;
}

binder_status_t AParcel_appendFrom(const AParcel* from, AParcel* to, int32_t start, int32_t size) {
    if (from == nullptr || to == nullptr) return STATUS_UNEXPECTED_NULL;
    if (start < 0 || size < 0 || static_cast<size_t>(start) > from->data.size() ||
        static_cast<size_t>(size) > from->data.size() - static_cast<size_t>(start)) {
        return STATUS_BAD_VALUE;
    }
    const size_t len = static_cast<size_t>(size);
    if (to->position > kMaxParcelSize - len) return STATUS_NO_MEMORY;
    // Copy first: from and to may be the same parcel.
    std::vector<uint8_t> bytes(from->data.begin() + start, from->data.begin() + start + size);
    auto objects = from->objects;
    auto peerObjects = from->peerObjects;
    if (to->position + len > to->data.size()) to->data.resize(to->position + len);
    if (len > 0) memcpy(to->data.data() + to->position, bytes.data(), len);
    to->position += len;
    to->objects.insert(to->objects.end(), objects.begin(), objects.end());
    to->peerObjects.insert(to->peerObjects.end(), peerObjects.begin(), peerObjects.end());
    return STATUS_OK;
}

binder_status_t AParcel_writeInt32(AParcel* p, int32_t v) {
    return writeValue(p, v);
}
binder_status_t AParcel_writeUint32(AParcel* p, uint32_t v) {
    return writeValue(p, v);
}
binder_status_t AParcel_writeInt64(AParcel* p, int64_t v) {
    return writeValue(p, v);
}
binder_status_t AParcel_writeUint64(AParcel* p, uint64_t v) {
    return writeValue(p, v);
}
binder_status_t AParcel_writeFloat(AParcel* p, float v) {
    return writeValue(p, v);
}
binder_status_t AParcel_writeDouble(AParcel* p, double v) {
    return writeValue(p, v);
}
binder_status_t AParcel_writeBool(AParcel* p, bool v) {
    return writeValue<int32_t>(p, v ? 1 : 0);
}
binder_status_t AParcel_writeChar(AParcel* p, char16_t v) {
    return writeValue<int32_t>(p, v);
}
binder_status_t AParcel_writeByte(AParcel* p, int8_t v) {
    return writeValue<int32_t>(p, v);
}

binder_status_t AParcel_readInt32(const AParcel* p, int32_t* v) {
    return readValue(p, v);
}
binder_status_t AParcel_readUint32(const AParcel* p, uint32_t* v) {
    return readValue(p, v);
}
binder_status_t AParcel_readInt64(const AParcel* p, int64_t* v) {
    return readValue(p, v);
}
binder_status_t AParcel_readUint64(const AParcel* p, uint64_t* v) {
    return readValue(p, v);
}
binder_status_t AParcel_readFloat(const AParcel* p, float* v) {
    return readValue(p, v);
}
binder_status_t AParcel_readDouble(const AParcel* p, double* v) {
    return readValue(p, v);
}

binder_status_t AParcel_readBool(const AParcel* p, bool* v) {
    int32_t raw = 0;
    binder_status_t s = readValue(p, &raw);
    if (s == STATUS_OK && v != nullptr) *v = raw != 0;
    return v == nullptr ? STATUS_UNEXPECTED_NULL : s;
}

binder_status_t AParcel_readChar(const AParcel* p, char16_t* v) {
    int32_t raw = 0;
    binder_status_t s = readValue(p, &raw);
    if (s == STATUS_OK && v != nullptr) *v = static_cast<char16_t>(raw);
    return v == nullptr ? STATUS_UNEXPECTED_NULL : s;
}

binder_status_t AParcel_readByte(const AParcel* p, int8_t* v) {
    int32_t raw = 0;
    binder_status_t s = readValue(p, &raw);
    if (s == STATUS_OK && v != nullptr) *v = static_cast<int8_t>(raw);
    return v == nullptr ? STATUS_UNEXPECTED_NULL : s;
}

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (string == nullptr || length == -1) return writeValue<int32_t>(parcel, -1);
    if (length < -1) return STATUS_BAD_VALUE;
    return writeUtf8AsString16(parcel, string, static_cast<size_t>(length));
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    if (parcel == nullptr || allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    return readStringInto(parcel, [&](int32_t length, char** buffer) {
        return allocator(stringData, length, buffer);
    });
}

binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter) {
    return writeElements(parcel, length, getter != nullptr, [&](size_t i) {
        int32_t elementLength = -1;
        const char* element = getter(arrayData, i, &elementLength);
        return AParcel_writeString(parcel, element, elementLength);
    });
}

binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData,
                                        AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator) {
    if (parcel == nullptr || allocator == nullptr || elementAllocator == nullptr) {
        return STATUS_UNEXPECTED_NULL;
    }
    return readElements(
            parcel, sizeof(int32_t),
            [&](int32_t length) -> binder_status_t {
                return allocator(arrayData, length) ? STATUS_OK : allocationFailure(length);
            },
            [&](size_t i) {
                return readStringInto(parcel, [&](int32_t len, char** buffer) {
                    return elementAllocator(arrayData, i, len, buffer);
                });
            });
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    return writeElements(parcel, length, elementWriter != nullptr,
                         [&](size_t i) { return elementWriter(parcel, arrayData, i); });
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    if (parcel == nullptr || allocator == nullptr || elementReader == nullptr) {
        return STATUS_UNEXPECTED_NULL;
    }
    return readElements(
            parcel, sizeof(int32_t),
            [&](int32_t length) -> binder_status_t {
                return allocator(arrayData, length) ? STATUS_OK : allocationFailure(length);
            },
            [&](size_t i) { return elementReader(parcel, arrayData, i); });
}

binder_status_t AParcel_writeInt32Array(AParcel* p, const int32_t* a, int32_t n) {
    return writeArray(p, a, n);
}
binder_status_t AParcel_writeUint32Array(AParcel* p, const uint32_t* a, int32_t n) {
    return writeArray(p, a, n);
}
binder_status_t AParcel_writeInt64Array(AParcel* p, const int64_t* a, int32_t n) {
    return writeArray(p, a, n);
}
binder_status_t AParcel_writeUint64Array(AParcel* p, const uint64_t* a, int32_t n) {
    return writeArray(p, a, n);
}
binder_status_t AParcel_writeFloatArray(AParcel* p, const float* a, int32_t n) {
    return writeArray(p, a, n);
}
binder_status_t AParcel_writeDoubleArray(AParcel* p, const double* a, int32_t n) {
    return writeArray(p, a, n);
}
binder_status_t AParcel_writeCharArray(AParcel* p, const char16_t* a, int32_t n) {
    return writeArray<char16_t, int32_t>(p, a, n);
}

binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* arrayData, int32_t length,
                                       AParcel_boolArrayGetter getter) {
    return writeElements(parcel, length, getter != nullptr,
                         [&](size_t i) { return AParcel_writeBool(parcel, getter(arrayData, i)); });
}

binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (length < -1 || (length > 0 && arrayData == nullptr)) return STATUS_BAD_VALUE;
    if (binder_status_t s = writeValue<int32_t>(parcel, length); s != STATUS_OK) return s;
    if (length <= 0) return STATUS_OK;
    return writeRaw(parcel, arrayData, static_cast<size_t>(length));
}

binder_status_t AParcel_readInt32Array(const AParcel* p, void* d, AParcel_int32ArrayAllocator a) {
    return readArray(p, d, a);
}
binder_status_t AParcel_readUint32Array(const AParcel* p, void* d, AParcel_uint32ArrayAllocator a) {
    return readArray(p, d, a);
}
binder_status_t AParcel_readInt64Array(const AParcel* p, void* d, AParcel_int64ArrayAllocator a) {
    return readArray(p, d, a);
}
binder_status_t AParcel_readUint64Array(const AParcel* p, void* d, AParcel_uint64ArrayAllocator a) {
    return readArray(p, d, a);
}
binder_status_t AParcel_readFloatArray(const AParcel* p, void* d, AParcel_floatArrayAllocator a) {
    return readArray(p, d, a);
}
binder_status_t AParcel_readDoubleArray(const AParcel* p, void* d, AParcel_doubleArrayAllocator a) {
    return readArray(p, d, a);
}
binder_status_t AParcel_readCharArray(const AParcel* p, void* d, AParcel_charArrayAllocator a) {
    return readArray<char16_t, int32_t>(p, d, a);
}

binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData,
                                      AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter) {
    if (parcel == nullptr || allocator == nullptr || setter == nullptr) {
        return STATUS_UNEXPECTED_NULL;
    }
    return readElements(
            parcel, sizeof(int32_t),
            [&](int32_t length) -> binder_status_t {
                return allocator(arrayData, length) ? STATUS_OK : allocationFailure(length);
            },
            [&](size_t i) {
                int32_t raw = 0;
                binder_status_t s = readRaw(parcel, &raw, sizeof(raw));
                if (s == STATUS_OK) setter(arrayData, i, raw != 0);
                return s;
            });
}

binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData,
                                      AParcel_byteArrayAllocator allocator) {
    if (parcel == nullptr || allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    ReadGuard guard(parcel);
    int32_t length = 0;
    if (binder_status_t s = readArrayLength(parcel, 1, &length); s != STATUS_OK) return s;
    if (length > 0 && pad4(static_cast<size_t>(length)) > remaining(parcel)) {
        return STATUS_BAD_VALUE;
    }
    int8_t* buffer = nullptr;
    if (!allocator(arrayData, length, &buffer)) return allocationFailure(length);
    if (length > 0) {
        if (buffer == nullptr) return STATUS_NO_MEMORY;
        if (binder_status_t s = readRaw(parcel, buffer, static_cast<size_t>(length));
            s != STATUS_OK) {
            return s;
        }
    }
    return guard.commit();
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder == nullptr) return writeValue<int32_t>(parcel, 0);
    std::shared_ptr<RemoteObject> remote = remoteForWriting(binder);
    if (remote == nullptr) return STATUS_BAD_VALUE;
    if (binder_status_t s = writeValue<int32_t>(parcel, 1); s != STATUS_OK) return s;
    if (binder_status_t s = writeValue<uint64_t>(parcel, remote->id()); s != STATUS_OK) return s;
    if (binder_status_t s = writeValue<int32_t>(parcel, binder->stability.load()); s != STATUS_OK) {
        return s;
    }
    parcel->objects.push_back(std::move(remote));
    return STATUS_OK;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    if (parcel == nullptr || binder == nullptr) return STATUS_UNEXPECTED_NULL;
    ReadGuard guard(parcel);
    int32_t present = 0;
    if (binder_status_t s = readRaw(parcel, &present, sizeof(present)); s != STATUS_OK) return s;
    if (present == 0) {
        *binder = nullptr;
        return guard.commit();
    }
    if (present != 1) return STATUS_BAD_VALUE;
    uint64_t id = 0;
    int32_t stability = 0;
    if (binder_status_t s = readRaw(parcel, &id, sizeof(id)); s != STATUS_OK) return s;
    if (binder_status_t s = readRaw(parcel, &stability, sizeof(stability)); s != STATUS_OK) {
        return s;
    }
    std::shared_ptr<RemoteObject> remote;
    for (const auto& [peerId, object] : parcel->peerObjects) {
        if (peerId == id) {
            remote = object;
            break;
        }
    }
    for (size_t i = 0; remote == nullptr && !parcel->fromPeer && i < parcel->objects.size(); ++i) {
        if (parcel->objects[i]->id() == id) remote = parcel->objects[i];
    }
    if (remote == nullptr && !parcel->fromPeer) remote = inProcessTransport().find(id);
    if (remote == nullptr) return STATUS_BAD_VALUE;
    *binder = proxyFor(remote, stability);
    return guard.commit();
}

binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (fd < 0) return writeValue<int32_t>(parcel, 0);
    return STATUS_FDS_NOT_ALLOWED;
}

binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd) {
    if (parcel == nullptr || fd == nullptr) return STATUS_UNEXPECTED_NULL;
    ReadGuard guard(parcel);
    int32_t present = 0;
    if (binder_status_t s = readRaw(parcel, &present, sizeof(present)); s != STATUS_OK) return s;
    if (present != 0) return STATUS_FDS_NOT_ALLOWED;
    *fd = -1;
    return guard.commit();
}

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    // An empty status here is a service method that returned a default ndk::ScopedAStatus.
    requireStatus(status, __func__);
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    // Transport failures travel as the transaction's own status, never as an exception.
    if (status->exception == EX_TRANSACTION_FAILED) return status->errorCode;
    if (binder_status_t s = writeValue<int32_t>(parcel, status->exception); s != STATUS_OK) {
        return s;
    }
    if (status->exception == EX_NONE) return STATUS_OK;
    if (binder_status_t s =
                writeUtf8AsString16(parcel, status->message.data(), status->message.size());
        s != STATUS_OK) {
        return s;
    }
    if (binder_status_t s = writeValue<int32_t>(parcel, 0); s != STATUS_OK) return s;
    if (status->exception == EX_SERVICE_SPECIFIC) {
        return writeValue<int32_t>(parcel, status->errorCode);
    }
    return STATUS_OK;
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    if (parcel == nullptr || status == nullptr) return STATUS_UNEXPECTED_NULL;
    ReadGuard guard(parcel);
    int32_t exception = 0;
    if (binder_status_t s = readRaw(parcel, &exception, sizeof(exception)); s != STATUS_OK) {
        return s;
    }
    if (exception == EX_NONE) {
        *status = AStatus_newOk();
        return guard.commit();
    }
    std::string message;
    bool isNull = false;
    binder_status_t s = readStringInto(parcel, [&](int32_t length, char** buffer) {
        if (length < 0) {
            isNull = true;
            return true;
        }
        message.assign(static_cast<size_t>(length), '\0');
        *buffer = message.data();
        return true;
    });
    if (s != STATUS_OK) return s;
    if (!isNull) message.pop_back();
    int32_t traceSize = 0;
    if (s = readRaw(parcel, &traceSize, sizeof(traceSize)); s != STATUS_OK) return s;
    if (traceSize < 0 || static_cast<size_t>(traceSize) > remaining(parcel)) {
        return STATUS_BAD_VALUE;
    }
    parcel->position += static_cast<size_t>(traceSize);
    int32_t errorCode = 0;
    if (exception == EX_SERVICE_SPECIFIC) {
        if (s = readRaw(parcel, &errorCode, sizeof(errorCode)); s != STATUS_OK) return s;
        *status = AStatus_fromServiceSpecificErrorWithMessage(errorCode, message.c_str());
    } else {
        *status = AStatus_fromExceptionCodeWithMessage(exception, message.c_str());
    }
    return guard.commit();
}
