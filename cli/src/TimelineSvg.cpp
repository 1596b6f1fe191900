#include "TimelineSvg.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <vector>

namespace pymctl {
namespace {

using json = nlohmann::json;

constexpr double kWidth = 1200;
constexpr double kLeft = 250;  // labels left of it, the plot right of it
constexpr double kRight = 1180;
constexpr double kLane = 22;
constexpr double kCounter = 34;
constexpr double kInstants = 34;
constexpr double kHeader = 24;

struct Slice {
    int64_t ts = 0;
    int64_t dur = 0;
    std::string name;
    std::string tip;
};

struct Counter {
    std::string name;
    std::vector<std::pair<int64_t, double>> points;
};

struct Instant {
    int64_t ts = 0;
    std::string name;
    std::string tip;
};

struct Process {
    std::string name;
    int64_t sort = std::numeric_limits<int64_t>::max();
    std::vector<int64_t> threads;  // in order of appearance
    std::map<int64_t, std::string> threadNames;
    std::map<int64_t, std::vector<Slice>> slices;
    std::vector<Counter> counters;
    std::vector<Instant> instants;
};

std::string esc(const std::string& s) {
    std::string out;
    for (char c : s) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string num(double v) {
    char buf[32];
    snprintf(buf, sizeof(buf), "%.1f", v);
    return buf;
}

std::string ms(int64_t us) {
    char buf[32];
    snprintf(buf, sizeof(buf), us % 1000 == 0 ? "%.0f ms" : "%.3f ms",
             static_cast<double>(us) / 1000);
    return buf;
}

std::string text(const json& j) {
    return j.is_string() ? j.get<std::string>() : j.dump();
}

std::string argText(const json& args) {
    std::string out;
    for (const auto& [k, v] : args.items()) out += "\n" + k + ": " + text(v);
    return out;
}

// Text that fits width at the font size used for labels, cut with an ellipsis.
std::string fit(const std::string& s, double width) {
    const size_t room = width > 0 ? static_cast<size_t>(width / 6.2) : 0;
    if (s.size() <= room) return s;
    if (room < 4) return {};
    return s.substr(0, room - 1) + "\xE2\x80\xA6";
}

// A stable colour per name, as trace viewers give one per slice name.
std::string colour(const std::string& name) {
    uint32_t h = 2166136261u;
    for (unsigned char c : name) h = (h ^ c) * 16777619u;
    return "hsl(" + std::to_string(h % 360) + ",55%,62%)";
}

Process& processOf(std::map<int64_t, Process>& ps, int64_t pid) {
    Process& p = ps[pid];
    if (p.name.empty()) p.name = "pid " + std::to_string(pid);
    return p;
}

void noteThread(Process& p, int64_t tid) {
    if (std::find(p.threads.begin(), p.threads.end(), tid) == p.threads.end())
        p.threads.push_back(tid);
}

std::map<int64_t, Process> readProcesses(const json& events, int64_t* t0, int64_t* t1) {
    std::map<int64_t, Process> ps;
    *t0 = std::numeric_limits<int64_t>::max();
    *t1 = std::numeric_limits<int64_t>::min();
    for (const json& e : events) {
        const std::string ph = e.value("ph", "");
        const int64_t pid = e.value("pid", int64_t{0});
        const int64_t tid = e.value("tid", pid);
        const std::string name = e.value("name", "");
        Process& p = processOf(ps, pid);
        const json args = e.value("args", json::object());
        if (ph == "M") {
            if (name == "process_name") p.name = args.value("name", p.name);
            if (name == "process_sort_index") p.sort = args.value("sort_index", p.sort);
            if (name == "thread_name") p.threadNames[tid] = args.value("name", "");
            continue;
        }
        const int64_t ts = e.value("ts", int64_t{0});
        const int64_t dur = ph == "X" ? e.value("dur", int64_t{0}) : 0;
        *t0 = std::min(*t0, ts);
        *t1 = std::max(*t1, ts + dur);
        if (ph == "X") {
            noteThread(p, tid);
            p.slices[tid].push_back({ts, dur, name, name + " (" + ms(dur) + ")" + argText(args)});
        } else if (ph == "C") {
            auto it = std::find_if(p.counters.begin(), p.counters.end(),
                                   [&](const Counter& c) { return c.name == name; });
            if (it == p.counters.end()) {
                p.counters.push_back(Counter{name, {}});
                it = p.counters.end() - 1;
            }
            for (const auto& [k, v] : args.items()) {
                if (v.is_number()) it->points.emplace_back(ts, v.get<double>());
            }
        } else if (ph == "i" || ph == "I") {
            p.instants.push_back({ts, name, name + argText(args)});
        }
    }
    if (*t0 > *t1) *t0 = *t1 = 0;
    if (*t1 == *t0) *t1 = *t0 + 1000;
    return ps;
}

class Canvas {
  public:
    Canvas(int64_t t0, int64_t t1) : t0_(t0), t1_(t1) {}

    double x(int64_t ts) const {
        return kLeft +
               (kRight - kLeft) * static_cast<double>(ts - t0_) / static_cast<double>(t1_ - t0_);
    }
    void add(const std::string& s) { body_ += s + "\n"; }
    void label(double y, const std::string& s, const char* cls = "lbl") {
        add("<text class=\"" + std::string(cls) + "\" x=\"8\" y=\"" + num(y) + "\">" +
            esc(fit(s, kLeft - 16)) + "</text>");
    }
    void band(double y, double h, bool shaded) {
        if (shaded) {
            add("<rect x=\"0\" y=\"" + num(y) + "\" width=\"" + num(kWidth) + "\" height=\"" +
                num(h) + "\" fill=\"#f4f5f7\"/>");
        }
    }

    void axis(double top, double bottom) {
        const double span = static_cast<double>(t1_ - t0_) / 1000;  // ms
        // 1, 2 or 5 times a power of ten, for at most ten ticks.
        const double base = std::pow(10, std::floor(std::log10(span / 10)));
        double step = base;
        for (double m : {1.0, 2.0, 5.0, 10.0}) {
            step = base * m;
            if (span / step <= 10) break;
        }
        for (double t = 0; t <= span + 1e-9; t += step) {
            const double px = x(t0_ + static_cast<int64_t>(std::llround(t * 1000)));
            add("<line class=\"grid\" x1=\"" + num(px) + "\" y1=\"" + num(top) + "\" x2=\"" +
                num(px) + "\" y2=\"" + num(bottom) + "\"/>");
            char buf[32];
            snprintf(buf, sizeof(buf), step < 1 ? "%.1f ms" : "%.0f ms", t);
            add("<text class=\"tick\" x=\"" + num(px) + "\" y=\"" + num(top - 6) + "\">" + buf +
                "</text>");
        }
    }

    void slices(double y, const std::vector<Slice>& slices) {
        for (const Slice& s : slices) {
            const double a = x(s.ts);
            const double w = std::max(x(s.ts + s.dur) - a, 1.5);
            add("<g><title>" + esc(s.tip) + "</title><rect x=\"" + num(a) + "\" y=\"" + num(y + 2) +
                "\" width=\"" + num(w) + "\" height=\"" + num(kLane - 4) + "\" rx=\"2\" fill=\"" +
                colour(s.name) + "\" stroke=\"#555\" stroke-width=\"0.5\"/>");
            const std::string shown = fit(s.name, w - 6);
            if (!shown.empty()) {
                add("<text class=\"bar\" x=\"" + num(a + 3) + "\" y=\"" + num(y + kLane - 7) +
                    "\">" + esc(shown) + "</text>");
            }
            add("</g>");
        }
    }

    void counter(double y, const Counter& c) {
        double lo = c.points.front().second;
        double hi = lo;
        for (const auto& [ts, v] : c.points) {
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
        auto vy = [&](double v) {
            return hi == lo ? y + kCounter - 6
                            : y + kCounter - 4 - (kCounter - 10) * (v - lo) / (hi - lo);
        };
        std::string path =
                "M" + num(x(c.points.front().first)) + " " + num(vy(c.points.front().second));
        std::string area = path;
        for (size_t i = 1; i < c.points.size(); ++i) {
            const std::string step =
                    " H" + num(x(c.points[i].first)) + " V" + num(vy(c.points[i].second));
            path += step;
            area += step;
        }
        path += " H" + num(kRight);
        area += " H" + num(kRight) + " V" + num(y + kCounter - 4) + " H" +
                num(x(c.points.front().first)) + " Z";
        char range[64];
        snprintf(range, sizeof(range), "%.0f .. %.0f", lo, hi);
        add("<g><title>" + esc(c.name + ": " + range) + "</title><path d=\"" + area +
            "\" fill=\"#7aa6d8\" fill-opacity=\"0.25\"/><path d=\"" + path +
            "\" fill=\"none\" stroke=\"#2f6db5\" stroke-width=\"1.5\"/></g>");
        label(y + 15, c.name);
        add("<text class=\"sub\" x=\"8\" y=\"" + num(y + 28) + "\">" + range + "</text>");
    }

    void instants(double y, const std::vector<Instant>& instants) {
        double lastLabel[2] = {-1e9, -1e9};
        int row = 0;
        for (const Instant& i : instants) {
            const double px = x(i.ts);
            add("<g><title>" + esc(i.tip) + "</title><path d=\"M" + num(px - 5) + " " + num(y + 4) +
                " L" + num(px + 5) + " " + num(y + 4) + " L" + num(px) + " " + num(y + 12) +
                " Z\" fill=\"#d9534f\"/></g>");
            // Labels take turns on two lines and give way where they would overlap.
            const double width = 6.2 * static_cast<double>(i.name.size());
            // Near the right edge a label reads leftwards from its marker.
            const bool left = px + width + 4 >= kWidth;
            const double from = left ? px - width - 4 : px;
            for (int tries = 0; tries < 2; ++tries, row = 1 - row) {
                if (from > lastLabel[row]) {
                    add("<text class=\"mark\" x=\"" + num(left ? px - 4 : px + 4) + "\" y=\"" +
                        num(y + 22 + 10 * row) + "\"" + (left ? " text-anchor=\"end\"" : "") + ">" +
                        esc(i.name) + "</text>");
                    lastLabel[row] = from + width + 8;
                    row = 1 - row;
                    break;
                }
            }
        }
    }

    std::string finish(double height, const std::string& title) const {
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(kWidth) + "\" height=\"" +
               num(height) + "\" viewBox=\"0 0 " + num(kWidth) + " " + num(height) +
               "\" font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\">\n"
               "<style>.lbl{font-size:11px;fill:#222}.grp{font-size:12px;font-weight:bold;"
               "fill:#111}.sub{font-size:9px;fill:#777}.bar{font-size:10px;fill:#111}"
               ".tick{font-size:10px;fill:#555;text-anchor:middle}.mark{font-size:9px;"
               "fill:#a12f2b}.grid{stroke:#ddd;stroke-width:1}</style>\n"
               "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
               "<text class=\"grp\" x=\"8\" y=\"18\">" +
               esc(title) + "</text>\n" + body_ + "</svg>\n";
    }

  private:
    int64_t t0_;
    int64_t t1_;
    std::string body_;
};

}  // namespace

std::string renderTimelineSvg(const json& trace) {
    if (!trace.is_object() || !trace.contains("traceEvents") || !trace["traceEvents"].is_array())
        throw std::runtime_error("not a trace: no \"traceEvents\" array");
    int64_t t0 = 0;
    int64_t t1 = 0;
    std::map<int64_t, Process> ps = readProcesses(trace["traceEvents"], &t0, &t1);
    std::vector<std::pair<int64_t, const Process*>> order;
    for (const auto& [pid, p] : ps) {
        if (!p.slices.empty() || !p.counters.empty() || !p.instants.empty())
            order.emplace_back(pid, &p);
    }
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.second->sort < b.second->sort; });

