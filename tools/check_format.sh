#!/bin/sh
# Fails if a source file deviates from clang-format's layout, and prints the location.
set -eu
cd "$(dirname "$0")/.."
find app Base bench desktop embedding examples kit platform session simulator tests views -name '*.cpp' -o -name '*.h' |
    xargs clang-format --dry-run -Werror
