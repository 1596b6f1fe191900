#pragma once

// The Action wrapper: acquire by action name, release by handle, and turn numbered
// notifications into rule-control calls. It sits on the Event API (pym.h) only.

#include "PymClient.h"
#include "StringUtils.h"
#include "vexal_export.h"

#include <cstdint>
#include <string>
#include <vector>

// The action catalogue: a name's position is its event id. Read-only after load.
VEXAL_EXPORT extern const std::vector<std::string> gActionList;

// Opcode tables of the scenario list builders, indexed by a value's position.
VEXAL_EXPORT extern const uint32_t opCodeTargetLoad[3];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuCoreBoost[4];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuCoreLimit[4];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuFreqBoost[4];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuFreqLimit[4];

extern "C" {

// `eventId` is "QUARNE_" followed by a catalogue name. Returns PymEventAcquire's handle, or -1
// for a name that is not in the catalogue (nothing is sent then).
VEXAL_EXPORT int32_t PymEventAcquireWrapper(std::string eventId, std::string scene,
                                            std::string identity, int32_t timeout);
VEXAL_EXPORT void PymReleaseWapper(int32_t handle);
// Always 0. `arg2` and `arg3` are never read; `info` is only logged.
VEXAL_EXPORT int32_t PymNotifyWapper(std::string info, int32_t src, int32_t type, int32_t arg1,
                                     int32_t arg2, int32_t arg3, std::string data);

}  // extern "C"

// One resource whose value is engaged, even when `value` is empty.
VEXAL_EXPORT PymClient::Resource PymResourceInfo(int32_t opcode, std::string value);

// "80,90,70" or "0-80,1-90": up to three target loads.
VEXAL_EXPORT std::vector<PymClient::Resource> getTargetLoadList(std::string text);
// "colocation:1,groupmigrate:5-3".
VEXAL_EXPORT std::vector<PymClient::Resource> getColocationList(std::string text);
// Up to four ';'-separated groups (core boost, core limit, freq boost, freq limit) of
// ','-separated values; a group needs at least two values.
VEXAL_EXPORT std::vector<PymClient::Resource> getGameAdpList(std::string text);
// Only `level` and `text` are read; the other integers keep the calling order.
VEXAL_EXPORT std::vector<PymClient::Resource> getGameUpgradeList(int32_t unused1, int32_t unused2,
                                                                 int32_t level, int32_t unused4,
                                                                 int32_t unused5, std::string text);
// Sends the clearing list to pymRuleCtl itself.
VEXAL_EXPORT void clrGameUpgradeMode(int32_t ruleId, int32_t status);
