#!/bin/sh
# Runs a test program at a system DPI of its own, in a Wine prefix of its own, so the DPI never reaches the
# tests that expect 96. Wine reads LogPixels when a process starts: it is set before the run.
#   dpi-run.sh WINE_RUN PREFIX DPI PROGRAM ARGS...
wine_run=$1
prefix=$2
dpi=$3
shift 3
KOR_WINEPREFIX=$prefix
export KOR_WINEPREFIX
"$wine_run" --boot || exit 1
timeout 60 "$wine_run" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$dpi" /f >/dev/null 2>&1
status=$?
if [ $status -eq 0 ]; then
    timeout 240 "$wine_run" "$@"
    status=$?
fi
"$wine_run" --shutdown
exit $status
