// Typed reads and writes over the AParcel C API: the helpers generated code calls
// (::ndk::AParcel_writeData / AParcel_readData for required values, AParcel_writeNullableData /
// AParcel_readNullableData for @nullable ones). A type a device rejects fails to compile here too:
// an optional goes only through the nullable pair.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {

namespace {

template <typename Test, template <typename...> class Template>
struct is_specialization : std::false_type {};
template <template <typename...> class Template, typename... Args>
struct is_specialization<Template<Args...>, Template> : std::true_type {};
template <typename Test, template <typename...> class Template>
static inline constexpr bool is_specialization_v = is_specialization<Test, Template>::value;

// The T of Holder<T, ...>; void for anything else.
template <typename Holder>
struct first_template_type {
    using type = void;
};
template <template <typename...> class Holder, typename T, typename... Rest>
struct first_template_type<Holder<T, Rest...>> {
    using type = T;
};
template <typename Holder>
using first_template_type_t = typename first_template_type<Holder>::type;

// std::shared_ptr<an ICInterface type>.
template <typename T>
static inline constexpr bool is_interface_v = is_specialization_v<T, std::shared_ptr>&&
        std::is_base_of_v<::ndk::ICInterface, first_template_type_t<T>>;

// A generated parcelable: readFromParcel and writeToParcel.
template <typename T, typename = void>
struct is_parcelable : std::false_type {};
template <typename T>
struct is_parcelable<
        T, std::void_t<decltype(std::declval<T&>().readFromParcel(std::declval<const AParcel*>())),
                       decltype(std::declval<const T&>().writeToParcel(std::declval<AParcel*>()))>>
    : std::true_type {};
template <typename T>
static inline constexpr bool is_parcelable_v = is_parcelable<T>::value;

// std::optional or std::unique_ptr of a parcelable: a @nullable parcelable.
template <typename T>
static inline constexpr bool is_nullable_parcelable_v = is_parcelable_v<first_template_type_t<T>> &&
                                                        (is_specialization_v<T, std::optional> ||
                                                         is_specialization_v<T, std::unique_ptr>);

template <typename T>
static inline constexpr bool dependent_false_v = false;

// Element types with a packed array form in the C API.
template <typename T>
static inline constexpr bool is_primitive_element_v =
        std::is_same_v<T, int32_t> || std::is_same_v<T, uint32_t> || std::is_same_v<T, int64_t> ||
        std::is_same_v<T, uint64_t> || std::is_same_v<T, float> || std::is_same_v<T, double> ||
        std::is_same_v<T, char16_t> || std::is_same_v<T, bool> || std::is_same_v<T, uint8_t>;

static inline bool lengthOf(size_t size, int32_t* length) {
    if (size > static_cast<size_t>(std::numeric_limits<int32_t>::max())) return false;
    *length = static_cast<int32_t>(size);
    return true;
}

}  // namespace

// ---- allocators and element accessors handed to the C API ----

template <typename T>
static inline bool AParcel_stdVectorAllocator(void* vectorData, int32_t length, T** outBuffer) {
    auto* vec = static_cast<std::vector<T>*>(vectorData);
    if (length < 0 || static_cast<size_t>(length) > vec->max_size()) return false;
    vec->assign(static_cast<size_t>(length), T{});
    *outBuffer = vec->data();
    return true;
}

template <typename T>
static inline bool AParcel_nullableStdVectorAllocator(void* vectorData, int32_t length,
                                                      T** outBuffer) {
    auto* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    if (length < 0) {
        vec->reset();
        return true;
    }
    vec->emplace();
    return AParcel_stdVectorAllocator<T>(&**vec, length, outBuffer);
}

// Sizes the vector only; the C API fills it element by element.
template <typename T>
static inline bool AParcel_stdVectorExternalAllocator(void* vectorData, int32_t length) {
    auto* vec = static_cast<std::vector<T>*>(vectorData);
    if (length < 0 || static_cast<size_t>(length) > vec->max_size()) return false;
    vec->assign(static_cast<size_t>(length), T{});
    return true;
}

