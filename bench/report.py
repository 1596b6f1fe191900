#!/usr/bin/env python3
"""Turns the benchmarks' JSON into bench/RESULTS.md. Every figure comes from the JSON."""
import argparse
import json
import os
from collections import defaultdict

ap = argparse.ArgumentParser()
ap.add_argument("--dir", required=True)
ap.add_argument("--out", required=True)
ap.add_argument("--compiler", required=True)
ap.add_argument("--build-type", required=True)
ap.add_argument("--load", required=True)
ap.add_argument("--reps", required=True)
args = ap.parse_args()

runs = defaultdict(list)
context = {}
for prog in ("wrapper_lookup_bench", "call_bench", "socket_bench"):
    with open(os.path.join(args.dir, prog + ".json")) as f:
        data = json.load(f)
    context = data["context"]
    for b in data["benchmarks"]:
        if b.get("run_type") != "iteration":
            continue
        if b.get("error_occurred"):
            raise SystemExit(f"{b['name']}: {b.get('error_message')}")
        runs[b["run_name"]].append(b)

SCALE = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def ns(name):
    """Best (least disturbed) repetition's real time per iteration, in ns."""
    if name not in runs:
        raise SystemExit(f"missing benchmark {name}")
    return min(r["real_time"] * SCALE[r["time_unit"]] for r in runs[name])


def cpu_ns(name):
    return min(r["cpu_time"] * SCALE[r["time_unit"]] for r in runs[name])


def rate(name):
    """Best repetition's calls per second (all threads together)."""
    return max(r["items_per_second"] for r in runs[name])


def counter(name, key):
    return max(r[key] for r in runs[name])


def f_ns(v):
    return f"{v / 1000:.2f} µs" if abs(v) >= 1000 else f"{v:.1f} ns"


rows = []  # (item, figure, value, baseline, baseline value, ratio, target, met)


def row(item, what, value, base, base_value, ratio, target="—", met="—"):
    rows.append((item, what, value, base, base_value, ratio, target, met))


def yes(ok):
    return "**met**" if ok else "**not met**"


notes = []

# 1. In process.
raw = ns("BM_RawPair")
bp = ns("BM_BpTroxPair")
warn = ns("BM_PymPair_Warn")
all_lines = ns("BM_PymPair_AllLines")
lines = counter("BM_PymPair_AllLines", "log_lines_per_iter")
r = warn / raw
row("1", "PymEventAcquire + PymRelease, in-process, liblog minimum priority warn", f_ns(warn),
    "2 raw AIBinder_transact, same parcels", f_ns(raw), f"{r:.2f}×", "≤ 1.3×", yes(r <= 1.3))
row("1", "the same pair through the generated BpTrox (no library)", f_ns(bp),
    "2 raw AIBinder_transact", f_ns(raw), f"{bp / raw:.2f}×")
r_all = all_lines / raw
per_line = (all_lines - warn) / lines if lines else float("nan")
row("1", f"pair with every line delivered to a dropping logger ({lines:.0f} lines per pair)",
    f_ns(all_lines), "2 raw AIBinder_transact", f_ns(raw), f"{r_all:.2f}×", "report")
row("1", "cost per delivered log line: (all lines − warn) / lines", f_ns(per_line), "—", "—", "—",
    "report")

# 2. Across processes.
sraw = ns("BM_SocketRawRoundTrips/real_time")
spair = ns("BM_SocketRawPair/real_time")
sbp = ns("BM_SocketBpTroxPair/real_time")
spym = ns("BM_SocketPymPair_Warn/real_time")
req_bytes = counter("BM_SocketRawRoundTrips/real_time", "request_bytes")
rep_bytes = counter("BM_SocketRawRoundTrips/real_time", "reply_bytes")
r2 = spym / sraw
row("2", "PymEventAcquire + PymRelease, Unix-socket transport, service in a child process",
    f_ns(spym),
    f"2 raw Unix-socket round trips to a child ({req_bytes:.0f} B out, {rep_bytes:.0f} B back)",
    f_ns(sraw), f"{r2:.2f}×", "≤ 1.5×", yes(r2 <= 1.5))
row("2", "2 raw AIBinder_transact over the socket transport (no library)", f_ns(spair),
    "2 raw Unix-socket round trips", f_ns(sraw), f"{spair / sraw:.2f}×")
row("2", "the same pair through the generated BpTrox over the socket transport", f_ns(sbp),
    "2 raw Unix-socket round trips", f_ns(sraw), f"{sbp / sraw:.2f}×")
row("2", "library over the kit's own cost: Event API pair", f_ns(spym),
    "2 raw AIBinder_transact over the socket", f_ns(spair), f"{spym / spair:.2f}×")

# 3. Concurrency.
p1 = rate("BM_PymPairThreads/real_time/threads:1")
p2 = rate("BM_PymPairThreads/real_time/threads:2")
k1 = rate("BM_RawPairThreads/real_time/threads:1")
k2 = rate("BM_RawPairThreads/real_time/threads:2")
s1 = rate("BM_SpinThreads/real_time/threads:1")
s2 = rate("BM_SpinThreads/real_time/threads:2")
waits = counter("BM_PymPairThreads/real_time/threads:2", "blocking_waits_per_iter")
c1 = cpu_ns("BM_PymPairThreads/real_time/threads:1")
c2 = cpu_ns("BM_PymPairThreads/real_time/threads:2")
r3 = p2 / p1
row("3", "Event API pairs per second, 2 calling threads", f"{p2 / 1000:.1f} k/s",
    "1 calling thread", f"{p1 / 1000:.1f} k/s", f"{r3:.2f}×", "≥ 1.6×", yes(r3 >= 1.6))
