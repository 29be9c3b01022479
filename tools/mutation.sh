#!/bin/sh
# Measures how many mutants of the controller the tests detect: tools/mutation.sh
# Copies the sources, builds all mutants into one program, runs the tests that reach each mutant once per mutant, and
# prints each survivor. The build takes a few minutes, the run one or two.
set -eu
cd "$(dirname "$0")/.."
tools/setup.sh mutation
tree=build/mutation
# Debian's own Python, which has the libclang bindings.
/usr/bin/python3 tools/mutation.py write "$tree"
[ -f "$tree/build/build.ninja" ] || cmake -S "$tree" -B "$tree/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQORO_MUTATION=ON \
    -DCMAKE_CXX_FLAGS_DEBUG=-O1 -DCMAKE_CXX_FLAGS=-w -DQORO_DESKTOP=OFF -DQORO_BENCH=OFF >"$tree/build.log"
cmake --build "$tree/build" --target qoro_tests >"$tree/build.log" || {
    cat "$tree/build.log" >&2
    exit 1
}
/usr/bin/python3 tools/mutation.py run "$tree" "$tree/build/tests/qoro_tests"