template <typename T>
static inline bool AParcel_nullableStdVectorExternalAllocator(void* vectorData, int32_t length) {
    auto* vec = static_cast<std::optional<std::vector<T>>*>(vectorData);
    if (length < 0) {
        vec->reset();
        return true;
    }
    vec->emplace();
    return AParcel_stdVectorExternalAllocator<T>(&**vec, length);
}

template <typename T>
static inline T AParcel_stdVectorGetter(const void* vectorData, size_t index) {
    return (*static_cast<const std::vector<T>*>(vectorData))[index];
}

template <typename T>
static inline void AParcel_stdVectorSetter(void* vectorData, size_t index, T value) {
    (*static_cast<std::vector<T>*>(vectorData))[index] = value;
}

template <typename T>
static inline void AParcel_nullableStdVectorSetter(void* vectorData, size_t index, T value) {
    (**static_cast<std::optional<std::vector<T>>*>(vectorData))[index] = value;
}

// length counts the terminating NUL; a null string (-1) is refused.
static inline bool AParcel_stdStringAllocator(void* stringData, int32_t length, char** buffer) {
    if (length <= 0) return false;
    auto* str = static_cast<std::string*>(stringData);
    str->assign(static_cast<size_t>(length) - 1, '\0');
    *buffer = str->data();
    return true;
}

static inline bool AParcel_nullableStdStringAllocator(void* stringData, int32_t length,
                                                      char** buffer) {
    auto* str = static_cast<std::optional<std::string>*>(stringData);
    if (length < 0) {
        str->reset();
        return true;
    }
    if (length == 0) return false;
    str->emplace(static_cast<size_t>(length) - 1, '\0');
    *buffer = (*str)->data();
    return true;
}

static inline bool AParcel_stdVectorStringElementAllocator(void* vectorData, size_t index,
                                                           int32_t length, char** buffer) {
    auto* vec = static_cast<std::vector<std::string>*>(vectorData);
    if (index >= vec->size()) return false;
    return AParcel_stdStringAllocator(&(*vec)[index], length, buffer);
}

static inline const char* AParcel_stdVectorStringElementGetter(const void* vectorData, size_t index,
                                                               int32_t* outLength) {
    const std::string& element = (*static_cast<const std::vector<std::string>*>(vectorData))[index];
    if (!lengthOf(element.size(), outLength)) {
        *outLength = -1;
        return nullptr;
    }
    return element.c_str();
}

static inline bool AParcel_nullableStdVectorStringElementAllocator(void* vectorData, size_t index,
                                                                   int32_t length, char** buffer) {
    auto* vec = static_cast<std::optional<std::vector<std::optional<std::string>>>*>(vectorData);
    if (!vec->has_value() || index >= (*vec)->size()) return false;
    return AParcel_nullableStdStringAllocator(&(**vec)[index], length, buffer);
}

static inline const char* AParcel_nullableStdVectorStringElementGetter(const void* vectorData,
                                                                       size_t index,
                                                                       int32_t* outLength) {
    const auto& vec =
            *static_cast<const std::optional<std::vector<std::optional<std::string>>>*>(vectorData);
    const std::optional<std::string>& element = (*vec)[index];
    if (!element.has_value() || !lengthOf(element->size(), outLength)) {
        *outLength = -1;
        return nullptr;
    }
    return element->c_str();
}

// ---- binders ----

static inline binder_status_t AParcel_writeNullableStrongBinder(AParcel* parcel,
                                                                const SpAIBinder& binder) {
    return AParcel_writeStrongBinder(parcel, binder.get());
}

static inline binder_status_t AParcel_readNullableStrongBinder(const AParcel* parcel,
                                                               SpAIBinder* binder) {
    AIBinder* read = nullptr;
    binder_status_t status = AParcel_readStrongBinder(parcel, &read);
    if (status == STATUS_OK) binder->set(read);
    return status;
}

static inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel,
                                                                const SpAIBinder& binder) {
    if (binder.get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return AParcel_writeStrongBinder(parcel, binder.get());
}

static inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel,
                                                               SpAIBinder* binder) {
    AIBinder* read = nullptr;
    binder_status_t status = AParcel_readStrongBinder(parcel, &read);
    if (status != STATUS_OK) return status;
    if (read == nullptr) return STATUS_UNEXPECTED_NULL;
    binder->set(read);
    return STATUS_OK;
}

// ---- strings ----

static inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& str) {
    int32_t length = 0;
    if (!lengthOf(str.size(), &length)) return STATUS_BAD_VALUE;
    return AParcel_writeString(parcel, str.c_str(), length);
}

static inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* str) {
    return AParcel_readString(parcel, str, AParcel_stdStringAllocator);
}

static inline binder_status_t AParcel_writeString(AParcel* parcel,
                                                  const std::optional<std::string>& str) {
    if (!str.has_value()) return AParcel_writeString(parcel, nullptr, -1);
    return AParcel_writeString(parcel, *str);
}

static inline binder_status_t AParcel_readString(const AParcel* parcel,
                                                 std::optional<std::string>* str) {
    return AParcel_readString(parcel, str, AParcel_nullableStdStringAllocator);
}

static inline binder_status_t AParcel_writeVector(AParcel* parcel,
                                                  const std::vector<std::string>& vec) {
    int32_t length = 0;
    if (!lengthOf(vec.size(), &length)) return STATUS_BAD_VALUE;
    return AParcel_writeStringArray(parcel, &vec, length, AParcel_stdVectorStringElementGetter);
}

static inline binder_status_t AParcel_readVector(const AParcel* parcel,
                                                 std::vector<std::string>* vec) {
    return AParcel_readStringArray(parcel, vec, AParcel_stdVectorExternalAllocator<std::string>,
                                   AParcel_stdVectorStringElementAllocator);
}

static inline binder_status_t AParcel_writeVector(
        AParcel* parcel, const std::optional<std::vector<std::optional<std::string>>>& vec) {
    int32_t length = -1;
    if (vec.has_value() && !lengthOf(vec->size(), &length)) return STATUS_BAD_VALUE;
    return AParcel_writeStringArray(parcel, &vec, length,
                                    AParcel_nullableStdVectorStringElementGetter);
}

static inline binder_status_t AParcel_readVector(
        const AParcel* parcel, std::optional<std::vector<std::optional<std::string>>>* vec) {
    return AParcel_readStringArray(
            parcel, vec, AParcel_nullableStdVectorExternalAllocator<std::optional<std::string>>,
            AParcel_nullableStdVectorStringElementAllocator);
}

// ---- parcelables and interfaces ----

// A parcelable value is preceded by a present flag (1); an interface is a binder, and a null one
// is written as such (a device accepts it too).
template <typename P>
static inline binder_status_t AParcel_writeParcelable(AParcel* parcel, const P& p) {
    if constexpr (is_interface_v<P>) {
        return first_template_type_t<P>::writeToParcel(parcel, p);
    } else {
        static_assert(is_parcelable_v<P>, "not a parcelable");
        binder_status_t status = AParcel_writeInt32(parcel, 1);
        if (status != STATUS_OK) return status;
        return p.writeToParcel(parcel);
    }
}

template <typename P>
static inline binder_status_t AParcel_readParcelable(const AParcel* parcel, P* p) {
    if constexpr (is_interface_v<P>) {
        return first_template_type_t<P>::readFromParcel(parcel, p);
    } else {
        static_assert(is_parcelable_v<P>, "not a parcelable");
        int32_t present = 0;
        binder_status_t status = AParcel_readInt32(parcel, &present);
        if (status != STATUS_OK) return status;
        if (present == 0) return STATUS_UNEXPECTED_NULL;
        return p->readFromParcel(parcel);
    }
}

template <typename P>
static inline binder_status_t AParcel_writeNullableParcelable(AParcel* parcel, const P& p) {
    if constexpr (is_interface_v<P>) {
        return first_template_type_t<P>::writeToParcel(parcel, p);
    } else {
        static_assert(is_nullable_parcelable_v<P>, "not a nullable parcelable");
        if (!p) return AParcel_writeInt32(parcel, 0);
        binder_status_t status = AParcel_writeInt32(parcel, 1);
        if (status != STATUS_OK) return status;
        return p->writeToParcel(parcel);
    }
}

