#include "StringUtils.h"

#include <stdexcept>

namespace stringUtils {

const char* const WHITESPACE = " \n\r\t";

namespace {

// A null set is read as the empty set rather than crashing.
const char* orEmpty(const char* set) {
    return set == nullptr ? "" : set;
}

}  // namespace

bool contains(std::string haystack, std::string needle) {
    return haystack.find(needle) != std::string::npos;
}

bool equals(std::string a, std::string b) {
    return a == b;
}

int32_t parseInt(std::string text) {
    try {
        return std::stoi(text, nullptr, 10);
    } catch (const std::invalid_argument&) {
        return 0;
    } catch (const std::out_of_range&) {
        return 0;
    }
}

std::string valueOf(int32_t value) {
    return std::to_string(value);
}

std::string trimLeft(const std::string& text, const char* set) {
    const size_t start = text.find_first_not_of(orEmpty(set));
    return start == std::string::npos ? std::string() : text.substr(start);
}

std::string trimRight(const std::string& text, const char* set) {
    const size_t last = text.find_last_not_of(orEmpty(set));
    return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

std::string trim(const std::string& text, const char* set) {
    return trimRight(trimLeft(text, set), set);
}

std::vector<std::string> split(const std::string& text, const std::string& separators) {
    std::vector<std::string> tokens;
    size_t start = text.find_first_not_of(separators);
    while (start != std::string::npos) {
        const size_t end = text.find_first_of(separators, start);
        tokens.push_back(text.substr(start, end == std::string::npos ? end : end - start));
        if (end == std::string::npos) break;
        start = text.find_first_not_of(separators, end);
    }
    return tokens;
}

}  // namespace stringUtils
