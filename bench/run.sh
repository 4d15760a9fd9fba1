#!/bin/sh
# Builds the benchmarks in Release and runs them, then prints each library time (UQArray, UQFileList) relative
# to its std:: counterpart (median over the repetitions, CPU and wall-clock) against its goal. Exits 1 when a
# goal is missed.
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
    entry = times.setdefault(function, {"real": [], "cpu": []})
    entry["real"].append(b["real_time"] * unit)
    entry["cpu"].append(b["cpu_time"] * unit)
median = {k: {c: statistics.median(v[c]) for c in v} for k, v in times.items()}

pairs = [
    ("append 10 M pointers", "BM_UQArrayAdd", "BM_VectorPushBack", 2.0),
    ("case-blind sort of 1 M paths", "BM_UQArraySortPointerArray", "BM_StdSortNoCase", 1.5),
    ("file list 1 M adds, 1 thread", "BM_FileList/1", "BM_FileListLimit/1", 2.0),
    ("file list 1 M adds, 2 threads", "BM_FileList/2", "BM_FileListLimit/2", 2.0),
]
print()
print("%-29s %11s %11s %9s %11s %11s %9s  %s" % ("comparison", "library cpu", "std cpu", "cpu ratio",
                                                "library wall", "std wall", "wall ratio", "goal (cpu)"))
for label, ours, theirs, goal in pairs:
    if ours not in median or theirs not in median:
        continue
    o, t = median[ours], median[theirs]
    ratio = o["cpu"] / t["cpu"]
    verdict = "ok" if ratio <= goal else "MISSED"
    missed = missed or ratio > goal
    print("%-29s %8.1f ms %8.1f ms %8.2fx %9.1f ms %8.1f ms %9.2fx  <= %.1fx %s" % (
        label, o["cpu"], t["cpu"], ratio, o["real"], t["real"], o["real"] / t["real"], goal, verdict))
sys.exit(1 if missed else 0)
PY
