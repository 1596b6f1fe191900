// Typed reads and writes over the AParcel C API, in the overload set generated code calls
// (::ndk::AParcel_writeData / AParcel_readData and the nullable variants).
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {

#ifndef VEXAL_NDK_PARCELABLE_STABILITY_DEFINED
#define VEXAL_NDK_PARCELABLE_STABILITY_DEFINED
enum parcelable_stability_t {
    STABILITY_LOCAL,
    STABILITY_VINTF,
};
#endif

namespace internal {

template <typename T, typename = void>
struct is_parcelable : std::false_type {};
template <typename T>
struct is_parcelable<
        T, std::void_t<decltype(std::declval<T&>().readFromParcel(std::declval<const AParcel*>())),
                       decltype(std::declval<const T&>().writeToParcel(std::declval<AParcel*>()))>>
    : std::true_type {};
template <typename T>
inline constexpr bool is_parcelable_v = is_parcelable<T>::value;

template <typename T>
inline constexpr bool is_interface_v = std::is_base_of_v<ICInterface, T>;

// Every array element takes at least one 4-byte word on the wire, so a length that cannot fit in
// what is left is hostile; checked again here so nothing is allocated from it.
inline bool lengthFits(const AParcel* parcel, int32_t length) {
    if (length < 0) return false;
    int64_t remaining = static_cast<int64_t>(::AParcel_getDataSize(parcel)) -
                        static_cast<int64_t>(::AParcel_getDataPosition(parcel));
    return static_cast<int64_t>(length) * 4 <= (remaining < 0 ? 0 : remaining);
}

template <typename V>
struct ReadCtx {
    V* value;
    const AParcel* parcel;
    bool sawNull = false;
};

inline bool toLength(size_t size, int32_t* out) {
    if (size > static_cast<size_t>(std::numeric_limits<int32_t>::max())) return false;
    *out = static_cast<int32_t>(size);
    return true;
}

inline bool stdStringAllocator(void* data, int32_t length, char** buffer) {
    auto* ctx = static_cast<ReadCtx<std::string>*>(data);
    if (length < 0) {
        ctx->sawNull = true;
        return false;
    }
    if (length == 0) return false;  // the length counts the terminator
    ctx->value->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*ctx->value)[0];
    return true;
}

inline bool optionalStringAssign(std::optional<std::string>* out, int32_t length, char** buffer) {
    if (length < 0) {
        out->reset();
        *buffer = nullptr;
        return true;
    }
    if (length == 0) return false;
    out->emplace(static_cast<size_t>(length) - 1, '\0');
    *buffer = &(**out)[0];
    return true;
}

inline bool nullableStdStringAllocator(void* data, int32_t length, char** buffer) {
    auto* ctx = static_cast<ReadCtx<std::optional<std::string>>*>(data);
    return optionalStringAssign(ctx->value, length, buffer);
}

inline bool int32VectorAllocator(void* data, int32_t length, int32_t** buffer) {
    auto* ctx = static_cast<ReadCtx<std::vector<int32_t>>*>(data);
    if (length < 0) {
        ctx->sawNull = length == -1;
        return false;
    }
    if (!lengthFits(ctx->parcel, length)) return false;
    ctx->value->assign(static_cast<size_t>(length), 0);
    *buffer = ctx->value->data();
    return true;
}

inline bool nullableInt32VectorAllocator(void* data, int32_t length, int32_t** buffer) {
    auto* ctx = static_cast<ReadCtx<std::optional<std::vector<int32_t>>>*>(data);
    if (length == -1) {
        ctx->value->reset();
        *buffer = nullptr;
        return true;
    }
    if (!lengthFits(ctx->parcel, length)) return false;
    ctx->value->emplace(static_cast<size_t>(length), 0);
    *buffer = (*ctx->value)->data();
    return true;
}

using NullableStringVector = std::optional<std::vector<std::optional<std::string>>>;

inline const char* nullableStringVectorGetter(const void* data, size_t index, int32_t* outLength) {
    const auto& element = (**static_cast<const NullableStringVector*>(data))[index];
    if (!element) {
        *outLength = -1;
        return nullptr;
    }
    if (!toLength(element->size(), outLength)) {
        *outLength = -1;
        return nullptr;
    }
    return element->c_str();
}

inline bool nullableStringVectorAllocator(void* data, int32_t length) {
    auto* ctx = static_cast<ReadCtx<NullableStringVector>*>(data);
    if (length == -1) {
        ctx->value->reset();
        return true;
    }
    if (!lengthFits(ctx->parcel, length)) return false;
    ctx->value->emplace(static_cast<size_t>(length));
    return true;
}

inline bool nullableStringVectorElementAllocator(void* data, size_t index, int32_t length,
                                                 char** buffer) {
    auto* ctx = static_cast<ReadCtx<NullableStringVector>*>(data);
    if (!*ctx->value || index >= (*ctx->value)->size()) return false;
    return optionalStringAssign(&(**ctx->value)[index], length, buffer);
}

inline const char* stringVectorGetter(const void* data, size_t index, int32_t* outLength) {
    const std::string& element = (*static_cast<const std::vector<std::string>*>(data))[index];
    if (!toLength(element.size(), outLength)) {
        *outLength = -1;
        return nullptr;
    }
    return element.c_str();
}

inline bool stringVectorAllocator(void* data, int32_t length) {
    auto* ctx = static_cast<ReadCtx<std::vector<std::string>>*>(data);
    if (length < 0) {
        ctx->sawNull = length == -1;
        return false;
    }
    if (!lengthFits(ctx->parcel, length)) return false;
    ctx->value->assign(static_cast<size_t>(length), std::string());
    return true;
}

inline bool stringVectorElementAllocator(void* data, size_t index, int32_t length, char** buffer) {
    auto* ctx = static_cast<ReadCtx<std::vector<std::string>>*>(data);
    if (index >= ctx->value->size() || length <= 0) return false;
    std::string& element = (*ctx->value)[index];
    element.resize(static_cast<size_t>(length) - 1);
    *buffer = &element[0];
    return true;
}

}  // namespace internal

