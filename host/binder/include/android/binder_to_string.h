// Text rendering used by generated toString() and transaction logs.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace android {
namespace internal {

template <typename T>
std::string ToString(const T& t);

namespace details {

template <typename T, typename = void>
struct HasToString : std::false_type {};
template <typename T>
struct HasToString<T, std::void_t<decltype(std::declval<const T&>().toString())>> : std::true_type {
};

template <typename T, typename = void>
struct Streamable : std::false_type {};
template <typename T>
struct Streamable<T,
                  std::void_t<decltype(std::declval<std::ostream&>() << std::declval<const T&>())>>
    : std::true_type {};

template <typename T>
struct IsOptional : std::false_type {};
template <typename T>
struct IsOptional<std::optional<T>> : std::true_type {};

template <typename T>
struct IsSharedPtr : std::false_type {};
template <typename T>
struct IsSharedPtr<std::shared_ptr<T>> : std::true_type {};

template <typename T>
struct IsUniquePtr : std::false_type {};
template <typename T>
struct IsUniquePtr<std::unique_ptr<T>> : std::true_type {};

template <typename T>
struct IsVector : std::false_type {};
template <typename T, typename A>
struct IsVector<std::vector<T, A>> : std::true_type {};

template <typename T>
struct IsStdArray : std::false_type {};
template <typename T, size_t N>
struct IsStdArray<std::array<T, N>> : std::true_type {};

inline std::string binderText(const void* p) {
    std::ostringstream os;
    os << "binder:" << p;
    return os.str();
}

template <typename Range>
std::string rangeText(const Range& range) {
    std::string out = "[";
    bool first = true;
    for (const auto& element : range) {
        if (!first) out += ", ";
        first = false;
        out += ::android::internal::ToString(element);
    }
    return out + "]";
}

}  // namespace details

template <typename T>
std::string ToString(const T& t) {
    using U = std::decay_t<T>;
    if constexpr (std::is_same_v<U, bool>) {
        return t ? "true" : "false";
    } else if constexpr (std::is_same_v<U, char>) {
        return std::string(1, t);
    } else if constexpr (std::is_arithmetic_v<U>) {
        return std::to_string(t);
    } else if constexpr (std::is_enum_v<U>) {
        return std::to_string(static_cast<std::underlying_type_t<U>>(t));
    } else if constexpr (std::is_same_v<U, std::string>) {
        return t;
    } else if constexpr (std::is_same_v<U, std::string_view>) {
        return std::string(t);
    } else if constexpr (std::is_same_v<U, const char*> || std::is_same_v<U, char*>) {
        return t == nullptr ? "(null)" : std::string(t);
    } else if constexpr (std::is_same_v<U, ::ndk::SpAIBinder>) {
        return t.get() == nullptr ? "(null)" : details::binderText(t.get());
    } else if constexpr (details::IsOptional<U>::value) {
        return t.has_value() ? ToString(*t) : "(null)";
    } else if constexpr (details::IsSharedPtr<U>::value || details::IsUniquePtr<U>::value) {
        using E = typename U::element_type;
        if (t == nullptr) return "(null)";
        if constexpr (std::is_base_of_v<::ndk::ICInterface, E>) {
            return details::binderText(static_cast<const void*>(t.get()));
        } else {
            return ToString(*t);
        }
    } else if constexpr (details::IsVector<U>::value || details::IsStdArray<U>::value) {
        return details::rangeText(t);
    } else if constexpr (details::HasToString<U>::value) {
        return t.toString();
    } else if constexpr (details::Streamable<U>::value) {
        std::ostringstream os;
        os << t;
        return os.str();
    } else {
        return "{no toString() implemented}";
    }
}

}  // namespace internal
}  // namespace android
