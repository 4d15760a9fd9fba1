#!/bin/sh
# Builds the benchmarks in Release and runs them, then prints each library time (UQArray, UQFileList,
# UQSearchList) relative to its limit (median over the repetitions, CPU and wall-clock) against its goal,
# and the search list's peak memory relative to its limit's. Exits 1 when a goal is missed.
#   BUILD_DIR    build directory              (default /tmp/korguibase-bench)
#   REPETITIONS  repetitions of each benchmark (default 3)
#   JOBS         parallel build jobs           (default 2)
# Extra arguments go to the benchmark executable, e.g. --benchmark_filter=Sort.
set -eu

SOURCE_DIR=$(cd "$(dirname "$0")/.." && pwd)
BUILD_DIR=${BUILD_DIR:-/tmp/korguibase-bench}
REPETITIONS=${REPETITIONS:-3}
JOBS=${JOBS:-2}

cmake -S "$SOURCE_DIR" -B "$BUILD_DIR" -DCMAKE_BUILD_TYPE=Release -DKOR_BUILD_BENCH=ON -DKOR_BUILD_TESTS=OFF >/dev/null
cmake --build "$BUILD_DIR" -j"$JOBS" --target korguibase_bench

RESULTS="$BUILD_DIR/bench-results.json"
"$BUILD_DIR/bin/korguibase_bench" --benchmark_repetitions="$REPETITIONS" --benchmark_out="$RESULTS" \
    --benchmark_out_format=json "$@"

python3 - "$RESULTS" <<'PY'
import json
import statistics
import sys

with open(sys.argv[1]) as f:
    report = json.load(f)

# Median time per iteration of each benchmark function over its repetitions, in milliseconds, both
# wall-clock and CPU. The goals are judged on CPU time, which other processes on the machine disturb less.
UNIT_MS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
times = {}
missed = False
for b in report["benchmarks"]:
    if b.get("error_occurred"):
        print("error in %s: %s" % (b["name"], b.get("error_message", "")))
        missed = True
        continue
    if b.get("run_type", "iteration") != "iteration":
        continue
    # The name without the run options (min_time:, iterations:, process_time, real_time), arguments kept.
    function = "/".join(p for p in b["run_name"].split("/")
                        if ":" not in p and p not in ("process_time", "real_time", "manual_time"))
    unit = UNIT_MS[b["time_unit"]]
    entry = times.setdefault(function, {"real": [], "cpu": [], "mem": [], "cpu_total": []})
    entry["real"].append(b["real_time"] * unit)
    entry["cpu"].append(b["cpu_time"] * unit)
    # The search sides run in child processes: their processor time (all threads) and peak memory come as
    # counters.
    if "MiB_own" in b:
        entry["mem"].append(b["MiB_own"])
        entry["cpu_total"].append(b["cpu_total"] * 1e3)
median = {k: {c: statistics.median(v[c]) for c in v if v[c]} for k, v in times.items()}

# (label, library, limit, goal, judged on): "cpu" for single-threaded pairs; "real" (wall-clock) where a
# side uses a second thread, whose processor time the benchmark's CPU column does not see.
pairs = [
    ("append 10 M pointers", "BM_UQArrayAdd", "BM_VectorPushBack", 2.0, "cpu"),
    ("case-blind sort of 1 M paths", "BM_UQArraySortPointerArray", ("BM_KeyedSortLimit/0", "BM_KeyedSortLimit/1"),
     1.2, "real"),
    ("  same, vs std::sort (info)", "BM_UQArraySortPointerArray", "BM_StdSortNoCase", None, "cpu"),
    ("search 1 M records", "BM_SearchList/333333", "BM_SearchLimit/333333", 1.3, "real"),
    ("  same, vs std:: reference", "BM_SearchList/333333", "BM_SearchStdReference/333333", None, "real"),
    ("search 10 M records", "BM_SearchList/3333333", "BM_SearchLimit/3333333", 1.3, "real"),
    ("  same, vs std:: reference", "BM_SearchList/3333333", "BM_SearchStdReference/3333333", None, "real"),
    ("file list 1 M adds, 1 thread", "BM_FileList/1", "BM_FileListLimit/1", 2.0, "cpu"),
    ("file list 1 M adds, 2 threads", "BM_FileList/2", "BM_FileListLimit/2", 2.0, "cpu"),
]
print()
print("%-29s %11s %11s %9s %11s %11s %9s  %s" % ("comparison", "library cpu", "limit cpu", "cpu ratio",
                                                "library wall", "limit wall", "wall ratio", "goal"))
for label, ours, theirs, goal, judged in pairs:
    # Of several ways to the limit, the fastest.
    if isinstance(theirs, tuple):
        found = [t for t in theirs if t in median]
        if not found:
            continue
        theirs = min(found, key=lambda t: median[t]["real"])
    if ours not in median or theirs not in median:
        continue
    o, t = median[ours], median[theirs]
    # A child process's processor time, where there is one.
    ocpu, tcpu = o.get("cpu_total", o["cpu"]), t.get("cpu_total", t["cpu"])
    ratios = {"cpu": ocpu / tcpu, "real": o["real"] / t["real"]}
    if goal is None:
        verdict = "(not judged)"
    else:
        ok = ratios[judged] <= goal
        missed = missed or not ok
        verdict = "<= %.1fx %s (%s)" % (goal, "ok" if ok else "MISSED", "wall" if judged == "real" else "cpu")
    print("%-29s %8.1f ms %8.1f ms %8.2fx %9.1f ms %8.1f ms %9.2fx  %s" % (
        label, ocpu, tcpu, ratios["cpu"], o["real"], t["real"], ratios["real"], verdict))
    if "mem" in o and "mem" in t:
        ratio = o["mem"] / t["mem"]
        if goal is None:
            verdict = "(not judged)"
        else:
            ok = ratio <= 1.3
            missed = missed or not ok
            verdict = "<= 1.3x %s" % ("ok" if ok else "MISSED")
        print("%-29s %8.0f MiB %7.0f MiB %8.2fx %34s %s" % ("  peak memory", o["mem"], t["mem"], ratio, "", verdict))
sys.exit(1 if missed else 0)
PY
