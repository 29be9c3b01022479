#!/bin/sh
# Checks that the tests named in SECURITY.md exist: "Suite.Name", or "Suite.*" for a whole suite.
set -eu
cd "$(dirname "$0")/.."
status=0
# shellcheck disable=SC2016 # the backticks are Markdown's
names=$(sed -n '/^## Promises/,/^## /p' SECURITY.md | grep -o '`[A-Za-z]*\.[A-Za-z_*]*`' | tr -d '`' | sort -u)
[ -n "$names" ] || {
    echo "check_promises: SECURITY.md names no test below \"Promises\"" >&2
    exit 1
}
for name in $names; do
    suite=${name%%.*}
    test=${name#*.}
    if [ "$test" = '*' ]; then
        pattern="TEST(_F|_P)?\($suite, |INSTANTIATE_TEST_SUITE_P\([A-Za-z]*, $suite,|add_test\(NAME $suite\."
    else
        pattern="TEST(_F|_P)?\($suite, $test\)|add_test\(NAME $suite\.$test( |\$)"
    fi
    grep -rqE "$pattern" tests || {
        echo "SECURITY.md: there is no test $name; name the one that holds the promise" >&2
        status=1
    }
done
exit $status
