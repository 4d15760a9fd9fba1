#!/bin/sh
# Runs the gallery's pictures at 150 % (LogPixels 144) in a Wine prefix of their own, so the DPI never
# reaches the tests that expect 96. Wine reads LogPixels when a process starts: it is set before the run.
#   gallery-dpi.sh WINE_RUN PREFIX GALLERY_EXE ARGS...
wine_run=$1
prefix=$2
shift 2
KOR_WINEPREFIX=$prefix
export KOR_WINEPREFIX
"$wine_run" --boot || exit 1
timeout 60 "$wine_run" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 144 /f >/dev/null 2>&1
status=$?
if [ $status -eq 0 ]; then
    KOR_GALLERY_DPI=144 timeout 240 "$wine_run" "$@"
    status=$?
fi
"$wine_run" --shutdown
exit $status
