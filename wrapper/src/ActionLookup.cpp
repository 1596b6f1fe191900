#include "ActionLookup.h"

#include "PymWrapper.h"

#include <unordered_map>

namespace vexal::wrapper {
namespace {

using ActionIndex = std::unordered_map<std::string_view, int32_t>;

// Keys view the catalogue's own strings, so gActionList stays the single source of the names.
// Built once, on first use or from the catalogue's initialiser, whichever comes first.
const ActionIndex& actionIndex() {
    static const ActionIndex index = [] {
        ActionIndex built;
        built.reserve(gActionList.size());
        for (size_t position = 0; position < gActionList.size(); ++position) {
            // emplace keeps an existing key, so a repeated name maps to its first position.
            built.emplace(gActionList[position], static_cast<int32_t>(position));
        }
        return built;
    }();
    return index;
}

}  // namespace

bool buildActionIndex() {
    actionIndex();
    return true;
}

int32_t findActionId(std::string_view eventName) {
    // Containment, then a plain cut: a marker anywhere but in front leaves a remainder that no
    // name equals, which is the walk's result too.
    if (eventName.find(kEventMarker) == std::string_view::npos) return -1;
    const ActionIndex& index = actionIndex();
    const auto found = index.find(eventName.substr(kEventMarker.size()));
    return found == index.end() ? -1 : found->second;
}

}  // namespace vexal::wrapper
