#pragma once

#include <cstddef>
#include <string>

namespace binder_impl {

// Both return false on malformed input (overlong forms, surrogates in UTF-8, lone surrogates).
bool utf8ToUtf16(const char* utf8, size_t length, std::u16string* out);
bool utf16ToUtf8(const char16_t* utf16, size_t length, std::string* out);

}  // namespace binder_impl
