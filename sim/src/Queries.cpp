#include "Queries.h"

#include <android/log.h>

#include <string>

#include "RequestText.h"
#include "trox_sim/RequestType.h"

#define QLOG(prio, ...) __android_log_print(prio, tag, __VA_ARGS__)

namespace sim {

std::vector<TroxRequestData> answerQuery(const TroxRequestParcel& request, const QueryInputs& in,
                                         const char* tag) {
    std::vector<TroxRequestData> reply;
    auto numbered = [](int32_t id, const std::string& value) {
        TroxRequestData d;
        d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(id));
        d.res_Value = value;
        return d;
    };
    const auto& data = request.requestData;
    switch (request.requestType) {
        case kStateQuery:
            if (data.empty()) {
                for (const ResourceDef& s : in.model.defs())
                    reply.push_back(recordFor(in.model, s.id, false));
            }
            for (const TroxRequestData& e : data) {
                if (e.res_Path && !e.res_Path->empty()) {
                    const ResourceDef* def = in.model.findByPath(*e.res_Path);
                    if (def == nullptr) {
                        QLOG(ANDROID_LOG_WARN, "state of unknown path %s", e.res_Path->c_str());
                        continue;
                    }
                    reply.push_back(recordFor(in.model, def->id, true));
                    continue;
                }
                const int32_t id = low32(e.res_Id);
                if (id == kPowerConsistencyId) {
                    reply.push_back(numbered(id, in.config.powerConsistency));
                } else if (in.model.find(id) != nullptr) {
                    reply.push_back(recordFor(in.model, id, false));
                } else {
                    QLOG(ANDROID_LOG_WARN, "state of unknown resource %s", hexId(id).c_str());
                }
            }
            break;
        case kHistory:
            reply.assign(in.history.records().begin(), in.history.records().end());
            break;
        case kPowerModeStatus: {
            const int32_t mode = data.empty() ? 0 : low32(data[0].res_Id);
            auto it = in.config.powerModes.find(mode);
            if (it != in.config.powerModes.end()) {
                reply.push_back(numbered(mode, it->second));
            } else {
                QLOG(ANDROID_LOG_WARN, "unknown power mode %d", mode);
            }
            break;
        }
        case kPowerConsistency:
            reply.push_back(numbered(kPowerConsistencyId, in.config.powerConsistency));
            break;
        case kDataset:
            for (const auto& [id, value] : in.config.dataset) reply.push_back(numbered(id, value));
            break;
        case kFeatureStatus: {
            const int32_t feature = data.empty() ? 0 : low32(data[0].res_Id);
            auto it = in.config.features.find(feature);
            if (it != in.config.features.end()) {
                reply.push_back(numbered(feature, it->second));
            } else {
                QLOG(ANDROID_LOG_WARN, "unknown feature %d", feature);
            }
            break;
        }
        default:
            QLOG(ANDROID_LOG_WARN, "request kind %d is not a query", request.requestType);
            break;
    }
    QLOG(ANDROID_LOG_DEBUG, "%s query answered with %zu entries", typeName(request.requestType),
         reply.size());
    return reply;
}

TroxRequestData recordFor(const ResourceModel& model, int32_t id, bool byPath) {
    TroxRequestData d;
    const ResourceDef* def = model.find(id);
    if (byPath && def != nullptr && !def->path.empty()) {
        d.res_Path = def->path;
    } else {
        d.res_Id = static_cast<int64_t>(static_cast<uint32_t>(id));
    }
    d.res_Value = std::to_string(model.value(id));
    return d;
}

}  // namespace sim
