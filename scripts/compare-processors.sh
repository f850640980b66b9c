#!/usr/bin/env bash
# Usage: compare-processors.sh NATIVE_BUILD OTHER_BUILD [EMULATOR...]
#
# Migrates the example tree and a generated heavy tree (scale 0.05) with the
# tool of the native build and with that of OTHER_BUILD, a build for another
# processor whose programs run through EMULATOR: first onto an empty set, then
# with -m onto the set that run wrote; each build's taskdata-preview then draws
# the last set. The written files, the pages and the messages must be the same
# byte for byte; only the UUIDs, new on every run, are masked.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
native_build=$1
other_build=$2
shift 2
emulator=("$@")

generator=$native_build/bench/run/generate_display_tree
for program in "$generator" "$native_build/taskdata-migrate" "$native_build/taskdata-preview" \
  "$other_build/taskdata-migrate" "$other_build/taskdata-preview"; do
  if [ ! -x "$program" ]; then
    echo "compare-processors: $program is missing; build it first" >&2
    exit 1
  fi
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
uuid='[0-9a-fA-F]\{8\}-[0-9a-fA-F]\{4\}-[0-9a-fA-F]\{4\}-[0-9a-fA-F]\{4\}-[0-9a-fA-F]\{12\}'

# Keeps the messages and the files of the set, UUIDs masked, in DEST.
keep() {
  local dest=$1 file
  mkdir -p "$dest"
  for file in "$work/messages" "$work"/set/*; do
    sed "s/$uuid/UUID/g" "$file" >"$dest/$(basename "$file")"
  done
}

# Runs one build's programs, the emulator in ARGS before them, on a copy of
# TREE: onto an empty set, then with -m onto the set that run wrote, placed in
# the tree, then the preview of that set; keeps all of it below DEST. The same
# paths in both builds' runs keep the messages comparable.
run_build() {
  local dest=$1 tree=$2 build=$3
  shift 3
  rm -rf "$work/tree" "$work/set"
  cp -a "$tree" "$work/tree"
  rm -rf "$work/tree/taskdata"
  local pass status
  for pass in first merge; do
    local options=(-p -O set)
    [ "$pass" = merge ] && options+=(-m)
    status=0
    (cd "$work" && "$@" "$build/taskdata-migrate" "${options[@]}" tree >messages 2>&1) || status=$?
    echo "status $status" >>"$work/messages"
    keep "$dest/$pass"
    [ "$pass" = merge ] && break
    rm -rf "$work/tree/taskdata"
    mv "$work/set" "$work/tree/taskdata"
  done
  status=0
  (cd "$work" && "$@" "$build/taskdata-preview" set >messages 2>&1) || status=$?
  echo "status $status" >>"$work/messages"
  keep "$dest/preview"
}

compare_tree() {
  local name=$1 tree=$2
  run_build "$work/native" "$tree" "$native_build"
  run_build "$work/other" "$tree" "$other_build" "${emulator[@]}"
  if ! diff -r "$work/native" "$work/other" >"$work/diff"; then
    echo "compare-processors: $name: the sets, pages or messages differ" >&2
    head -40 "$work/diff" >&2
    exit 1
  fi
  echo "compare-processors: $name: the same sets, pages and messages," \
    "$(cat "$work"/native/*/* | wc -c) bytes in all"
  rm -rf "$work/native" "$work/other"
}

compare_tree "examples/display" "$root/examples/display"
"$generator" --seed 7 --scale 0.05 "$work/heavy" >/dev/null
compare_tree "heavy tree at scale 0.05" "$work/heavy"
