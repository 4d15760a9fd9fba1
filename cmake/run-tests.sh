#!/bin/bash
# Builds and tests both targets: native (with AddressSanitizer and UndefinedBehaviorSanitizer) and
# windows (mingw-w64, every test under Wine), then the tests of the threaded code once more in a native
# ThreadSanitizer build. The project's own code compiles with -Werror (KOR_WERROR). After the native
# build the style checks run: clang-format over the tree's own .cpp and .h files, and clang-tidy (the
# checks of .clang-tidy) over the native build's own sources; then the libFuzzer harnesses run for a fixed
# number of executions each (fuzz/run.sh short). Prints each build's CTest summary, the style checks'
# result, the fuzzers' rates and the test case totals; any failure makes the run fail.
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

show_build_failure() { # build-log: the compiler's whole message, not only the lines that say "error"
    echo "--- build failed; the end of $1:"
    tail -n 80 "$1"
}

# The tree's own sources: tracked and new files, not build/ and not what git ignores.
own_sources() {
    if git -C "$root" rev-parse --is-inside-work-tree >/dev/null 2>&1; then
        git -C "$root" ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' |
            while read -r f; do [ -f "$root/$f" ] && echo "$root/$f"; done
    else
        find "$root" -path "$root/build" -prune -o \( -name '*.cpp' -o -name '*.h' \) -print
    fi
}

run_style() { # native-build-dir
    local dir=$1 start files failed=0
    echo "=== style: clang-format and clang-tidy"
    start=$(date +%s)
    if ! own_sources | xargs clang-format --dry-run -Werror >"$dir.format.log" 2>&1; then
        head -n 60 "$dir.format.log"
        echo "style: clang-format found unformatted code (clang-format -i fixes it)"
        failed=1
    fi
    # Every translation unit of the native build that is the tree's own (not GoogleTest, not generated).
    files=$(python3 - "$dir/compile_commands.json" "$root" <<'PY'
import json, os, sys
root = sys.argv[2] + "/"
for entry in json.load(open(sys.argv[1])):
    f = os.path.normpath(entry["file"])
    if f.startswith(root) and not f.startswith(root + "build/"):
        print(f)
PY
)
    if ! echo "$files" | xargs -P "$jobs" -n 4 clang-tidy -p "$dir" --quiet >"$dir.tidy.log" 2>&1; then
        grep -E 'error:|warning:' -A3 "$dir.tidy.log" | head -n 80
        echo "style: clang-tidy found problems (the whole output: $dir.tidy.log)"
        failed=1
    fi
    echo "style: $(echo "$files" | wc -l) files checked by clang-tidy, $(($(date +%s) - start)) s"
    if [ "$failed" -ne 0 ]; then
        status=1
        echo "style: FAILED"
    else
        echo "style: passed"
    fi
}

run_target() { # name build-dir cmake-args...
    local name=$1 dir=$2
    shift 2
    echo "=== $name: configure and build"
    if ! cmake -S "$root" -B "$dir" "$@" >"$dir.configure.log" 2>&1; then
        cat "$dir.configure.log"; status=1; return
    fi
    if ! cmake --build "$dir" -j"$jobs" >"$dir.build.log" 2>&1; then
        show_build_failure "$dir.build.log"; status=1; return
    fi
    echo "=== $name: test"
    (cd "$dir" && ctest --output-on-failure -j1) || status=1
    read -r p f < <(count_cases "$dir")
    echo "$name test cases: $p passed, $f failed"
    total_passed=$((total_passed + p))
    total_failed=$((total_failed + f))
}

# The test executables whose code runs on several threads; only these are built with ThreadSanitizer.
tsan_targets=(filelist_tests korarchiver_tests korthreads_tests search_tests wizard_tests wizard_core_tests)

run_tsan() { # build-dir
    local dir=$1 target regex launcher=()
    echo "=== native-tsan: configure and build"
    if ! cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=Debug -DKOR_SANITIZE=thread >"$dir.configure.log" 2>&1; then
        cat "$dir.configure.log"; status=1; return
    fi
    : >"$dir.build.log"
    for target in "${tsan_targets[@]}"; do
        if ! cmake --build "$dir" -j"$jobs" --target "$target" >>"$dir.build.log" 2>&1; then
            show_build_failure "$dir.build.log"; status=1; return
        fi
    done
    # ThreadSanitizer needs its shadow memory where it expects it; with a high mmap randomisation some
    # kernels place libraries there and every run aborts with "unexpected memory mapping". Running without
    # address space randomisation (setarch -R, inherited by the tests CTest starts) avoids that.
    if "$dir/bin/${tsan_targets[0]}" --gtest_list_tests 2>&1 | grep -q 'unexpected memory mapping'; then
        launcher=(setarch "$(uname -m)" -R)
        echo "native-tsan: running without address space randomisation"
    fi
    echo "=== native-tsan: test"
    regex="^($(IFS='|'; echo "${tsan_targets[*]}"))\$"
    (cd "$dir" && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 ${TSAN_OPTIONS:-}" \
        "${launcher[@]}" ctest --output-on-failure -j1 -R "$regex") || status=1
    read -r p f < <(count_cases "$dir")
    echo "native-tsan test cases: $p passed, $f failed"
    total_passed=$((total_passed + p))
    total_failed=$((total_failed + f))
}

run_fuzz() {
    echo "=== fuzz: libFuzzer harnesses, a fixed number of executions each"
    "$root/fuzz/run.sh" short || status=1
}

mkdir -p "$root/build"
run_target native "$root/build/native" -DCMAKE_BUILD_TYPE=Debug -DKOR_SANITIZE=address,undefined
run_style "$root/build/native"
run_fuzz
run_target windows "$root/build/windows" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw64.cmake"
run_tsan "$root/build/native-tsan"
echo "all: $total_passed passed, $total_failed failed"
[ "$total_failed" -eq 0 ] || status=1
exit $status
