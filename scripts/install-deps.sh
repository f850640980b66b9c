#!/usr/bin/env bash
# Installs every package needed to build, test, benchmark and fuzz the project on
# Debian 12, and fetches the source of ClipperLib that the polygon toolkit
# builds. Does nothing when all of it is already there.
set -euo pipefail
. "$(dirname "$0")/apt-helpers.sh"

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
  dpkg-dev
  gcovr # line and branch coverage of src/ (make coverage)
  chromium # renders the preview page in its test and for the README's screenshot
)

# ClipperLib 6.4.2 is built by CMake with its Z member on (use_xyz), which
# changes the layout of its points, so Debian's binary package cannot serve.
# Its source comes from Debian's own source package, fetched through a
# private sources list in the cache, so that the machine's apt configuration,
# lists and caches stay as they are. CMake looks for it at the same place
# (CLIPPER_SOURCE_DIR).
clipper_version=6.4.2
cache_dir=${XDG_CACHE_HOME:-$HOME/.cache}/taskdata-migrate
clipper_dir=$cache_dir/libpolyclipping-$clipper_version

fetch_clipper_source() {
  [ -f "$clipper_dir/cpp/clipper.cpp" ] && return 0
  local codename archive apt_dir work
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  # The Debian archive the machine installs its packages from.
  archive=$(apt-get indextargets --format '$(REPO_URI)' "Release: $codename" "Target-Of: deb" |
    sed -n 1p)
  if [ -z "$archive" ]; then
    echo "install-deps: no apt source for Debian $codename to fetch ClipperLib's source from" >&2
    exit 1
  fi
  apt_dir=$cache_dir/apt
  mkdir -p "$apt_dir/sources.list.d" "$apt_dir/lists/partial" "$apt_dir/cache"
  echo "deb-src $archive $codename main" >"$apt_dir/sources.list"
  local apt_options=(
    -o "Dir::Etc::SourceList=$apt_dir/sources.list"
    -o "Dir::Etc::SourceParts=$apt_dir/sources.list.d"
    -o "Dir::State::Lists=$apt_dir/lists"
    -o "Dir::Cache=$apt_dir/cache"
  )
  # apt's download user cannot enter root's home; as root, apt downloads
  # there unsandboxed anyway, and this only spares the warning.
  [ "$(id -u)" -ne 0 ] || apt_options+=(-o "APT::Sandbox::User=root")
  retry apt-get "${apt_options[@]}" update -qq
  work=$(mktemp -d "$cache_dir/fetch.XXXXXX")
  trap "rm -rf '$work'" EXIT
  (cd "$work" && retry apt-get "${apt_options[@]}" source -qq "libpolyclipping")
  if [ ! -f "$work/libpolyclipping-$clipper_version/cpp/clipper.cpp" ]; then
    echo "install-deps: Debian's libpolyclipping source is not ClipperLib $clipper_version:" \
      "$(ls "$work")" >&2
    exit 1
  fi
  mv "$work/libpolyclipping-$clipper_version" "$clipper_dir"
  echo "install-deps: ClipperLib $clipper_version source in $clipper_dir"
}

install_missing "${packages[@]}"
fetch_clipper_source
