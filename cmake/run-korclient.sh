#!/bin/sh
# What `make run` runs once korclient is built: the program under Wine on a fresh sample in C:\korclient-run of
# the build's Wine prefix (BUILD/wineprefix/drive_c/korclient-run), a short path that the windows show whole.
# Without a display it walks its tour (migrate, search, retrieve, recall), prints the summary and the
# pictures, and ends with the tour's exit code; with DISPLAY set the window opens for the user.
#   run-korclient.sh BUILD
set -u
build=$(cd "$1" && pwd)
run="$build/wine-run.sh"
out="$build/wineprefix/drive_c/korclient-run"
win='C:\korclient-run'

# The display driver is chosen before the prefix's desktop starts: the window on the user's display, or
# Wine's null driver, which draws the windows in memory where the tour takes its pictures.
driver=null
[ -n "${DISPLAY:-}" ] && driver=x11
if ! "$run" --boot || ! "$run" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d $driver /f </dev/null >/dev/null 2>&1; then
    echo "korclient: the Wine prefix in $build/wineprefix could not be made" >&2
    exit 1
fi
"$run" --shutdown
PATH=/usr/lib/wine:$PATH WINEPREFIX="$build/wineprefix" wineserver -w </dev/null >/dev/null 2>&1
"$run" --boot
rm -rf "$out"
mkdir -p "$out"
if [ -n "${DISPLAY:-}" ]; then
    "$run" "$build/bin/korclient.exe" --sample "$win"
    status=$?
else
    "$run" "$build/bin/korclient.exe" --tour "$win" </dev/null
    status=$?
    if ls "$out"/pictures/*.png >/dev/null 2>&1; then
        echo "pictures on this machine:"
        for picture in "$out"/pictures/*.png; do
            echo "  $picture"
        done
    fi
    [ $status -eq 0 ] || echo "korclient: the tour failed (exit code $status); its trace is in $out/trace.txt" >&2
fi
"$run" --shutdown
exit $status
