#!/bin/sh
# Configures a preset if needed and builds it, or only the given targets: tools/build.sh PRESET [TARGET…]
set -eu
cd "$(dirname "$0")/.."
preset=$1
shift
[ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" --log-level=NOTICE
if [ $# -gt 0 ]; then
    cmake --build "build/$preset" --target "$@"
else
    cmake --build "build/$preset"
fi
