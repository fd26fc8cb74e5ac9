#!/usr/bin/env bash
# Installs every dependency on a Debian machine, builds both targets (native Linux and the Windows
# cross build) and runs every test: native debug, native with sanitizers (then every fuzz target for
# a short time), and Windows under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

status=0
for preset in dev asan windows; do
  echo "=== ${preset} ==="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" || status=1
  if [ "$preset" = dev ]; then
    # Every benchmark once, briefly: one that crashes or fails fails the command; its figures are
    # printed, never judged.
    for bench in build/dev/bench/*_bench; do
      echo "--- ${bench} --quick"
      "$bench" --quick || status=1
    done
  fi
  if [ "$preset" = asan ]; then
    echo "=== fuzz ==="
    bash scripts/fuzz.sh 15 || status=1
  fi
done
exit $status
