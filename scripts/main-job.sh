#!/usr/bin/env bash
# Builds the parcelon tool and runs the main job on the bundled sample company: an e-mailed
# invoice with its PDF and, since it posts, the upload of the company data it refers to, driven
# pass by pass as the network adapter would, printed as a dry run.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target parcelon
export PARCELON_SETTINGS="$PWD/samples/ZPSSettings.aov"
exec build/release/parcelon build --company samples/sample-company.json \
  --form invoice:1001 --send email \
  --to "siobhan@obrien.example" --from "office@harborpine.example" \
  --subject "Invoice 1001 from Harbor & Pine" --text "Thank you for your business." \
  --pdf samples/invoice-1001.pdf --post
