#pragma once

// Checks a trace in the Trace Event Format (JSON object form) as trace viewers read it. Header
// only; needs nlohmann-json.

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vexal::testing {

// Empty when trace is valid: each event has the fields its phase needs (X, C, i/I, M only), and
// the complete events of each pid/tid track nest. Otherwise the first problem found.
inline std::string traceProblem(const nlohmann::json& trace) {
    if (!trace.is_object() || !trace.contains("traceEvents") || !trace["traceEvents"].is_array())
        return "no traceEvents array";
    if (trace.value("displayTimeUnit", std::string()).empty()) return "no displayTimeUnit";
    std::map<std::pair<int64_t, int64_t>, std::vector<std::pair<int64_t, int64_t>>> tracks;
    for (const auto& e : trace["traceEvents"]) {
        const std::string where = e.dump().substr(0, 160);
        if (!e.is_object() || !e.contains("name") || !e["name"].is_string() || !e.contains("ph") ||
            !e["ph"].is_string() || !e.contains("ts") || !e["ts"].is_number() ||
            !e.contains("pid") || !e["pid"].is_number_integer() || !e.contains("tid") ||
            !e["tid"].is_number_integer())
            return "event without name, ph, ts, pid or tid: " + where;
        const std::string ph = e["ph"];
        const bool args = e.contains("args") && e["args"].is_object();
        if (ph == "X") {
            if (!e.contains("dur") || !e["dur"].is_number() || e["dur"].get<double>() < 0)
                return "complete event without dur: " + where;
            const int64_t ts = e["ts"].get<int64_t>();
            tracks[{e["pid"].get<int64_t>(), e["tid"].get<int64_t>()}].emplace_back(
                    ts, ts + e["dur"].get<int64_t>());
        } else if (ph == "C") {
            if (!args || e["args"].empty()) return "counter without args: " + where;
            for (const auto& [k, v] : e["args"].items()) {
                if (!v.is_number()) return "counter value " + k + " not a number: " + where;
            }
        } else if (ph == "i" || ph == "I") {
            const std::string s = e.value("s", std::string());
            if (s != "g" && s != "p" && s != "t") return "instant without scope s: " + where;
        } else if (ph == "M") {
            if (!args) return "metadata without args: " + where;
        } else {
            return "unexpected phase " + ph + ": " + where;
        }
    }
    for (auto& [track, slices] : tracks) {
        // Earlier first, and of two that start together the longer one encloses the other.
        std::sort(slices.begin(), slices.end(), [](const auto& a, const auto& b) {
            return a.first != b.first ? a.first < b.first : a.second > b.second;
        });
        std::vector<int64_t> open;  // ends of the enclosing slices
        for (const auto& [begin, end] : slices) {
            while (!open.empty() && open.back() <= begin) open.pop_back();
            if (!open.empty() && end > open.back()) {
                return "slices overlap without nesting on pid " + std::to_string(track.first) +
                       " tid " + std::to_string(track.second) + " at ts " + std::to_string(begin);
            }
            open.push_back(end);
        }
    }
    return {};
}

}  // namespace vexal::testing
