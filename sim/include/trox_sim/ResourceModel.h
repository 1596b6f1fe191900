#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sim {

// Boost: holders ask for at least a value, the highest wins. Limit: holders ask for at most a
// value, the lowest wins.
enum class Kind { kBoost, kLimit };

struct ResourceDef {
    int32_t id = 0;
    std::string name;
    std::string path;  // empty when the resource has no path
    Kind kind = Kind::kBoost;
    int64_t defaultValue = 0;
    int64_t min = 0;
    int64_t max = 0;
};

struct Setting {
    int32_t id = 0;
    int64_t value = 0;
    bool operator==(const Setting& o) const { return id == o.id && value == o.value; }
};

// Who holds a setting: a request (by handle) or a rule (by rule id).
struct Holder {
    enum class Type { kRequest, kRule };
    Type type = Type::kRequest;
    int32_t id = 0;
    bool operator<(const Holder& o) const { return type != o.type ? type < o.type : id < o.id; }
    bool operator==(const Holder& o) const { return type == o.type && id == o.id; }
};

struct Change {
    int32_t id = 0;
    int64_t oldValue = 0;
    int64_t newValue = 0;
    bool operator==(const Change& o) const {
        return id == o.id && oldValue == o.oldValue && newValue == o.newValue;
    }
};

// Current values of the resources, merged from what every holder asks for. Not thread-safe:
// the service serialises access.
class ResourceModel {
  public:
    explicit ResourceModel(std::vector<ResourceDef> defs);

    const ResourceDef* find(int32_t id) const;
    const ResourceDef* findByPath(const std::string& path) const;
    const std::vector<ResourceDef>& defs() const { return defs_; }

    // Replaces everything holder asked for with settings (unknown ids are ignored; a repeated
    // id keeps its last value). Returns the resources whose merged value moved, in id order.
    std::vector<Change> apply(const Holder& holder, const std::vector<Setting>& settings);
    // Drops everything holder asked for.
    std::vector<Change> release(const Holder& holder);

    int64_t value(int32_t id) const;
    size_t holderCount(int32_t id) const;
    // What holder asks for, per resource id.
    std::map<int32_t, int64_t> heldBy(const Holder& holder) const;

  private:
    int64_t merged(const ResourceDef& def) const;

    std::vector<ResourceDef> defs_;
    std::map<int32_t, size_t> byId_;
    std::map<std::string, size_t> byPath_;
    // resource id -> holder -> requested value
    std::map<int32_t, std::map<Holder, int64_t>> holds_;
    std::map<int32_t, int64_t> values_;
};

}  // namespace sim
