#!/bin/sh
# Runs a Windows test executable under Wine, in a prefix inside the build folder.
# The Wine server and the services that wineboot starts are launched with their standard streams
# detached and kept alive between tests, so that they never hold CTest's pipes open.
exe="$1"
build_dir=$(cd "$(dirname "$exe")" && while [ ! -f CMakeCache.txt ] && [ "$PWD" != / ]; do cd ..; done; pwd)
export WINEPREFIX="${PARCELON_WINEPREFIX:-$build_dir/wineprefix}"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
mkdir -p "$WINEPREFIX"
# Starts (or keeps) the server and the prefix's services; quick when they are already up.
wineserver -p 300 </dev/null >/dev/null 2>&1
wine wineboot </dev/null >/dev/null 2>&1
exec wine "$@"
