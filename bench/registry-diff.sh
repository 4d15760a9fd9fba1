#!/bin/sh
# A longer run of the registry comparison than make test's: one generated script on both builds (native
# and windows under Wine), answer files compared line by line. Needs both builds configured as
# cmake/run-tests.sh configures them; do not run it while a CTest of build/windows runs.
#   registry-diff.sh [SEED] [COUNT]    (default 7 and 200000)
set -eu

SOURCE_DIR=$(cd "$(dirname "$0")/.." && pwd)
SEED=${1:-7}
COUNT=${2:-200000}
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT

python3 "$SOURCE_DIR/tests/kor/base/registry-diff/generate_script.py" "$SEED" "$COUNT" "$WORK/generated.txt"
# The programs run directly (CTest would set its own script and answer paths); windows under the build's
# Wine prefix, booted and stopped here.
cmake --build "$SOURCE_DIR/build/native" -j2 --target registry_diff_tests >/dev/null
cmake --build "$SOURCE_DIR/build/windows" -j2 --target registry_diff_tests >/dev/null
mkdir -p "$WORK/native" "$WORK/windows"
cp "$SOURCE_DIR/tests/kor/base/registry-diff/deviations.txt" "$WORK/native/"
cp "$SOURCE_DIR/tests/kor/base/registry-diff/deviations.txt" "$WORK/windows/"
export KOR_REGDIFF_SCRIPT="$WORK/generated.txt" KOR_REGDIFF_RECORD=1
filter=--gtest_filter=RegistryDifferential.Generated*
KOR_REGDIFF_DIR="$WORK/native" KOR_REGISTRY_FILE="$WORK/native.sqlite" \
    "$SOURCE_DIR/build/native/bin/registry_diff_tests" "$filter" >/dev/null
WINE_RUN="$SOURCE_DIR/build/windows/wine-run.sh"
"$WINE_RUN" --boot
KOR_REGDIFF_DIR="$WORK/windows" "$WINE_RUN" "$SOURCE_DIR/build/windows/bin/registry_diff_tests.exe" "$filter" \
    </dev/null >/dev/null 2>&1 || true
"$WINE_RUN" --shutdown
if cmp -s "$WORK/native/generated.answers" "$WORK/windows/generated.answers"; then
    echo "seed $SEED: $COUNT operations, the same answers on both targets"
else
    diff "$WORK/windows/generated.answers" "$WORK/native/generated.answers" | head -40
    exit 1
fi
