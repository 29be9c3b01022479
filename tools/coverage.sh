#!/bin/sh
# Measures the coverage of the controller and the kit by the tests that need no display: tools/coverage.sh
# Builds without the desktop, runs the tests, and prints line and branch coverage of Base/ and kit/ and every line not
# executed. Branches that only an exception takes are excluded.
set -eu
cd "$(dirname "$0")/.."
tools/setup.sh coverage
tools/build.sh coverage qoro_tests

build=build/coverage
# Counters accumulate across runs.
find "$build" -name '*.gcda' -delete
log=$build/tests.log
"$build/tests/qoro_tests" --gtest_brief=1 >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}
gcovr --root . --object-directory "$build" --filter Base/ --filter kit/ --exclude-throw-branches \
    --exclude-unreachable-branches --txt --print-summary "$build"