row("3", "raw AIBinder_transact pairs per second, 2 threads (no library)", f"{k2 / 1000:.1f} k/s",
    "1 thread", f"{k1 / 1000:.1f} k/s", f"{k2 / k1:.2f}×")
row("3", "machine check: a loop sharing nothing, 2 threads", f"{s2 / 1000:.1f} k/s", "1 thread",
    f"{s1 / 1000:.1f} k/s", f"{s2 / s1:.2f}×")
row("3", "blocking waits (voluntary context switches) per Event API pair, 2 threads",
    f"{waits:.4f}", "—", "—", "—", "0 if not serialised", yes(waits < 0.01))
row("3", "CPU time per Event API pair, 2 threads", f_ns(c2), "1 thread", f_ns(c1),
    f"{c2 / c1:.2f}×")

# 4. Client class, coding, callbacks.
for n in (1, 8, 32):
    lib = ns(f"BM_ClientRequest/{n}")
    base = ns(f"BM_RawRequest/{n}")
    row("4", f"troxHalclient::troxResCtlRequest, {n} resource{'s' if n > 1 else ''}", f_ns(lib),
        "raw AIBinder_transact, same parcel", f_ns(base), f"{lib / base:.2f}×", "report")
lib_rec = (ns("BM_ClientRequest/32") - ns("BM_ClientRequest/1")) / 31
raw_rec = (ns("BM_RawRequest/32") - ns("BM_RawRequest/1")) / 31
row("4", "troxResCtlRequest cost per record: (32 − 1 resources) / 31", f_ns(lib_rec),
    "raw call, per record", f_ns(raw_rec), f"{lib_rec / raw_rec:.2f}×", "report")
c32 = ns("BM_ParcelCodec/32")
c1r = ns("BM_ParcelCodec/1")
row("4", "parcel encode + decode, 32-record request", f_ns(c32), "1-record request", f_ns(c1r),
    f"{c32 / c1r:.2f}×", "report")
row("4", "parcel encode + decode per record: (32 − 1) / 31", f_ns((c32 - c1r) / 31), "—", "—", "—",
    "report")
for n in (1, 32):
    lib = ns(f"BM_CallbackClient/{n}")
    base = ns(f"BM_CallbackRaw/{n}")
    row("4", f"onCallback of {n} record{'s' if n > 1 else ''} through the library to an IClientCallback",
        f_ns(lib), "same call to a do-nothing ITroxCallback", f_ns(base), f"{lib / base:.2f}×",
        "report")
cb_rec = (ns("BM_CallbackClient/32") - ns("BM_CallbackClient/1")) / 31
cb_raw_rec = (ns("BM_CallbackRaw/32") - ns("BM_CallbackRaw/1")) / 31
row("4", "onCallback cost per record: (32 − 1) / 31", f_ns(cb_rec), "do-nothing callback, per record",
    f_ns(cb_raw_rec), f"{cb_rec / cb_raw_rec:.2f}×", "report")

# 5. Action lookup.
for case in ("hit_early", "hit_late", "miss", "miss_no_marker"):
    v = ns(f"lookup/{case}")
    wname = f"walk/{case}"
    base = f_ns(ns(wname)) if wname in runs else "—"
    ratio = f"{v / ns(wname):.3f}×" if wname in runs else "—"
    target = "< 100 ns" if case != "miss_no_marker" else "—"
    met = yes(v < 100) if case != "miss_no_marker" else "—"
    row("5", f"findActionId, {case.replace('_', ' ')}", f_ns(v), "linear walk of the list", base,
        ratio, target, met)

cpus = context.get("num_cpus", "?")
mhz = context.get("mhz_per_cpu", "?")
lines_out = []
w = lines_out.append
w("# Benchmark results")
w("")
w("Written by `bench/run` from the Google Benchmark JSON of this run; nothing here is typed in.")
w("")
w(f"- Machine: {cpus} cores at {mhz} MHz, shared with other builds; load average (1, 5, 15 min) "
  f"{args.load} (before -> after the run)")
w(f"- Compiler: {args.compiler}; build type {args.build_type}")
w(f"- Library: google benchmark {context.get('library_build_type', '?')} build; "
  f"{args.reps} repetitions of each benchmark, interleaved at random; each figure is the best "
  "repetition (least disturbed by the other load): lowest time per iteration, highest calls per "
  "second")
w("- Baselines run in the same program, against the same do-nothing service, on the same "
  "transport, with the same parcel bytes")
w("")
w("| # | figure | value | baseline | baseline value | ratio | target | met |")
w("|---|---|---|---|---|---|---|---|")
for rr in rows:
    w("| " + " | ".join(str(x) for x in rr) + " |")
w("")
notes_path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "NOTES.md")
if os.path.exists(notes_path):
    with open(notes_path) as f:
        w(f.read().rstrip())
    w("")
with open(args.out, "w") as f:
    f.write("\n".join(lines_out))
