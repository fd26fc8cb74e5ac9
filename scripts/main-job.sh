#!/usr/bin/env bash
# Builds the parcelon tool and runs the main job on the bundled sample company over HTTP on this
# machine: starts the gateway simulator on a free port, sends invoice 1001 by e-mail with its PDF
# and Post (so the form pass first uploads the company data it refers to), sends a second form,
# shows that the second upload carried only what changed, prints the gateway's view of the
# company and stops the simulator.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target parcelon
export PARCELON_SETTINGS="$PWD/samples/ZPSSettings.aov"
build=build/release
source scripts/simulator.sh
echo "== gateway simulator at $url"

echo "== send 1: invoice 1001 by e-mail with its PDF and Post"
build/release/parcelon send --gateway "$url" --company samples/sample-company.json --store "$work/company.db" \
  --form invoice:1001 --send email \
  --to "siobhan@obrien.example" --from "office@harborpine.example" \
  --subject "Invoice 1001 from Harbor & Pine" --text "Thank you for your business." \
  --pdf samples/invoice-1001.pdf --post | tee "$work/send1.txt"

# The session stores the last upload's time as that time plus one second: a send within that
# second would count no earlier upload and carry the customers again.
sleep 2
echo "== send 2: estimate 2001 by e-mail with Post, on the same store"
build/release/parcelon send --gateway "$url" --store "$work/company.db" \
  --form estimate:2001 --send email \
  --to "siobhan@obrien.example" --from "office@harborpine.example" \
  --subject "Estimate E-17 from Harbor & Pine" --text "As discussed." \
  --pdf samples/invoice-1001.pdf --post >"$work/send2.txt"

# The records each upload carried: the list sections and their ClientIDs.
uploaded() {
  sed -n '/<DataUploadRq/,/<\/DataUploadRq>/p' "$1" |
    awk '/<[A-Za-z]+(Add|Del)>/ { section = $1; gsub(/[<> ]/, "", section) }
         /^ *<ClientID>/ && section != "" { id = $0; gsub(/ *<\/?ClientID>/, "", id); printf "  %s %s\n", section, id }
         /<\/[A-Za-z]+(Add|Del)>/ { section = "" }'
  grep -m1 -o '<LastDataUploadToken>[^<]*' "$1" | sed 's/<LastDataUploadToken>/  with the token: /'
}
echo "== the first upload carried:"
uploaded "$work/send1.txt"
echo "== the second upload carried only what changed since (the terms and the customer are already there):"
uploaded "$work/send2.txt"

echo "== the gateway's view ($url/)"
curl -s "$url/" | sed -e 's#<title>[^<]*</title>##' -e 's/<[^>]*>/ /g' -e 's/&amp;/\&/g' -e 's/&lt;/</g' -e 's/&gt;/>/g' -e 's/  */ /g' -e '/^ *$/d'
