#include "trox_sim/ResourceModel.h"

#include <algorithm>
#include <set>

namespace sim {

ResourceModel::ResourceModel(std::vector<ResourceDef> defs) : defs_(std::move(defs)) {
    for (size_t i = 0; i < defs_.size(); ++i) {
        byId_[defs_[i].id] = i;
        if (!defs_[i].path.empty()) byPath_[defs_[i].path] = i;
        values_[defs_[i].id] = defs_[i].defaultValue;
    }
}

const ResourceDef* ResourceModel::find(int32_t id) const {
    auto it = byId_.find(id);
    return it == byId_.end() ? nullptr : &defs_[it->second];
}

const ResourceDef* ResourceModel::findByPath(const std::string& path) const {
    auto it = byPath_.find(path);
    return it == byPath_.end() ? nullptr : &defs_[it->second];
}

int64_t ResourceModel::merged(const ResourceDef& def) const {
    auto it = holds_.find(def.id);
    if (it == holds_.end() || it->second.empty()) return def.defaultValue;
    int64_t v = it->second.begin()->second;
    for (const auto& [holder, requested] : it->second) {
        v = def.kind == Kind::kBoost ? std::max(v, requested) : std::min(v, requested);
    }
    return std::clamp(v, def.min, def.max);
}

std::vector<Change> ResourceModel::apply(const Holder& holder,
                                         const std::vector<Setting>& settings) {
    std::set<int32_t> touched;
    for (auto& [id, holders] : holds_) {
        if (holders.erase(holder) != 0) touched.insert(id);
    }
    for (const Setting& s : settings) {
        if (find(s.id) == nullptr) continue;
        holds_[s.id][holder] = s.value;
        touched.insert(s.id);
    }
    std::vector<Change> changes;
    for (int32_t id : touched) {
        const int64_t before = values_[id];
        const int64_t after = merged(*find(id));
        values_[id] = after;
        if (before != after) changes.push_back({id, before, after});
    }
    return changes;
}

std::vector<Change> ResourceModel::release(const Holder& holder) {
    return apply(holder, {});
}

int64_t ResourceModel::value(int32_t id) const {
    auto it = values_.find(id);
    return it == values_.end() ? 0 : it->second;
}

size_t ResourceModel::holderCount(int32_t id) const {
    auto it = holds_.find(id);
    return it == holds_.end() ? 0 : it->second.size();
}

std::map<int32_t, int64_t> ResourceModel::heldBy(const Holder& holder) const {
    std::map<int32_t, int64_t> out;
    for (const auto& [id, holders] : holds_) {
        auto it = holders.find(holder);
        if (it != holders.end()) out[id] = it->second;
    }
    return out;
}

}  // namespace sim