template <typename P>
static inline binder_status_t AParcel_readNullableParcelable(const AParcel* parcel, P* p) {
    if constexpr (is_interface_v<P>) {
        return first_template_type_t<P>::readFromParcel(parcel, p);
    } else {
        static_assert(is_nullable_parcelable_v<P>, "not a nullable parcelable");
        int32_t present = 0;
        binder_status_t status = AParcel_readInt32(parcel, &present);
        if (status != STATUS_OK) return status;
        if (present == 0) {
            *p = P();
            return STATUS_OK;
        }
        using Value = first_template_type_t<P>;
        if constexpr (is_specialization_v<P, std::optional>) {
            p->emplace();
        } else {
            *p = std::make_unique<Value>();
        }
        return (*p)->readFromParcel(parcel);
    }
}

template <typename P>
binder_status_t AParcel_writeStdVectorParcelableElement(AParcel* parcel, const void* vectorData,
                                                        size_t index) {
    const auto& vec = *static_cast<const std::vector<P>*>(vectorData);
    return AParcel_writeParcelable(parcel, vec[index]);
}

template <typename P>
binder_status_t AParcel_readStdVectorParcelableElement(const AParcel* parcel, void* vectorData,
                                                       size_t index) {
    auto* vec = static_cast<std::vector<P>*>(vectorData);
    if (index >= vec->size()) return STATUS_BAD_VALUE;
    return AParcel_readParcelable(parcel, &(*vec)[index]);
}

template <typename P>
binder_status_t AParcel_writeNullableStdVectorParcelableElement(AParcel* parcel,
                                                                const void* vectorData,
                                                                size_t index) {
    const auto& vec = *static_cast<const std::optional<std::vector<P>>*>(vectorData);
    return AParcel_writeNullableParcelable(parcel, (*vec)[index]);
}

template <typename P>
binder_status_t AParcel_readNullableStdVectorParcelableElement(const AParcel* parcel,
                                                               void* vectorData, size_t index) {
    auto* vec = static_cast<std::optional<std::vector<P>>*>(vectorData);
    if (!vec->has_value() || index >= (*vec)->size()) return STATUS_BAD_VALUE;
    return AParcel_readNullableParcelable(parcel, &(**vec)[index]);
}

// ---- arrays: packed primitives, or one element after another ----

