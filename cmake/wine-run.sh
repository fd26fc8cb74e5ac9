#!/bin/sh
# Runs a Windows test executable under Wine, in a prefix inside the build folder. The prefix is
# primed once with its standard streams detached, so that the services Wine starts do not
# inherit CTest's pipes.
exe="$1"
build_dir=$(cd "$(dirname "$exe")" && while [ ! -f CMakeCache.txt ] && [ "$PWD" != / ]; do cd ..; done; pwd)
export WINEPREFIX="${PARCELON_WINEPREFIX:-$build_dir/wineprefix}"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$WINEPREFIX"
  wine wineboot </dev/null >/dev/null 2>&1
  wineserver -w </dev/null >/dev/null 2>&1
fi
exec wine "$@"
