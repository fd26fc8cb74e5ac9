#!/usr/bin/env bash
# The load test: one gateway simulator, 20 concurrent `parcelon send` processes, each its own
# company (the sample company under its own CompanyUID) sending 50 e-mailed invoices with their
# PDF and Post. Run twice: every send must complete, the simulator must have received every form
# (none lost), and its resident memory is printed after each round (it must stay flat).
# Usage: bench/load-test.sh [BUILD_DIR] (default build/release).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
senders=20
forms=50
export PARCELON_SETTINGS="$PWD/samples/ZPSSettings.aov"
source scripts/simulator.sh
rss() { awk '/VmRSS/ { print $2 " kB" }' "/proc/$gateway_pid/status"; }
echo "simulator at $url, resident memory at start: $(rss)"

form_options=()
for _ in $(seq "$forms"); do
  form_options+=(--form invoice:1001 --send email --to a@b.example --pdf samples/invoice-1001.pdf --post)
done
for s in $(seq "$senders"); do
  uid=$(printf '{7D0F6E2A-33C1-4B8E-9A51-%012d}' "$s")
  sed "s/{7D0F6E2A-33C1-4B8E-9A51-2C4E8F10B7D3}/$uid/" samples/sample-company.json >"$work/company-$s.json"
done

for round in 1 2; do
  start=$(date +%s%N)
  pids=()
  for s in $(seq "$senders"); do
    company=()
    [ "$round" = 1 ] && company=(--company "$work/company-$s.json")
    "$build/parcelon" send --gateway "$url" "${company[@]}" --store "$work/store-$s.db" "${form_options[@]}" \
      >"$work/send-$s.txt" 2>"$work/send-$s.err" &
    pids+=($!)
  done
  failed=0
  for pid in "${pids[@]}"; do wait "$pid" || failed=$((failed + 1)); done
  milliseconds=$((($(date +%s%N) - start) / 1000000))
  received=$(curl -s "$url/" | grep -c 'InvoiceEMailRq' || true)
  echo "round $round: $senders sends of $forms forms in $((milliseconds / 1000)).$(printf %03d $((milliseconds % 1000))) s, $failed failed;" \
       "forms received so far: $received of $((round * senders * forms)); resident memory: $(rss)"
  [ "$failed" = 0 ] && [ "$received" = $((round * senders * forms)) ] || { cat "$work"/send-*.err | tail -5; exit 1; }
done
