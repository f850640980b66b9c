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
  libgeos-dev
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

# The mirror answers now and then with a transient error ("Mirror sync in
# progress"); a command that still fails after the last attempt ends the
# script with its own error.
retry() {
  local attempt wait=15
  for attempt in 1 2 3 4 5; do
    "$@" && return 0
    [ "$attempt" -lt 5 ] || break
    echo "install-deps: '$*' failed (attempt $attempt of 5); trying again in ${wait} s" >&2
    sleep "$wait"
    wait=$((wait * 2))
  done
  echo "install-deps: '$*' failed 5 times; giving up" >&2
  return 1
}

retry apt-get update -qq
retry apt-get install -y -qq --no-install-recommends "${missing[@]}"
