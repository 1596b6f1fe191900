#pragma once

// Small text helpers used by the action wrapper to test, cut and convert event names and
// notification payloads. None of them logs or keeps state.

#include "vexal_export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace stringUtils {

// Blank, line feed, carriage return, horizontal tab.
VEXAL_EXPORT extern const char* const WHITESPACE;

// An empty needle is always contained.
VEXAL_EXPORT bool contains(std::string haystack, std::string needle);
VEXAL_EXPORT bool equals(std::string a, std::string b);
// Base 10, leading blanks and trailing text tolerated; 0 when not a number or out of range.
VEXAL_EXPORT int32_t parseInt(std::string text);
VEXAL_EXPORT std::string valueOf(int32_t value);

// `set` is a NUL-terminated set of single characters.
VEXAL_EXPORT std::string trimLeft(const std::string& text, const char* set);
VEXAL_EXPORT std::string trimRight(const std::string& text, const char* set);
VEXAL_EXPORT std::string trim(const std::string& text, const char* set);

// `separators` is a set of single characters: runs count as one and no token is ever empty.
VEXAL_EXPORT std::vector<std::string> split(const std::string& text, const std::string& separators);

}  // namespace stringUtils
