#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "trox_sim/RequestTable.h"
#include "trox_sim/ResourceModel.h"

// How the service reads numbers and ids out of requests and writes them into log and history
// lines; shared so that every line spells a request the same way.
namespace sim {

// Ids are read by their low 32 bits, whatever a client put in the high ones.
int32_t low32(int64_t id);
// A decimal number, surrounding blanks allowed; false for anything else.
bool parseValue(const std::string& text, int64_t* out);
std::string hexId(int32_t id);
std::string orNone(const std::optional<std::string>& s);
const char* typeName(int32_t type);
std::string settingsText(const std::vector<Setting>& settings);
// One line naming everything a live request holds.
std::string describe(const Request& r);

}  // namespace sim