// --- binders ---

inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel,
                                                         const SpAIBinder& binder) {
    if (binder.get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return ::AParcel_writeStrongBinder(parcel, binder.get());
}

inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    AIBinder* read = nullptr;
    binder_status_t status = ::AParcel_readStrongBinder(parcel, &read);
    if (status != STATUS_OK) return status;
    binder->set(read);
    return read == nullptr ? STATUS_UNEXPECTED_NULL : STATUS_OK;
}

inline binder_status_t AParcel_writeNullableStrongBinder(AParcel* parcel,
                                                         const SpAIBinder& binder) {
    return ::AParcel_writeStrongBinder(parcel, binder.get());
}

inline binder_status_t AParcel_readNullableStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    AIBinder* read = nullptr;
    binder_status_t status = ::AParcel_readStrongBinder(parcel, &read);
    if (status != STATUS_OK) return status;
    binder->set(read);
    return STATUS_OK;
}

// --- primitives ---

inline binder_status_t AParcel_writeData(AParcel* parcel, const int32_t& value) {
    return ::AParcel_writeInt32(parcel, value);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, int32_t* value) {
    return ::AParcel_readInt32(parcel, value);
}
inline binder_status_t AParcel_writeData(AParcel* parcel, const int64_t& value) {
    return ::AParcel_writeInt64(parcel, value);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, int64_t* value) {
    return ::AParcel_readInt64(parcel, value);
}
inline binder_status_t AParcel_writeData(AParcel* parcel, const bool& value) {
    return ::AParcel_writeBool(parcel, value);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, bool* value) {
    return ::AParcel_readBool(parcel, value);
}

// --- strings ---

inline binder_status_t AParcel_writeData(AParcel* parcel, const std::string& value) {
    int32_t length = 0;
    if (!internal::toLength(value.size(), &length)) return STATUS_BAD_VALUE;
    return ::AParcel_writeString(parcel, value.c_str(), length);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, std::string* value) {
    internal::ReadCtx<std::string> ctx{value, parcel};
    binder_status_t status = ::AParcel_readString(parcel, &ctx, internal::stdStringAllocator);
    if (status != STATUS_OK && ctx.sawNull) return STATUS_UNEXPECTED_NULL;
    return status;
}
inline binder_status_t AParcel_writeData(AParcel* parcel, const std::optional<std::string>& value) {
    if (!value) return ::AParcel_writeString(parcel, nullptr, -1);
    return AParcel_writeData(parcel, *value);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, std::optional<std::string>* value) {
    internal::ReadCtx<std::optional<std::string>> ctx{value, parcel};
    return ::AParcel_readString(parcel, &ctx, internal::nullableStdStringAllocator);
}

