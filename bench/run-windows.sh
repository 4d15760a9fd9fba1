#!/bin/sh
# Builds the windows benchmark (Release, mingw-w64) and runs it under Wine with its null display driver: the
# user search dialog listing and filtering 50 000 users against the bare list view and the bare matcher loop,
# both sides in one run. Prints the medians and ratios; exits 1 when a goal is missed.
#   BUILD_DIR  build directory     (default /tmp/korguibase-bench-windows)
#   JOBS       parallel build jobs (default 2)
set -eu

SOURCE_DIR=$(cd "$(dirname "$0")/.." && pwd)
BUILD_DIR=${BUILD_DIR:-/tmp/korguibase-bench-windows}
JOBS=${JOBS:-2}

cmake -S "$SOURCE_DIR" -B "$BUILD_DIR" -DCMAKE_BUILD_TYPE=Release -DKOR_BUILD_BENCH=ON -DKOR_BUILD_TESTS=OFF \
    -DCMAKE_TOOLCHAIN_FILE="$SOURCE_DIR/cmake/toolchain-mingw64.cmake" >/dev/null
cmake --build "$BUILD_DIR" -j"$JOBS" --target panels_bench
"$BUILD_DIR/wine-run.sh" --boot
status=0
"$BUILD_DIR/wine-run.sh" "$BUILD_DIR/bin/panels_bench.exe" </dev/null >"$BUILD_DIR/panels-bench.txt" 2>&1 || status=$?
"$BUILD_DIR/wine-run.sh" --shutdown
cat "$BUILD_DIR/panels-bench.txt"
exit $status
