#!/bin/sh
# Fuzzes what reads other people's data: tools/fuzz.sh [SECONDS] [TARGET…]
#                                        tools/fuzz.sh --runs COUNT [TARGET…]
# Runs each target (a folder of tests/fuzz/corpus; default all) for SECONDS, default 10, from its corpus in
# tests/fuzz/corpus, with AddressSanitizer and UBSan. New inputs stay in build/fuzz/learned until the next run deletes
# them. A crash, undefined behaviour, a leak, or an input that takes more than 5 seconds or too much memory ends the
# target; the input is saved in build/fuzz/findings and its path printed.
#
# --runs gives each target COUNT inputs instead, in a program that is many times as fast, with only UBSan and the
# standard library's assertions. New inputs are added to build/fuzz/campaign, where later runs continue, and then run
# once with AddressSanitizer. The last figure of a target's line is its coverage; when it stops growing, the target has
# converged.
set -eu
cd "$(dirname "$0")/.."
usage()
{
    echo "usage: tools/fuzz.sh [SECONDS | --runs COUNT] [TARGET…]" >&2
    exit 2
}
runs=""
seconds=10
case "${1-}" in
--runs)
    case "${2-}" in
    *[!0-9]* | 0 | "") usage ;;
    esac
    runs=$2
    shift 2
    ;;
*)
    case "${1-10}" in
    *[!0-9]* | 0 | "") usage ;;
    esac
    seconds=${1-10}
    [ $# -eq 0 ] || shift
    ;;
esac
all=$(ls tests/fuzz/corpus)
# shellcheck disable=SC2086 # a list of words
[ $# -gt 0 ] || set -- $all
for target in "$@"; do
    [ -d "tests/fuzz/corpus/$target" ] || {
        # shellcheck disable=SC2086 # a list of words
        echo "fuzz: no target $target, expected one of" $all >&2
        exit 2
    }
done

tools/setup.sh fuzz
programs=""
for target in "$@"; do
    programs="$programs fuzz_$target"
done
# shellcheck disable=SC2086 # a list of words
tools/build.sh fuzz $programs
# shellcheck disable=SC2086 # a list of words
[ -z "$runs" ] || tools/build.sh fuzz-fast $programs

build=build/fuzz
mkdir -p "$build/findings"
export UBSAN_OPTIONS=print_stacktrace=1

# fuzz PRESET TARGET LEARNED FURTHER…: writes its output to the target's log
fuzz()
{
    preset=$1 target=$2 learned=$3
    shift 3
    # Leak suppressions match the allocating frames; in GLib only the slow unwinder finds them.
    case $target in
    address | calendar | headers | image | video) fast=0 ;;
    *) fast=1 ;;
    esac
    longest=4096
    # A video container needs at least some content. Leaks of GStreamer's demuxers on broken files (an error text, for
    # example) are GStreamer's bugs and are not reported.
    leaks=1
    [ "$target" != video ] || longest=16384 leaks=0
    ASAN_OPTIONS=fast_unwind_on_malloc=$fast:detect_leaks=$leaks "build/$preset/tests/fuzz/fuzz_$target" \
        "$learned" "tests/fuzz/corpus/$target" -dict=tests/fuzz/words.dict -max_len=$longest -keep_seed=1 \
        -timeout=5 -rss_limit_mb=1024 -detect_leaks=$leaks -artifact_prefix="$build/findings/$target-" \
        -print_final_stats=1 "$@" >"$build/$target.log" 2>&1
}
stat_of()
{
    sed -n "s/^stat::$1: *//p" "$build/$target.log"
}

status=0
for target in "$@"; do
    if [ -z "$runs" ]; then
        learned=$build/learned/$target
        rm -rf "$learned"
        mkdir -p "$learned"
        found=0
        fuzz fuzz "$target" "$learned" -max_total_time="$seconds" || found=1
        line="$(stat_of number_of_executed_units) inputs, nothing found"
    else
        learned=$build/campaign/$target
        mkdir -p "$learned"
        found=0
        # -entropic=0: weighting inputs by the rarity of the features they reach would cost another third of the time.
        fuzz fuzz-fast "$target" "$learned" -runs="$runs" -entropic=0 || found=1
        coverage=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$build/$target.log" | tail -n 1)
        line="$(stat_of number_of_executed_units) inputs, $(stat_of average_exec_per_sec) a second"
        [ $found -ne 0 ] || fuzz fuzz "$target" "$learned" -runs=0 || found=1
        line="$line, nothing found, coverage $coverage"
    fi
    if [ $found -eq 0 ]; then
        echo "fuzz $target: $line"
    else
        status=1
        cat "$build/$target.log"
        echo "fuzz $target: found $(sed -n 's/.*Test unit written to //p' "$build/$target.log" | tail -n 1)" >&2
    fi
done
exit $status
