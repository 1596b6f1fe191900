#pragma once

// The Action wrapper: acquire by action name, release by handle, and turn numbered
// notifications into rule-control calls. It sits on the Event API (pym.h) only, so its entry
// points block, fail and recover as the Event API calls they make (see pym.h): they never wait
// for the service to appear, may be called from any thread, and may throw std::bad_alloc. The
// catalogue, the opcode tables and the list builders touch no service and no shared state.

#include "PymClient.h"
#include "StringUtils.h"
#include "vexal_export.h"

#include <cstdint>
#include <string>
#include <vector>

// The action catalogue: a name's position is its event id; 199 names, some repeated (a repeated
// name resolves to its first position). Built when the library loads, read-only afterwards, so
// any thread may read it.
VEXAL_EXPORT extern const std::vector<std::string> gActionList;

// Opcode tables of the scenario list builders, indexed by a value's position. Constant.
VEXAL_EXPORT extern const uint32_t opCodeTargetLoad[3];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuCoreBoost[4];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuCoreLimit[4];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuFreqBoost[4];
VEXAL_EXPORT extern const uint32_t opCodeAdpXpuFreqLimit[4];

extern "C" {

// `eventId` is "QUARNE_" followed by a catalogue name. Sends PymEventAcquire(the name's
// position, `scene` as the package, `identity`, `timeout` as the duration, no resources) and
// returns its result: the service's handle, or -1. A name that is not in the catalogue gives
// -1 at once and sends nothing.
VEXAL_EXPORT int32_t PymEventAcquireWrapper(std::string eventId, std::string scene,
                                            std::string identity, int32_t timeout);
// PymRelease(handle): nothing is reported back.
VEXAL_EXPORT void PymReleaseWapper(int32_t handle);
// Turns notification `src` with switch `type` into at most one pymRuleCtl call and drops that
// call's result. Sources 1, 10, 11, 12, 16, 110, 129 and 1000 pass `type` on as the rule's
// status; 2, 3, 5 and 6 share rule 200; 8, 9, 14, 15, 102 and 111 build their own settings
// (from `type`, `arg1` and, for 14, `data`); 130, 131 and 9000 parse `data` with
// getTargetLoadList, getColocationList and getGameAdpList, and send nothing for an empty one.
// Any other source, or a `type` its source does not take, sends nothing. Always 0. `arg2` and
// `arg3` are never read; `info` is only logged.
VEXAL_EXPORT int32_t PymNotifyWapper(std::string info, int32_t src, int32_t type, int32_t arg1,
                                     int32_t arg2, int32_t arg3, std::string data);

}  // extern "C"

// One resource whose value is engaged, even when `value` is empty. Throws only std::bad_alloc.
VEXAL_EXPORT PymClient::Resource PymResourceInfo(int32_t opcode, std::string value);

// The list builders below parse scenario texts into resource lists, in the order the text
// gives them. Input they cannot read is skipped, never reported: the worst is an empty list.
// They throw only std::bad_alloc.

// "80,90,70" or "0-80,1-90": up to three target loads, opcodes from opCodeTargetLoad by the
// token's position; tokens beyond the third are ignored. A '-' anywhere in the text selects the
// second form, whose index before the '-' is not read and whose tokens without a value after
// it are skipped.
VEXAL_EXPORT std::vector<PymClient::Resource> getTargetLoadList(std::string text);
// "colocation:1,groupmigrate:5-3": a colocation value as given, and a group migration only
// when its second number is below its first and neither is -1 (two entries, from and to).
// Other keys and tokens without ':' are skipped.
VEXAL_EXPORT std::vector<PymClient::Resource> getColocationList(std::string text);
// Up to four ';'-separated groups (core boost, core limit, freq boost, freq limit) of
// ','-separated values; a group needs at least two values. Values are trimmed of whitespace and
// take their opcode from the group's table by position; a fifth value on is ignored.
VEXAL_EXPORT std::vector<PymClient::Resource> getGameAdpList(std::string text);
// Only `level` and `text` are read; the other integers keep the calling order. A `level` of 1
// or more gives a level entry, a non-empty `text` a text entry.
VEXAL_EXPORT std::vector<PymClient::Resource> getGameUpgradeList(int32_t unused1, int32_t unused2,
                                                                 int32_t level, int32_t unused4,
                                                                 int32_t unused5, std::string text);
// Sends the clearing list (the game-upgrade level opcode twice, "-1" then an empty value) to
// pymRuleCtl(ruleId, status, ...) itself, and drops its result. Blocks, fails and throws as
// pymRuleCtl.
VEXAL_EXPORT void clrGameUpgradeMode(int32_t ruleId, int32_t status);
