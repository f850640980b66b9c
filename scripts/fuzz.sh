#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang (ASan and UBSan on) and
# runs each for SECONDS (default 60), or only the TARGETs named. Each runs on
# a work copy of its seed corpus and regressions in $BUILD_DIR/corpus/<name>,
# so new inputs never land in the repository; findings (crash-*, timeout-*,
# oom-*, leak-*) go to $BUILD_DIR/artifacts/<name>/. Prints one line per
# target and exits non-zero when anything was found.
#
#   scripts/fuzz.sh [SECONDS [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
shift || true
BUILD_DIR=${FUZZ_BUILD_DIR:-build-fuzz}
JOBS=${JOBS:-$(nproc)}

# subsystem, target, largest input in bytes: room for several times the
# biggest seed, small enough that the fuzzer mutates with purpose.
all_targets=(
  "boundaries bdy_file 16384"
  "boundaries shapefile 16384"
  "guidance crv_file 16384"
  "guidance base_position 256"
  "guidance ab_line_settings 4096"
  "guidance curve_settings 8192"
  "guidance pivot_settings 2048"
  "clients flag_points 4096"
  "products product_settings 2048"
  "products mixture_settings 4096"
  "taskdata task_data_set 32768"
  "patterns guidance_curve 4096"
  "patterns curve_pattern 16384"
  "polygons offset_clip 4096"
)

targets=()
for entry in "${all_targets[@]}"; do
  read -r _ name _ <<<"$entry"
  if [ $# -eq 0 ] || [[ " $* " == *" $name "* ]]; then
    targets+=("$entry")
  fi
done
if [ ${#targets[@]} -eq 0 ]; then
  echo "fuzz: no such target: $*" >&2
  exit 2
fi

build_targets=()
for entry in "${targets[@]}"; do
  read -r _ name _ <<<"$entry"
  build_targets+=("${name}_fuzz")
done
cmake -S . -B "$BUILD_DIR" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DFUZZ=ON -DBUILD_TESTING=OFF >/dev/null
cmake --build "$BUILD_DIR" -j "$JOBS" --target "${build_targets[@]}"

count_files() { find "$1" -maxdepth 1 -type f | wc -l; }

# Every run writes its input as files: on tmpfs that costs a fraction of
# what it costs on disk.
if [ -z "${TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then
  export TMPDIR=/dev/shm
fi
export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

summary=()
found_any=0
for entry in "${targets[@]}"; do
  read -r subsystem name max_len <<<"$entry"
  work="$BUILD_DIR/corpus/$name"
  artifacts="$BUILD_DIR/artifacts/$name"
  log="$BUILD_DIR/logs/$name.log"
  mkdir -p "$work" "$artifacts" "$(dirname "$log")"
  for seeds in "fuzz/$subsystem/corpus/$name" "fuzz/$subsystem/regressions/$name"; do
    [ -d "$seeds" ] && cp -n "$seeds"/* "$work"/ 2>/dev/null || true
  done
  corpus_before=$(count_files "$work")
  findings_before=$(find "$artifacts" -maxdepth 1 -type f \
    \( -name 'crash-*' -o -name 'timeout-*' -o -name 'oom-*' -o -name 'leak-*' \) | wc -l)

  echo "== $name: $seconds s, inputs up to $max_len bytes, log in $log"
  status=0
  "$BUILD_DIR/fuzz/${name}_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -max_len="$max_len" -print_final_stats=1 -artifact_prefix="$artifacts/" "$work" \
    >"$log" 2>&1 || status=$?

  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || true)
  [ -n "$runs" ] || runs=$(grep -o '^#[0-9]*' "$log" | tail -n 1 | tr -d '#' || true)
  took=$(grep -o 'Done [0-9]* runs in [0-9]* second' "$log" | grep -o 'in [0-9]*' | grep -o '[0-9]*' || true)
  corpus_after=$(count_files "$work")
  findings=$(( $(find "$artifacts" -maxdepth 1 -type f \
    \( -name 'crash-*' -o -name 'timeout-*' -o -name 'oom-*' -o -name 'leak-*' \) | wc -l) - findings_before ))
  if [ "$status" -ne 0 ] && [ "$findings" -eq 0 ]; then
    findings=1 # the fuzzer stopped on a fault it left no input for; see the log
  fi
  [ "$findings" -eq 0 ] || found_any=1
  summary+=("$(printf '%-18s %10s executions %5s s  corpus %4d (+%d)  findings %d' \
    "$name" "${runs:-?}" "${took:-$seconds}" "$corpus_after" \
    $((corpus_after - corpus_before)) "$findings")")
done

echo
printf '%s\n' "${summary[@]}"
if [ "$found_any" -ne 0 ]; then
  echo "fuzz: findings in $BUILD_DIR/artifacts (logs in $BUILD_DIR/logs)" >&2
  exit 1
fi