inline binder_status_t AParcel_writeData(AParcel* parcel, const std::vector<std::string>& value) {
    int32_t length = 0;
    if (!internal::toLength(value.size(), &length)) return STATUS_BAD_VALUE;
    return ::AParcel_writeStringArray(parcel, &value, length, internal::stringVectorGetter);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, std::vector<std::string>* value) {
    internal::ReadCtx<std::vector<std::string>> ctx{value, parcel};
    binder_status_t status = ::AParcel_readStringArray(
            parcel, &ctx, internal::stringVectorAllocator, internal::stringVectorElementAllocator);
    if (status != STATUS_OK && ctx.sawNull) return STATUS_UNEXPECTED_NULL;
    return status;
}

inline binder_status_t AParcel_writeData(AParcel* parcel,
                                         const internal::NullableStringVector& value) {
    if (!value) return ::AParcel_writeStringArray(parcel, nullptr, -1, nullptr);
    int32_t length = 0;
    if (!internal::toLength(value->size(), &length)) return STATUS_BAD_VALUE;
    return ::AParcel_writeStringArray(parcel, &value, length, internal::nullableStringVectorGetter);
}
inline binder_status_t AParcel_readData(const AParcel* parcel,
                                        internal::NullableStringVector* value) {
    internal::ReadCtx<internal::NullableStringVector> ctx{value, parcel};
    return ::AParcel_readStringArray(parcel, &ctx, internal::nullableStringVectorAllocator,
                                     internal::nullableStringVectorElementAllocator);
}

// --- int32 arrays ---

inline binder_status_t AParcel_writeData(AParcel* parcel, const std::vector<int32_t>& value) {
    int32_t length = 0;
    if (!internal::toLength(value.size(), &length)) return STATUS_BAD_VALUE;
    return ::AParcel_writeInt32Array(parcel, value.data(), length);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, std::vector<int32_t>* value) {
    internal::ReadCtx<std::vector<int32_t>> ctx{value, parcel};
    binder_status_t status = ::AParcel_readInt32Array(parcel, &ctx, internal::int32VectorAllocator);
    if (status != STATUS_OK && ctx.sawNull) return STATUS_UNEXPECTED_NULL;
    return status;
}
inline binder_status_t AParcel_writeData(AParcel* parcel,
                                         const std::optional<std::vector<int32_t>>& value) {
    if (!value) return ::AParcel_writeInt32Array(parcel, nullptr, -1);
    return AParcel_writeData(parcel, *value);
}
inline binder_status_t AParcel_readData(const AParcel* parcel,
                                        std::optional<std::vector<int32_t>>* value) {
    internal::ReadCtx<std::optional<std::vector<int32_t>>> ctx{value, parcel};
    return ::AParcel_readInt32Array(parcel, &ctx, internal::nullableInt32VectorAllocator);
}

// --- binder objects ---

inline binder_status_t AParcel_writeData(AParcel* parcel, const SpAIBinder& value) {
    return AParcel_writeRequiredStrongBinder(parcel, value);
}
inline binder_status_t AParcel_readData(const AParcel* parcel, SpAIBinder* value) {
    return AParcel_readRequiredStrongBinder(parcel, value);
}
inline binder_status_t AParcel_writeNullableData(AParcel* parcel, const SpAIBinder& value) {
    return AParcel_writeNullableStrongBinder(parcel, value);
}
inline binder_status_t AParcel_readNullableData(const AParcel* parcel, SpAIBinder* value) {
    return AParcel_readNullableStrongBinder(parcel, value);
}

// --- interfaces ---

