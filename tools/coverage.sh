#!/bin/sh
# Says how much of the controller and the kit the tests without a display run through: tools/coverage.sh
# Builds without the desktop, runs the tests, prints lines and branches of Base/ and kit/ and each line that never ran.
# Branches that only an exception takes are left out.
set -eu
cd "$(dirname "$0")/.."
tools/setup.sh coverage
tools/build.sh coverage qoro_tests

build=build/coverage
# Counts of an earlier run would add to this one's.
find "$build" -name '*.gcda' -delete
log=$build/tests.log
"$build/tests/qoro_tests" --gtest_brief=1 >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}
gcovr --root . --object-directory "$build" --filter Base/ --filter kit/ --exclude-throw-branches \
    --exclude-unreachable-branches --txt --print-summary "$build"
