#!/bin/sh
# Runs the task data benchmark with its isoxml comparison: installs the npm
# side from package-lock.json when it is missing, then runs the built
# benchmark. Arguments go to the benchmark (the set's size in MB).
# BUILD_DIR names the build directory, relative to the repository or
# absolute; default build.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build_dir=${BUILD_DIR:-build}
case $build_dir in
/*) ;;
*) build_dir=$root/$build_dir ;;
esac

if [ ! -d "$here/node_modules/isoxml" ]; then
    npm ci --prefix "$here"
fi
exec "$build_dir/bench/taskdata/taskdata_bench" "$@"
