#include "unicode.h"

#include <cstdint>

namespace binder_impl {

// Both converters size the output for the worst case once and write by index: strings cross
// every call (the interface token at least), and growing them a unit at a time showed up as
// a good part of a call's cost.
bool utf8ToUtf16(const char* utf8, size_t length, std::u16string* out) {
    // Never more units than bytes.
    out->resize(length);
    char16_t* o = out->data();
    size_t n = 0;
    const auto* s = reinterpret_cast<const unsigned char*>(utf8);
    size_t i = 0;
    while (i < length) {
        uint32_t lead = s[i];
        size_t extra;
        uint32_t cp;
        uint32_t minimum;
        if (lead < 0x80) {
            o[n++] = static_cast<char16_t>(lead);
            ++i;
            continue;
        } else if ((lead & 0xE0) == 0xC0) {
            extra = 1, cp = lead & 0x1F, minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2, cp = lead & 0x0F, minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3, cp = lead & 0x07, minimum = 0x10000;
        } else {
            return false;
        }
        if (length - i <= extra) return false;
        for (size_t k = 1; k <= extra; ++k) {
            uint32_t c = s[i + k];
            if ((c & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (c & 0x3F);
        }
        if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            o[n++] = static_cast<char16_t>(0xD800 + (cp >> 10));
            o[n++] = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            o[n++] = static_cast<char16_t>(cp);
        }
        i += extra + 1;
    }
    out->resize(n);
    return true;
}

bool utf16ToUtf8(const char16_t* utf16, size_t length, std::string* out) {
    // At most three bytes per unit (a surrogate pair, two units, makes four).
    out->resize(length * 3);
    char* o = out->data();
    size_t n = 0;
    for (size_t i = 0; i < length; ++i) {
        uint32_t cp = utf16[i];
        if (cp < 0x80) {
            o[n++] = static_cast<char>(cp);
            continue;
        }
        if (cp >= 0xD800 && cp <= 0xDBFF) {
            if (i + 1 >= length) return false;
            uint32_t low = utf16[i + 1];
            if (low < 0xDC00 || low > 0xDFFF) return false;
            cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
            ++i;
        } else if (cp >= 0xDC00 && cp <= 0xDFFF) {
            return false;
        }
        if (cp < 0x800) {
            o[n++] = static_cast<char>(0xC0 | (cp >> 6));
            o[n++] = static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            o[n++] = static_cast<char>(0xE0 | (cp >> 12));
            o[n++] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            o[n++] = static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            o[n++] = static_cast<char>(0xF0 | (cp >> 18));
            o[n++] = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            o[n++] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            o[n++] = static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    out->resize(n);
    return true;
}

}  // namespace binder_impl
