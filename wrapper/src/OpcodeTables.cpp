#include "PymWrapper.h"

const uint32_t opCodeTargetLoad[3] = {0x010108A0, 0x010108B0, 0x010108C0};
const uint32_t opCodeAdpXpuCoreBoost[4] = {0x01010B10, 0x01010B20, 0x01010B30, 0x01020070};
const uint32_t opCodeAdpXpuCoreLimit[4] = {0x01010B90, 0x01010BA0, 0x01010BB0, 0x01020080};
const uint32_t opCodeAdpXpuFreqBoost[4] = {0x01010010, 0x01010020, 0x01010030, 0x01020050};
const uint32_t opCodeAdpXpuFreqLimit[4] = {0x010100A0, 0x010100B0, 0x010100C0, 0x01020060};