template <typename T, std::enable_if_t<internal::is_interface_v<T>, int> = 0>
binder_status_t AParcel_writeData(AParcel* parcel, const std::shared_ptr<T>& value) {
    if (value == nullptr) return STATUS_UNEXPECTED_NULL;
    return T::writeToParcel(parcel, value);
}
template <typename T, std::enable_if_t<internal::is_interface_v<T>, int> = 0>
binder_status_t AParcel_readData(const AParcel* parcel, std::shared_ptr<T>* value) {
    binder_status_t status = T::readFromParcel(parcel, value);
    if (status != STATUS_OK) return status;
    return *value == nullptr ? STATUS_UNEXPECTED_NULL : STATUS_OK;
}
template <typename T, std::enable_if_t<internal::is_interface_v<T>, int> = 0>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const std::shared_ptr<T>& value) {
    return T::writeToParcel(parcel, value);
}
template <typename T, std::enable_if_t<internal::is_interface_v<T>, int> = 0>
binder_status_t AParcel_readNullableData(const AParcel* parcel, std::shared_ptr<T>* value) {
    return T::readFromParcel(parcel, value);
}

// --- parcelables: as a value they are preceded by a present flag (1, or 0 for null) ---

template <typename P, std::enable_if_t<internal::is_parcelable_v<P>, int> = 0>
binder_status_t AParcel_writeData(AParcel* parcel, const P& value) {
    binder_status_t status = ::AParcel_writeInt32(parcel, 1);
    if (status != STATUS_OK) return status;
    return value.writeToParcel(parcel);
}
template <typename P, std::enable_if_t<internal::is_parcelable_v<P>, int> = 0>
binder_status_t AParcel_readData(const AParcel* parcel, P* value) {
    int32_t present = 0;
    binder_status_t status = ::AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) return STATUS_UNEXPECTED_NULL;
    return value->readFromParcel(parcel);
}
template <typename P, std::enable_if_t<internal::is_parcelable_v<P>, int> = 0>
binder_status_t AParcel_writeData(AParcel* parcel, const std::optional<P>& value) {
    if (!value) return ::AParcel_writeInt32(parcel, 0);
    return AParcel_writeData(parcel, *value);
}
template <typename P, std::enable_if_t<internal::is_parcelable_v<P>, int> = 0>
binder_status_t AParcel_readData(const AParcel* parcel, std::optional<P>* value) {
    int32_t present = 0;
    binder_status_t status = ::AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        value->reset();
        return STATUS_OK;
    }
    value->emplace();
    return (*value)->readFromParcel(parcel);
}

namespace internal {

template <typename P>
binder_status_t writeParcelableElement(AParcel* parcel, const void* data, size_t index) {
    return ::ndk::AParcel_writeData(parcel, (*static_cast<const std::vector<P>*>(data))[index]);
}

template <typename P>
bool parcelableVectorAllocator(void* data, int32_t length) {
    auto* ctx = static_cast<ReadCtx<std::vector<P>>*>(data);
    if (length < 0) {
        ctx->sawNull = length == -1;
        return false;
    }
    if (!lengthFits(ctx->parcel, length)) return false;
    ctx->value->clear();
    ctx->value->resize(static_cast<size_t>(length));
    return true;
}

template <typename P>
binder_status_t readParcelableElement(const AParcel* parcel, void* data, size_t index) {
    auto* ctx = static_cast<ReadCtx<std::vector<P>>*>(data);
    if (index >= ctx->value->size()) return STATUS_BAD_VALUE;
    return ::ndk::AParcel_readData(parcel, &(*ctx->value)[index]);
}

}  // namespace internal

template <typename P, std::enable_if_t<internal::is_parcelable_v<P>, int> = 0>
binder_status_t AParcel_writeData(AParcel* parcel, const std::vector<P>& value) {
    int32_t length = 0;
    if (!internal::toLength(value.size(), &length)) return STATUS_BAD_VALUE;
    return ::AParcel_writeParcelableArray(parcel, &value, length,
                                          internal::writeParcelableElement<P>);
}
template <typename P, std::enable_if_t<internal::is_parcelable_v<P>, int> = 0>
binder_status_t AParcel_readData(const AParcel* parcel, std::vector<P>* value) {
    internal::ReadCtx<std::vector<P>> ctx{value, parcel};
    binder_status_t status =
            ::AParcel_readParcelableArray(parcel, &ctx, internal::parcelableVectorAllocator<P>,
                                          internal::readParcelableElement<P>);
    if (status != STATUS_OK && ctx.sawNull) return STATUS_UNEXPECTED_NULL;
    return status;
}

// Types without a separate nullable form (optionals carry their own null) take the plain path.
template <typename T>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value) {
    return AParcel_writeData(parcel, value);
}
template <typename T>
binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value) {
    return AParcel_readData(parcel, value);
}

}  // namespace ndk
