#pragma once

// Strict reading of command-line words: whole-string numbers with range checks, ID=VALUE
// resource pairs, and the options of one subcommand.

#include "PymClient.h"

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace pymctl {

// Bad input from the user: reported on one line, exit status 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The service refused or could not be reached: exit status 1.
class CommandFailed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

int64_t parseInteger(const std::string& text, const std::string& what, int64_t min, int64_t max);
int32_t parseInt32(const std::string& text, const std::string& what, int64_t min = INT32_MIN,
                   int64_t max = INT32_MAX);
// Decimal, or 0x hexadecimal up to 0xFFFFFFFF taken as a 32-bit pattern (resource opcodes).
int32_t parseResourceId(const std::string& text, const std::string& what = "resource id");
// "ID=VALUE" with a non-empty value.
PymClient::Resource parseResourcePair(const std::string& text);
std::vector<PymClient::Resource> parseResourcePairs(const std::vector<std::string>& words);
// As above, for settings the service applies: each value a whole number.
std::vector<PymClient::Resource> parseResourceSettings(const std::vector<std::string>& words);

struct OptionDef {
    std::string name;  // with the leading dashes
    bool takesValue = true;
};

struct ParsedArgs {
    std::map<std::string, std::string> options;
    std::vector<std::string> positionals;

    bool has(const std::string& name) const { return options.count(name) != 0; }
    std::optional<std::string> get(const std::string& name) const;
};

// Splits args into known options and positionals. A word that starts with '-' and is not a
// number is an option; "--" ends options.
ParsedArgs parseArgs(const std::vector<std::string>& args, const std::vector<OptionDef>& known);

// Fails unless the number of positionals is within [min, max].
void expectPositionals(const ParsedArgs& args, size_t min, size_t max, const std::string& usage);

std::string hexId(int32_t id);

}  // namespace pymctl
