#!/bin/sh
# Builds korclient's benchmark (Release, mingw-w64) and runs it under Wine with its null display driver:
# migrate and retrieve of FILES files against CopyFileW of the same files, and the window's history search
# over RECORDS records against the store's own read plus a bare list view told of the rows (and, for reading,
# the same list filled row by row), each pair in one run.
# Prints files or records per second and the ratios; exits 1 when a goal is missed.
#   BUILD_DIR  build directory     (default /tmp/korguibase-bench-windows)
#   JOBS       parallel build jobs (default 2)
#   FILES      files               (default 10000)
#   RECORDS    history records     (default 1000000)
set -eu

SOURCE_DIR=$(cd "$(dirname "$0")/.." && pwd)
BUILD_DIR=${BUILD_DIR:-/tmp/korguibase-bench-windows}
JOBS=${JOBS:-2}
FILES=${FILES:-10000}
RECORDS=${RECORDS:-1000000}

cmake -S "$SOURCE_DIR" -B "$BUILD_DIR" -DCMAKE_BUILD_TYPE=Release -DKOR_BUILD_BENCH=ON -DKOR_BUILD_TESTS=OFF \
    -DCMAKE_TOOLCHAIN_FILE="$SOURCE_DIR/cmake/toolchain-mingw64.cmake" >/dev/null
cmake --build "$BUILD_DIR" -j"$JOBS" --target korclient_bench
"$BUILD_DIR/wine-run.sh" --boot
status=0
"$BUILD_DIR/wine-run.sh" "$BUILD_DIR/bin/korclient_bench.exe" "$FILES" "$RECORDS" </dev/null \
    >"$BUILD_DIR/korclient-bench.txt" 2>&1 || status=$?
"$BUILD_DIR/wine-run.sh" --shutdown
cat "$BUILD_DIR/korclient-bench.txt"
exit $status
