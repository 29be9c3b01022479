#!/bin/sh
# Configures a preset once and builds it, or only the targets named: tools/build.sh PRESET [TARGET…]
set -eu
cd "$(dirname "$0")/.."
preset=$1
shift
[ -f "build/$preset/build.ninja" ] || cmake --preset "$preset"
if [ $# -gt 0 ]; then
    cmake --build "build/$preset" --target "$@"
else
    cmake --build "build/$preset"
fi
