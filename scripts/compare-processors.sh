#!/usr/bin/env bash
# Usage: compare-processors.sh NATIVE_BUILD OTHER_TOOL [EMULATOR...]
#
# Migrates the example tree and a generated heavy tree (scale 0.05) with the
# tool of the native build and with OTHER_TOOL, a build for another processor
# run through EMULATOR, first onto an empty set and then with -m onto the set
# that run wrote. The written files and the messages must be the same byte for
# byte; only the UUIDs, new on every run, are masked.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
native_build=$1
other_tool=$2
shift 2
emulator=("$@")

native_tool=$native_build/taskdata-migrate
generator=$native_build/bench/run/generate_display_tree
for program in "$native_tool" "$generator" "$other_tool"; do
  if [ ! -x "$program" ]; then
    echo "compare-processors: $program is missing; build it first" >&2
    exit 1
  fi
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
uuid='[0-9a-fA-F]\{8\}-[0-9a-fA-F]\{4\}-[0-9a-fA-F]\{4\}-[0-9a-fA-F]\{4\}-[0-9a-fA-F]\{12\}'

# Runs one build's tool, the command in ARGS, on a copy of TREE: onto an empty
# set, then with -m onto the set that run wrote, placed in the tree. Keeps both
# sets and the messages, UUIDs masked, below DEST. The same paths in both
# builds' runs keep the messages comparable.
migrate_twice() {
  local dest=$1 tree=$2
  shift 2
  rm -rf "$work/tree" "$work/set"
  cp -a "$tree" "$work/tree"
  rm -rf "$work/tree/taskdata"
  local pass status
  for pass in first merge; do
    local options=(-p -O set)
    [ "$pass" = merge ] && options+=(-m)
    status=0
    (cd "$work" && "$@" "${options[@]}" tree >messages 2>&1) || status=$?
    echo "status $status" >>"$work/messages"
    mkdir -p "$dest/$pass"
    for file in "$work/messages" "$work"/set/*; do
      sed "s/$uuid/UUID/g" "$file" >"$dest/$pass/$(basename "$file")"
    done
    rm -rf "$work/tree/taskdata"
    mv "$work/set" "$work/tree/taskdata"
  done
}

compare_tree() {
  local name=$1 tree=$2
  migrate_twice "$work/native" "$tree" "$native_tool"
  migrate_twice "$work/other" "$tree" "${emulator[@]}" "$other_tool"
  if ! diff -r "$work/native" "$work/other" >"$work/diff"; then
    echo "compare-processors: $name: the sets or messages differ" >&2
    head -40 "$work/diff" >&2
    exit 1
  fi
  echo "compare-processors: $name: the same sets and messages," \
    "$(cat "$work"/native/*/*.XML | wc -c) bytes in all"
  rm -rf "$work/native" "$work/other"
}

compare_tree "examples/display" "$root/examples/display"
"$generator" --seed 7 --scale 0.05 "$work/heavy" >/dev/null

compare_tree "heavy tree at scale 0.05" "$work/heavy"