template <typename T>
static inline binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vec) {
    static_assert(!std::is_same_v<T, std::string>, "the std::string overload applies");
    int32_t length = 0;
    if (!lengthOf(vec.size(), &length)) return STATUS_BAD_VALUE;
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_writeInt32Array(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        return AParcel_writeUint32Array(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_writeInt64Array(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, uint64_t>) {
        return AParcel_writeUint64Array(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_writeFloatArray(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_writeDoubleArray(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_writeCharArray(parcel, vec.data(), length);
    } else if constexpr (std::is_same_v<T, uint8_t>) {
        return AParcel_writeByteArray(parcel, reinterpret_cast<const int8_t*>(vec.data()), length);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_writeBoolArray(parcel, &vec, length, AParcel_stdVectorGetter<bool>);
    } else if constexpr (is_parcelable_v<T> || is_interface_v<T>) {
        return AParcel_writeParcelableArray(parcel, &vec, length,
                                            AParcel_writeStdVectorParcelableElement<T>);
    } else {
        static_assert(dependent_false_v<T>, "unrecognized type");
    }
}

namespace {
// AParcel_readByteArray fills int8_t; the AIDL byte[] is std::vector<uint8_t>.
static inline bool byteVectorAllocator(void* vectorData, int32_t length, int8_t** outBuffer) {
    auto* vec = static_cast<std::vector<uint8_t>*>(vectorData);
    if (length < 0 || static_cast<size_t>(length) > vec->max_size()) return false;
    vec->assign(static_cast<size_t>(length), 0);
    *outBuffer = reinterpret_cast<int8_t*>(vec->data());
    return true;
}
static inline bool nullableByteVectorAllocator(void* vectorData, int32_t length,
                                               int8_t** outBuffer) {
    auto* vec = static_cast<std::optional<std::vector<uint8_t>>*>(vectorData);
    if (length < 0) {
        vec->reset();
        return true;
    }
    vec->emplace();
    return byteVectorAllocator(&**vec, length, outBuffer);
}
}  // namespace

template <typename T>
static inline binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vec) {
    static_assert(!std::is_same_v<T, std::string>, "the std::string overload applies");
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_readInt32Array(parcel, vec, AParcel_stdVectorAllocator<int32_t>);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        return AParcel_readUint32Array(parcel, vec, AParcel_stdVectorAllocator<uint32_t>);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_readInt64Array(parcel, vec, AParcel_stdVectorAllocator<int64_t>);
    } else if constexpr (std::is_same_v<T, uint64_t>) {
        return AParcel_readUint64Array(parcel, vec, AParcel_stdVectorAllocator<uint64_t>);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_readFloatArray(parcel, vec, AParcel_stdVectorAllocator<float>);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_readDoubleArray(parcel, vec, AParcel_stdVectorAllocator<double>);
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_readCharArray(parcel, vec, AParcel_stdVectorAllocator<char16_t>);
    } else if constexpr (std::is_same_v<T, uint8_t>) {
        return AParcel_readByteArray(parcel, vec, byteVectorAllocator);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBoolArray(parcel, vec, AParcel_stdVectorExternalAllocator<bool>,
                                     AParcel_stdVectorSetter<bool>);
    } else if constexpr (is_parcelable_v<T> || is_interface_v<T>) {
        return AParcel_readParcelableArray(parcel, vec, AParcel_stdVectorExternalAllocator<T>,
                                           AParcel_readStdVectorParcelableElement<T>);
    } else {
        static_assert(dependent_false_v<T>, "unrecognized type");
    }
}

template <typename T>
static inline binder_status_t AParcel_writeVector(AParcel* parcel,
                                                  const std::optional<std::vector<T>>& vec) {
    static_assert(!std::is_same_v<T, std::optional<std::string>>,
                  "the std::optional<std::string> overload applies");
    if constexpr (is_primitive_element_v<T>) {
        if (!vec.has_value()) return AParcel_writeInt32(parcel, -1);
        return AParcel_writeVector(parcel, *vec);
    } else if constexpr (is_nullable_parcelable_v<T> || is_interface_v<T>) {
        int32_t length = -1;
        if (vec.has_value() && !lengthOf(vec->size(), &length)) return STATUS_BAD_VALUE;
        return AParcel_writeParcelableArray(parcel, &vec, length,
                                            AParcel_writeNullableStdVectorParcelableElement<T>);
    } else {
        static_assert(dependent_false_v<T>, "unrecognized type");
    }
}

template <typename T>
static inline binder_status_t AParcel_readVector(const AParcel* parcel,
                                                 std::optional<std::vector<T>>* vec) {
    static_assert(!std::is_same_v<T, std::optional<std::string>>,
                  "the std::optional<std::string> overload applies");
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_readInt32Array(parcel, vec, AParcel_nullableStdVectorAllocator<int32_t>);
    } else if constexpr (std::is_same_v<T, uint32_t>) {
        return AParcel_readUint32Array(parcel, vec, AParcel_nullableStdVectorAllocator<uint32_t>);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_readInt64Array(parcel, vec, AParcel_nullableStdVectorAllocator<int64_t>);
    } else if constexpr (std::is_same_v<T, uint64_t>) {
        return AParcel_readUint64Array(parcel, vec, AParcel_nullableStdVectorAllocator<uint64_t>);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_readFloatArray(parcel, vec, AParcel_nullableStdVectorAllocator<float>);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_readDoubleArray(parcel, vec, AParcel_nullableStdVectorAllocator<double>);
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_readCharArray(parcel, vec, AParcel_nullableStdVectorAllocator<char16_t>);
    } else if constexpr (std::is_same_v<T, uint8_t>) {
        return AParcel_readByteArray(parcel, vec, nullableByteVectorAllocator);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBoolArray(parcel, vec, AParcel_nullableStdVectorExternalAllocator<bool>,
                                     AParcel_nullableStdVectorSetter<bool>);
    } else if constexpr (is_nullable_parcelable_v<T> || is_interface_v<T>) {
        return AParcel_readParcelableArray(parcel, vec,
                                           AParcel_nullableStdVectorExternalAllocator<T>,
                                           AParcel_readNullableStdVectorParcelableElement<T>);
    } else {
        static_assert(dependent_false_v<T>, "unrecognized type");
    }
}

// ---- the entry points generated code calls ----

// A required value. Optionals are not accepted here: they go through AParcel_writeNullableData.
template <typename T>
static inline binder_status_t AParcel_writeData(AParcel* parcel, const T& value) {
    if constexpr (is_specialization_v<T, std::vector>) {
        return AParcel_writeVector(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_writeBool(parcel, value);
    } else if constexpr (std::is_same_v<T, int8_t> || std::is_same_v<T, uint8_t>) {
        return AParcel_writeByte(parcel, static_cast<int8_t>(value));
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_writeChar(parcel, value);
    } else if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_writeInt32(parcel, value);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_writeInt64(parcel, value);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_writeFloat(parcel, value);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_writeDouble(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_writeRequiredStrongBinder(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return AParcel_writeData(parcel, static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (is_interface_v<T> || is_parcelable_v<T>) {
        return AParcel_writeParcelable(parcel, value);
    } else {
        static_assert(dependent_false_v<T>, "unrecognized type");
    }
}

// A @nullable value: std::optional of a string, array or parcelable, a std::unique_ptr
// parcelable, an interface or a binder. Anything else is written as a required value.
template <typename T>
static inline binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value) {
    if constexpr (is_specialization_v<T, std::optional> &&
                  is_specialization_v<first_template_type_t<T>, std::vector>) {
        return AParcel_writeVector(parcel, value);
    } else if constexpr (is_specialization_v<T, std::optional> &&
                         std::is_same_v<first_template_type_t<T>, std::string>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (is_nullable_parcelable_v<T> || is_interface_v<T>) {
        return AParcel_writeNullableParcelable(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_writeNullableStrongBinder(parcel, value);
    } else {
        return AParcel_writeData(parcel, value);
    }
}

template <typename T>
static inline binder_status_t AParcel_readData(const AParcel* parcel, T* value) {
    if constexpr (is_specialization_v<T, std::vector>) {
        return AParcel_readVector(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBool(parcel, value);
    } else if constexpr (std::is_same_v<T, int8_t> || std::is_same_v<T, uint8_t>) {
        return AParcel_readByte(parcel, reinterpret_cast<int8_t*>(value));
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return AParcel_readChar(parcel, value);
    } else if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_readInt32(parcel, value);
    } else if constexpr (std::is_same_v<T, int64_t>) {
        return AParcel_readInt64(parcel, value);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_readFloat(parcel, value);
    } else if constexpr (std::is_same_v<T, double>) {
        return AParcel_readDouble(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_readRequiredStrongBinder(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return AParcel_readData(parcel, reinterpret_cast<std::underlying_type_t<T>*>(value));
    } else if constexpr (is_interface_v<T> || is_parcelable_v<T>) {
        return AParcel_readParcelable(parcel, value);
    } else {
        static_assert(dependent_false_v<T>, "unrecognized type");
    }
}

template <typename T>
static inline binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value) {
    if constexpr (is_specialization_v<T, std::optional> &&
                  is_specialization_v<first_template_type_t<T>, std::vector>) {
        return AParcel_readVector(parcel, value);
    } else if constexpr (is_specialization_v<T, std::optional> &&
                         std::is_same_v<first_template_type_t<T>, std::string>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (is_nullable_parcelable_v<T> || is_interface_v<T>) {
        return AParcel_readNullableParcelable(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_readNullableStrongBinder(parcel, value);
    } else {
        return AParcel_readData(parcel, value);
    }
}

}  // namespace ndk
