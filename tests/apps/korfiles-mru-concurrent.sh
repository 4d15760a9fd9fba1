#!/bin/sh
# Eighty `korfiles settings mru add` processes at once, in forty pairs, on one fresh registry store: each
# must end with 0 and every path must be in the list afterwards. A read in one transaction and a write in
# another would let one adder's write drop another's path.
#   $1  the korfiles program
#   $2  the registry store to create (removed first, with its journal files)
set -u
program=$1
store=$2
rm -f "$store" "$store-wal" "$store-shm" "$store-journal"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

pids=""
pair=0
while [ "$pair" -lt 40 ]; do
    for side in a b; do
        "$program" settings "--registry=$store" mru add "C:\\opt\\pair$pair-$side.opt" \
            >"$work/out-$pair-$side" 2>"$work/err-$pair-$side" &
        pids="$pids $!:$pair-$side"
    done
    pair=$((pair + 1))
done

failed=0
for entry in $pids; do
    pid=${entry%%:*}
    name=${entry#*:}
    if ! wait "$pid"; then
        echo "adder $name did not end with 0:" >&2
        cat "$work/err-$name" >&2
        failed=1
    fi
done

"$program" settings "--registry=$store" >"$work/shown" 2>"$work/shown-err" || {
    echo "showing the settings failed:" >&2
    cat "$work/shown-err" >&2
    exit 1
}
missing=0
pair=0
while [ "$pair" -lt 40 ]; do
    for side in a b; do
        if ! grep -Fqx "option-file-mru: C:\\opt\\pair$pair-$side.opt" "$work/shown"; then
            echo "missing from the list: C:\\opt\\pair$pair-$side.opt" >&2
            missing=$((missing + 1))
        fi
    done
    pair=$((pair + 1))
done
present=$(grep -c '^option-file-mru: C:\\opt\\pair' "$work/shown")
echo "$present of 80 paths in the list"
[ "$failed" -eq 0 ] && [ "$missing" -eq 0 ] && [ "$present" -eq 80 ]
