#!/usr/bin/env bash
# Builds the fuzz preset and runs every libFuzzer target for a bounded time, each from its seed
# corpus in fuzz/corpus/<target>/ (new inputs go to build/fuzz/corpus/<target>/, not into the
# repository). A finding fails the run once every target has run; its input is kept as
# build/fuzz/findings/<target>-crash-<hash> (or leak-, timeout-, oom-) beside the fuzzer's log.
#   scripts/fuzz.sh [seconds per target, default 15] [target ...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-15}"
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(xml_writer decimal ole_date code_page settings fixture cookie response gateway_request)
fi

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

findings=build/fuzz/findings
mkdir -p "$findings"
status=0
for target in "${targets[@]}"; do
  echo "=== fuzz ${target} (${seconds} s)"
  work="build/fuzz/corpus/${target}"
  log="${findings}/${target}.log"
  mkdir -p "$work"
  if ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
      "build/fuzz/fuzz/${target}_fuzzer" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 \
      -print_final_stats=1 -artifact_prefix="${findings}/${target}-" "$work" "fuzz/corpus/${target}" \
      >"$log" 2>&1; then
    grep -E "stat::number_of_executed_units" "$log" || true
  else
    grep -E "ERROR|FINDING|SUMMARY|runtime error|^    #[0-9] |Test unit written" "$log" | head -n 40 || true
    echo "fuzz ${target}: FINDING (log and input in ${findings}/)" >&2
    status=1
  fi
done
exit $status
