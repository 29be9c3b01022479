#!/bin/sh
# Says how many mutants of the controller the tests catch: tools/mutation.sh
# Copies the sources, builds all mutants in one program, runs the tests once for each that they pass through, and names
# each mutant that survives. A few minutes to build, one or two to run.
set -eu
cd "$(dirname "$0")/.."
tools/setup.sh mutation
tree=build/mutation
# Debian's own Python: that is where the package of libclang's bindings is.
/usr/bin/python3 tools/mutation.py write "$tree"
[ -f "$tree/build/build.ninja" ] || cmake -S "$tree" -B "$tree/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQORO_MUTATION=ON \
    -DCMAKE_CXX_FLAGS_DEBUG=-O1 -DCMAKE_CXX_FLAGS=-w -DQORO_DESKTOP=OFF -DQORO_BENCH=OFF >"$tree/build.log"
cmake --build "$tree/build" --target qoro_tests >"$tree/build.log" || {
    cat "$tree/build.log" >&2
    exit 1
}
/usr/bin/python3 tools/mutation.py run "$tree" "$tree/build/tests/qoro_tests"
