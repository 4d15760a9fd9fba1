#!/bin/sh
# Installs with apt-get whatever a target needs and this machine lacks (Debian 12).
#   install-deps.sh native|windows|fuzz
set -e
case "$1" in
native) packages="cmake make g++ libgtest-dev libbenchmark-dev libsqlite3-dev python3 unicode-data clang-format clang-tidy" ;;
windows) packages="cmake make g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev binutils-mingw-w64-x86-64 wine64 fonts-wine xvfb xauth libgtest-dev python3 unicode-data" ;;
fuzz) packages="cmake make clang libclang-rt-14-dev libsqlite3-dev python3 unicode-data" ;;
*) echo "usage: $0 native|windows|fuzz" >&2; exit 2 ;;
esac
missing=""
for p in $packages; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "Installing:$missing"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq $missing >/dev/null
