# Sourced by the main job and the load test: starts the gateway simulator of the build folder
# "$build" on a free port, with its data and the scripts' scratch files in "$work", sets "$url" to
# its address, and stops it and removes "$work" when the script exits.
work=$(mktemp -d)
gateway_pid=""
cleanup() {
  if [ -n "$gateway_pid" ]; then kill "$gateway_pid" 2>/dev/null || true; wait "$gateway_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT
# The simulator prints its address (a free port on 127.0.0.1) as its first line.
: >"$work/address"
"$build/parcelon" gateway --port 0 --data "$work/gateway" >"$work/address" 2>"$work/gateway.log" &
gateway_pid=$!
# A loaded machine may take a while to start it; one that exits instead stops the script with its log.
for _ in $(seq 600); do
  [ "$(wc -l <"$work/address")" -ge 1 ] && break
  kill -0 "$gateway_pid" 2>/dev/null || break
  sleep 0.1
done
url=$(head -n 1 "$work/address")
if [ -z "$url" ]; then
  echo "the gateway simulator did not start:" >&2
  cat "$work/gateway.log" >&2
  exit 1
fi
