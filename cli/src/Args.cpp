#include "Args.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace pymctl {
namespace {

bool looksNumeric(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && word[1] >= '0' && word[1] <= '9';
}

}  // namespace

int64_t parseInteger(const std::string& text, const std::string& what, int64_t min, int64_t max) {
    // strtoll alone would accept leading blanks, a '+' and trailing junk.
    bool digits = !text.empty();
    for (size_t i = 0; i < text.size() && digits; ++i) {
        const char c = text[i];
        digits = (c >= '0' && c <= '9') || (i == 0 && c == '-' && text.size() > 1);
    }
    if (!digits) throw UsageError(what + " '" + text + "' is not a whole number");
    errno = 0;
    char* end = nullptr;
    const long long v = std::strtoll(text.c_str(), &end, 10);
    if (errno == ERANGE || v < min || v > max) {
        throw UsageError(what + " " + text + " is out of range (" + std::to_string(min) + ".." +
                         std::to_string(max) + ")");
    }
    return v;
}

int32_t parseInt32(const std::string& text, const std::string& what, int64_t min, int64_t max) {
    return static_cast<int32_t>(parseInteger(text, what, min, max));
}

int32_t parseResourceId(const std::string& text, const std::string& what) {
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        const std::string hex = text.substr(2);
        if (hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            throw UsageError(what + " '" + text + "' is not a number");
        }
        errno = 0;
        const unsigned long long v = std::strtoull(hex.c_str(), nullptr, 16);
        if (errno == ERANGE || v > 0xFFFFFFFFull) {
            throw UsageError(what + " " + text + " is out of range (0x0..0xFFFFFFFF)");
        }
        return static_cast<int32_t>(static_cast<uint32_t>(v));
    }
    return parseInt32(text, what);
}

PymClient::Resource parseResourcePair(const std::string& text) {
    const size_t eq = text.find('=');
    if (eq == std::string::npos) throw UsageError("expected ID=VALUE, got '" + text + "'");
    PymClient::Resource r;
    r.id = parseResourceId(text.substr(0, eq));
    r.value = text.substr(eq + 1);
    if (r.value->empty()) throw UsageError("resource " + text.substr(0, eq) + " has no value");
    return r;
}

std::vector<PymClient::Resource> parseResourcePairs(const std::vector<std::string>& words) {
    std::vector<PymClient::Resource> out;
    for (const auto& w : words) out.push_back(parseResourcePair(w));
    return out;
}

std::vector<PymClient::Resource> parseResourceSettings(const std::vector<std::string>& words) {
    std::vector<PymClient::Resource> out = parseResourcePairs(words);
    for (size_t i = 0; i < out.size(); ++i) {
        const std::string id = words[i].substr(0, words[i].find('='));
        parseInteger(*out[i].value, "value of resource " + id, INT64_MIN, INT64_MAX);
    }
    return out;
}

std::optional<std::string> ParsedArgs::get(const std::string& name) const {
    auto it = options.find(name);
    if (it == options.end()) return std::nullopt;
    return it->second;
}

ParsedArgs parseArgs(const std::vector<std::string>& args, const std::vector<OptionDef>& known) {
    ParsedArgs out;
    bool optionsDone = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& word = args[i];
        if (optionsDone || word.empty() || word[0] != '-' || word == "-" || looksNumeric(word)) {
            out.positionals.push_back(word);
            continue;
        }
        if (word == "--") {
            optionsDone = true;
            continue;
        }
        std::string name = word;
        std::optional<std::string> inlineValue;
        const size_t eq = word.find('=');
        if (eq != std::string::npos) {
            name = word.substr(0, eq);
            inlineValue = word.substr(eq + 1);
        }
        const OptionDef* def = nullptr;
        for (const auto& s : known) {
            if (s.name == name) def = &s;
        }
        if (def == nullptr) throw UsageError("unknown option " + name);
        if (!def->takesValue) {
            if (inlineValue) throw UsageError("option " + name + " takes no value");
            out.options[name] = "";
        } else if (inlineValue) {
            out.options[name] = *inlineValue;
        } else if (i + 1 < args.size()) {
            out.options[name] = args[++i];
        } else {
            throw UsageError("option " + name + " needs a value");
        }
    }
    return out;
}

void expectPositionals(const ParsedArgs& args, size_t min, size_t max, const std::string& usage) {
    const size_t n = args.positionals.size();
    if (n < min) throw UsageError("missing arguments; usage: " + usage);
    if (n > max) {
        throw UsageError("unexpected argument '" + args.positionals[max] + "'; usage: " + usage);
    }
}

std::string hexId(int32_t id) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "0x%08X", static_cast<unsigned>(id));
    return buf;
}

}  // namespace pymctl
