#!/usr/bin/env bash
# Installs every package needed to build, test, benchmark and fuzz the project on
# Debian 12. Does nothing when all of them are already installed.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  qtbase5-dev
  libgtest-dev libgmock-dev
  libshp-dev
  libproj-dev
  libxml2-utils python3
  clang-format
  clang libclang-rt-14-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "install-deps: missing packages: ${missing[*]}; run this script as root" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
