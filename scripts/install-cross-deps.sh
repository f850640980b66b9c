#!/usr/bin/env bash
# Installs what the build for the display's processor (aarch64-linux-gnu) needs
# on Debian 12, beside what scripts/install-deps.sh installs: the cross
# compiler, the arm64 development packages of the libraries, and qemu to run
# the results. Adds the arm64 architecture to dpkg first. Does nothing when all
# of it is already there.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/apt-helpers.sh

# ClipperLib's source, the native tools (moc, rcc) and everything else the
# native build needs come from there.
scripts/install-deps.sh

packages=(
  crossbuild-essential-arm64
  qemu-user-static
  qtbase5-dev:arm64
  libgtest-dev:arm64 libgmock-dev:arm64
  libshp-dev:arm64
  libproj-dev:arm64
)

# The benchmarks compare with GEOS. Its development package cannot be
# installed for two architectures at once (the native one would go), so the
# arm64 one is unpacked, with its libraries, into a folder of the cache, where
# the toolchain file (cmake/aarch64-linux-gnu.cmake) looks for it.
geos_root=${XDG_CACHE_HOME:-$HOME/.cache}/taskdata-migrate/arm64-geos
geos_packages=(libgeos-dev:arm64 libgeos-c1v5:arm64 libgeos3.11.1:arm64)

unpack_geos() {
  [ -f "$geos_root/usr/include/geos_c.h" ] && return 0
  local work deb
  mkdir -p "$(dirname "$geos_root")"
  work=$(mktemp -d "$geos_root.XXXXXX")
  trap "rm -rf '$work'" EXIT
  local apt_options=()
  # apt's download user cannot enter root's home; as root, apt downloads
  # there unsandboxed anyway, and this only spares the warning.
  [ "$(id -u)" -ne 0 ] || apt_options+=(-o "APT::Sandbox::User=root")
  (cd "$work" && retry apt-get "${apt_options[@]}" download -qq "${geos_packages[@]}")
  for deb in "$work"/*.deb; do
    dpkg-deb -x "$deb" "$work/root"
  done
  mv "$work/root" "$geos_root"
  echo "install-cross-deps: GEOS for arm64 in $geos_root"
}

# The arm64 packages need the architecture before the lists are read.
[ "$(id -u)" -ne 0 ] || dpkg --print-foreign-architectures | grep -qx arm64 ||
  dpkg --add-architecture arm64
install_missing "${packages[@]}"
unpack_geos
