#!/bin/bash
# Builds and tests both targets: native (with AddressSanitizer and UndefinedBehaviorSanitizer) and
# windows (mingw-w64, every test under Wine). Prints each target's CTest summary and the test case totals.
set -u
jobs=${JOBS:-$(nproc)}
root=$(cd "$(dirname "$0")/.." && pwd)
status=0
total_passed=0
total_failed=0

count_cases() { # $1 = build dir: sums GoogleTest's own counts from the last CTest log
    local log="$1/Testing/Temporary/LastTest.log" p=0 f=0 n
    if [ -f "$log" ]; then
        while read -r n; do p=$((p + n)); done < <(grep -aoE '\[  PASSED  \] [0-9]+ test' "$log" | grep -oE '[0-9]+')
        while read -r n; do f=$((f + n)); done < <(grep -aoE '\[  FAILED  \] [0-9]+ test' "$log" | grep -oE '[0-9]+')
    fi
    echo "$p $f"
}

run_target() { # name build-dir cmake-args...
    local name=$1 dir=$2
    shift 2
    echo "=== $name: configure and build"
    if ! cmake -S "$root" -B "$dir" "$@" >"$dir.configure.log" 2>&1; then
        cat "$dir.configure.log"; status=1; return
    fi
    if ! cmake --build "$dir" -j"$jobs" >"$dir.build.log" 2>&1; then
        grep -E 'error|Error' "$dir.build.log" | head -50; status=1; return
    fi
    echo "=== $name: test"
    (cd "$dir" && ctest --output-on-failure -j1) || status=1
    read -r p f < <(count_cases "$dir")
    echo "$name test cases: $p passed, $f failed"
    total_passed=$((total_passed + p))
    total_failed=$((total_failed + f))
}

mkdir -p "$root/build"
run_target native "$root/build/native" -DCMAKE_BUILD_TYPE=Debug -DKOR_SANITIZE=address,undefined
run_target windows "$root/build/windows" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw64.cmake"
echo "all: $total_passed passed, $total_failed failed"
[ "$total_failed" -eq 0 ] || status=1
exit $status
