#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests and the tools need (as root, or with sudo).
set -euo pipefail
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo=sudo; fi

packages=(
  cmake ninja-build pkg-config g++ make
  clang libclang-rt-14-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  libxml2-dev libinih-dev nlohmann-json3-dev libsqlite3-dev libcpp-httplib-dev libcurl4-openssl-dev curl
  g++-mingw-w64-x86-64-posix mingw-w64-tools wine wine64
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  $sudo apt-get update
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
fi

