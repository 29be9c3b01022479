#!/bin/sh
# Fuzzes what reads other people's data: tools/fuzz.sh [SECONDS] [TARGET…]
# Each target (ad, buttons, macros, page, scenario, script; all when none is named) runs for SECONDS, 10 when left out,
# from its corpus in tests/fuzz/corpus. What a run has learned stays in build/fuzz/learned until the next. A crash, an
# undefined operation, a leak, an input that takes more than 5 seconds or much memory ends the target; its input is kept in
# build/fuzz/findings and named.
set -eu
cd "$(dirname "$0")/.."
case "${1-10}" in
*[!0-9]* | 0 | "")
    echo "usage: tools/fuzz.sh [SECONDS] [TARGET…]" >&2
    exit 2
    ;;
esac
seconds=${1-10}
[ $# -eq 0 ] || shift
[ $# -gt 0 ] || set -- ad buttons macros page scenario script
for target in "$@"; do
    [ -d "tests/fuzz/corpus/$target" ] || {
        echo "fuzz: no target $target, expected one of ad, buttons, macros, page, scenario, script" >&2
        exit 2
    }
done

tools/setup.sh fuzz
programs=""
for target in "$@"; do
    programs="$programs fuzz_$target"
done
# shellcheck disable=SC2086
tools/build.sh fuzz $programs

build=build/fuzz
mkdir -p "$build/findings"
status=0
for target in "$@"; do
    learned=$build/learned/$target
    log=$build/$target.log
    rm -rf "$learned"
    mkdir -p "$learned"
    if UBSAN_OPTIONS=print_stacktrace=1 "$build/tests/fuzz/fuzz_$target" "$learned" "tests/fuzz/corpus/$target" \
        -dict=tests/fuzz/words.dict -max_total_time="$seconds" -max_len=4096 -timeout=5 -rss_limit_mb=1024 \
        -artifact_prefix="$build/findings/$target-" -print_final_stats=1 >"$log" 2>&1; then
        echo "fuzz $target: $(sed -n 's/.*number_of_executed_units: *//p' "$log") inputs, nothing found"
    else
        status=1
        cat "$log"
        echo "fuzz $target: found $(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)" >&2
    fi
done
exit $status
