#!/bin/bash
# Builds the libFuzzer harnesses (clang, ASan+UBSan) in build/fuzz and runs each one.
#   fuzz/run.sh short   a fixed number of executions per harness (what `make test` runs)
#   fuzz/run.sh long    FUZZ_SECONDS (default 300) per harness (`make fuzz`)
# Seeds come from the shipped samples and fuzz/seeds/; inputs that found new paths are kept in
# build/fuzz/corpus/<harness> between runs. A crash, a sanitizer report or a violated property is a finding:
# the input is saved as build/fuzz/findings/<harness>-crash-*, and the run fails.
set -u
mode=${1:-short}
root=$(cd "$(dirname "$0")/.." && pwd)
dir=$root/build/fuzz
jobs=${JOBS:-$(nproc)}
runs=${FUZZ_RUNS:-10000}
seconds=${FUZZ_SECONDS:-300}

harnesses=(fuzz_format fuzz_wildcard fuzz_listing fuzz_history fuzz_file_versions fuzz_option_file
           fuzz_mgmt_classes fuzz_directory)
declare -A samples=(
    [fuzz_listing]="kor/archiver/sample/listing.txt"
    [fuzz_history]="kor/archiver/sample/history.txt"
    [fuzz_file_versions]="apps/korfiles/sample/file-versions.txt"
    [fuzz_option_file]="kor/archiver/sample/kor.opt"
    [fuzz_mgmt_classes]="kor/archiver/sample/mgmtclasses.txt"
    [fuzz_directory]="kor/util/sample/directory.txt"
)

echo "=== fuzz: configure and build"
start=$(date +%s)
mkdir -p "$root/build"
if ! CC=clang CXX=clang++ cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKOR_BUILD_FUZZ=ON \
        -DKOR_BUILD_TESTS=OFF -DKOR_SANITIZE=address,undefined >"$dir.configure.log" 2>&1; then
    cat "$dir.configure.log"; exit 1
fi
if ! cmake --build "$dir" -j"$jobs" --target fuzzers >"$dir.build.log" 2>&1; then
    tail -n 60 "$dir.build.log"; exit 1
fi
echo "fuzz: built in $(($(date +%s) - start)) s"

status=0
mkdir -p "$dir/findings"
for h in "${harnesses[@]}"; do
    corpus=$dir/corpus/$h
    seeds=$dir/seeds/$h
    rm -rf "$seeds"
    mkdir -p "$corpus" "$seeds"
    [ -d "$root/fuzz/seeds/$h" ] && cp "$root/fuzz/seeds/$h"/* "$seeds"/
    [ -n "${samples[$h]:-}" ] && cp "$root/${samples[$h]}" "$seeds/sample"
    if [ "$mode" = long ]; then
        limit=(-max_total_time="$seconds")
    else
        limit=(-runs="$runs" -seed=1)
    fi
    log=$dir/$h.log
    t0=$(date +%s%N)
    ASAN_OPTIONS="detect_leaks=1 ${ASAN_OPTIONS:-}" UBSAN_OPTIONS="halt_on_error=1 print_stacktrace=1" \
        "$dir/bin/$h" "${limit[@]}" -max_len=8192 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$dir/findings/$h-" "$corpus" "$seeds" >"$log" 2>&1
    rc=$?
    ms=$((($(date +%s%N) - t0) / 1000000 + 1))
    execs=$(grep -oE 'stat::number_of_executed_units: *[0-9]+' "$log" | grep -oE '[0-9]+$')
    # libFuzzer's own rate is in whole seconds and says 0 for short runs; this one includes start-up.
    rate=$((${execs:-0} * 1000 / ms))
    if [ "$rc" -ne 0 ]; then
        status=1
        echo "fuzz: $h FOUND A PROBLEM (exit $rc); the input: $(ls -t "$dir/findings/$h-"* 2>/dev/null | head -n 1)"
        grep -E 'ERROR|runtime error|property violated|SUMMARY' "$log" | head -n 8
    else
        echo "fuzz: $h ${execs:-?} executions in $((ms / 1000)).$((ms % 1000 / 100)) s, $rate exec/s, $(ls "$corpus" | wc -l) inputs in its corpus"
    fi
done
echo "fuzz: $(($(date +%s) - start)) s in all"
[ "$status" -eq 0 ] && echo "fuzz: passed" || echo "fuzz: FAILED"
exit $status