    Canvas c(t0, t1);
    const double top = 56;
    double y = top;
    for (const auto& [pid, p] : order) {
        c.band(y, kHeader, true);
        c.add("<text class=\"grp\" x=\"8\" y=\"" + num(y + 16) + "\">" +
              esc(fit(p->name + "  (pid " + std::to_string(pid) + ")", kWidth - 16)) + "</text>");
        y += kHeader;
        size_t flat = 0;
        for (const Counter& counter : p->counters) {
            std::set<double> values;
            for (const auto& pt : counter.points) values.insert(pt.second);
            if (values.size() < 2) {
                ++flat;
                continue;
            }
            c.counter(y, counter);
            y += kCounter;
        }
        if (flat != 0) {
            c.label(y + 14, std::to_string(flat) + " more counters held one value", "sub");
            y += 20;
        }
        for (int64_t tid : p->threads) {
            auto name = p->threadNames.find(tid);
            c.label(y + 15,
                    name != p->threadNames.end() ? name->second : "tid " + std::to_string(tid));
            c.slices(y, p->slices.at(tid));
            y += kLane;
        }
        if (!p->instants.empty()) {
            c.label(y + 15, "instants");
            c.instants(y, p->instants);
            y += kInstants;
        }
        y += 6;
    }
    c.axis(top - 4, y);
    std::string title = "timeline";
    if (trace.contains("otherData") && trace["otherData"].is_object()) {
        const json& d = trace["otherData"];
        title = d.value("service", std::string("service")) + " timeline, " + ms(t1 - t0) + ", " +
                std::to_string(d.value("dropped_events", 0)) + " events dropped";
    }
    return c.finish(y + 10, title);
}

}  // namespace pymctl
