#include "Actions.h"

#include "PymWrapper.h"

namespace pymctl {

std::string bareActionName(const std::string& name) {
    const std::string marker = kActionMarker;
    return name.compare(0, marker.size(), marker) == 0 ? name.substr(marker.size()) : name;
}

std::optional<int32_t> findAction(const std::string& name) {
    const std::string bare = bareActionName(name);
    for (size_t i = 0; i < gActionList.size(); ++i) {
        if (gActionList[i] == bare) return static_cast<int32_t>(i);
    }
    return std::nullopt;
}

}  // namespace pymctl
