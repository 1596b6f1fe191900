// Text rendering used by generated toString() and transaction logs; the same text a device's
// header produces for the AIDL types.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcelable_utils.h>

#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace android {
namespace internal {

template <typename _T>
std::string ToString(const _T& t);

namespace details {

template <typename T, typename = void>
struct HasToStringMethod : std::false_type {};
template <typename T>
struct HasToStringMethod<T, std::void_t<decltype(std::declval<const T&>().toString())>>
    : std::true_type {};

// A toString(value) found by argument-dependent lookup (generated enums have one).
template <typename T, typename = void>
struct HasToStringFunction : std::false_type {};
template <typename T>
struct HasToStringFunction<T, std::void_t<decltype(toString(std::declval<const T&>()))>>
    : std::true_type {};

template <typename T, template <typename...> class Template>
struct IsInstantiationOf : std::false_type {};
template <template <typename...> class Template, typename... Args>
struct IsInstantiationOf<Template<Args...>, Template> : std::true_type {};

// optional (@nullable), unique_ptr (@nullable(heap=true)), shared_ptr (interfaces).
template <typename T>
struct IsPointerLike : std::bool_constant<IsInstantiationOf<T, std::optional>::value ||
                                          IsInstantiationOf<T, std::unique_ptr>::value ||
                                          IsInstantiationOf<T, std::shared_ptr>::value> {};

template <typename T, typename = void>
struct IsIterable : std::false_type {};
template <typename T>
struct IsIterable<T, std::void_t<decltype(std::begin(std::declval<const T&>())),
                                 decltype(std::end(std::declval<const T&>()))>> : std::true_type {};

// Objects with no text of their own.
template <typename T>
struct ToEmptyString : std::bool_constant<std::is_base_of_v<::ndk::ICInterface, T>> {};

inline std::string Utf16UnitToUtf8(char16_t unit) {
    std::string out;
    const uint32_t c = unit;
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xc0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3f));
    } else {
        out += static_cast<char>(0xe0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (c & 0x3f));
    }
    return out;
}

}  // namespace details

template <typename _T>
std::string ToString(const _T& t) {
    if constexpr (details::ToEmptyString<_T>::value) {
        return "<unimplemented>";
    } else if constexpr (std::is_same_v<_T, bool>) {
        return t ? "true" : "false";
    } else if constexpr (std::is_same_v<_T, char16_t>) {
        return details::Utf16UnitToUtf8(t);
    } else if constexpr (std::is_arithmetic_v<_T>) {
        return std::to_string(t);
    } else if constexpr (std::is_same_v<_T, std::string>) {
        return t;
    } else if constexpr (std::is_same_v<_T, ::ndk::SpAIBinder>) {
        std::ostringstream out;
        out << "binder:" << std::hex << t.get();
        return out.str();
    } else if constexpr (std::is_same_v<_T, ::ndk::ScopedFileDescriptor>) {
        return "fd:" + std::to_string(t.get());
    } else if constexpr (details::IsPointerLike<_T>::value || std::is_pointer_v<_T>) {
        if (!t) return "(null)";
        return ToString(*t);
    } else if constexpr (details::HasToStringMethod<_T>::value) {
        return t.toString();
    } else if constexpr (details::HasToStringFunction<_T>::value) {
        return toString(t);
    } else if constexpr (details::IsIterable<_T>::value) {
        std::string out = "[";
        bool first = true;
        for (const auto& element : t) {
            if (!first) out += ", ";
            first = false;
            // The element type, not the iterator's: std::vector<bool> hands out proxies.
            out += ToString<typename _T::value_type>(element);
        }
        return out + "]";
    } else {
        return "{no toString() implemented}";
    }
}

}  // namespace internal
}  // namespace android
