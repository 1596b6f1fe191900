#pragma once

#include "PymClient.h"

#include <aidl/vendor/vexal/hardware/trox/TroxRequestData.h>

#include <cstdint>
#include <string>

namespace vexal::link {

using ::aidl::vendor::vexal::hardware::trox::TroxRequestData;

// Ids travel zero-extended: -5 goes out as 0x00000000FFFFFFFB, never sign-extended.
inline int64_t wireId(int32_t id) {
    return static_cast<int64_t>(static_cast<uint32_t>(id));
}

// Replies are read by the low 32 bits of the id only.
inline int32_t replyId(int64_t wire) {
    return static_cast<int32_t>(static_cast<uint32_t>(wire));
}

// An entry carrying only an id; its texts stay absent.
inline TroxRequestData idEntry(int32_t id) {
    TroxRequestData entry;
    entry.res_Id = wireId(id);
    return entry;
}

// A resource setting: the value always goes out present, empty when the caller had none.
inline TroxRequestData resourceEntry(const PymClient::Resource& resource) {
    TroxRequestData entry = idEntry(resource.id);
    entry.res_Value = resource.value.value_or(std::string());
    return entry;
}

}  // namespace vexal::link
